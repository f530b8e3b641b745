/*
 * Frames of the CPU about multicast. What the CPU directs to a port leaves it whatever the switch's tables say. So they
 * are read here first; otherwise messages would go round a ring, and reach ports that are isolated from each other.
 */
#include "multicast_relay.h"

#include <errno.h>
#include <net/ethernet.h>
#include <net/if.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <adp/adp.h>

#include "igmp_snooping.h"
#include "multicast_queries.h"
#include "multicast_routers.h"

enum { kCpu = 0, kNoPort = 0, kLastVid = 4094 };

static uint8_t own_mac[ETH_ALEN];

bool prepare_to_send(void) {
    struct ifreq request = {.ifr_name = "eth0"};
    const int handle = socket(AF_INET, SOCK_DGRAM, 0);
    const bool is_read = handle >= 0 && ioctl(handle, SIOCGIFHWADDR, &request) == 0;
    if (!is_read)
        fprintf(stderr, "igmp_snooping: Could not read the address of eth0: %s.\n", strerror(errno));
    if (handle >= 0)
        close(handle);
    memcpy(own_mac, request.ifr_hwaddr.sa_data, sizeof own_mac);
    adp_pkt_init(); /* says so when it fails; later each frame fails */
    return is_read;
}

/* The spanning-tree group of a VLAN: 0 when it is in no other. */
static int32_t tree_of(uint32_t vid) {
    static uint16_t vids[ADP_VLANS];
    int32_t trees[ADP_STG_SUPPORTED] = {0};
    const int32_t count = adp_get_max_stg();
    if (count <= 1 || count > ADP_STG_SUPPORTED || adp_get_stg_each_time_list(trees, 0, ADP_STG_SUPPORTED) != ADP_OK)
        return 0;
    for (int32_t i = 0; i < count; i++) {
        const int32_t members = trees[i] == 0 ? 0 : adp_get_stg_vlan_list(trees[i], vids);
        for (int32_t j = 0; j < members; j++)
            if (vids[j] == vid)
                return trees[i];
    }
    return 0;
}

/* Whether a port sends in a spanning-tree group. */
static bool is_forwarding(int32_t tree, adp_intf_t port) {
    uint32_t state = ADP_STG_STATE_BLOCKING;
    return adp_stg_stp_get(tree, port, &state) == ADP_OK && state == ADP_STG_STATE_FORWARDING;
}

static bool has_link(adp_intf_t port) {
    uint32_t link = 0;
    return adp_get_phy_port_attr(port, ADP_ATTR_LINK, &link) == ADP_OK && link != 0;
}

/* The port that a frame for an interface leaves by, 0 without a link: of the group its first member with one. The
 * member that manages the group is not asked for, since nobody tells this program's library about links. */
static adp_intf_t port_of(adp_intf_t intf) {
    for (adp_intf_t port = 1; port <= ADP_USER_PORTS; port++)
        if ((port == intf || GET_INTF_MAPPING_AGGINTF(port) == intf) && has_link(port))
            return port;
    return kNoPort;
}

/* The ports of the interfaces that the switch would send a frame to that came in on the source, in a VLAN. */
static uint32_t reachable(adp_intf_t source, uint32_t vid, uint32_t wanted) {
    adp_ports_t members = {0};
    adp_ports_t untagged = {0};
    uint32_t may_leave[2] = {0};
    adp_intf_t list[kMaxInterfaces];
    uint32_t found = 0;
    const uint32_t count = list_of(wanted & ~set_of(source), list);

    if (count == 0 || adp_vlan_port_get(vid, members, untagged) != ADP_OK ||
        adp_get_port_isolatestatus(source, may_leave) != ADP_OK)
        return 0;
    const int32_t tree = tree_of(vid);
    for (uint32_t i = 0; i < count; i++) {
        const adp_intf_t port = port_of(list[i]);
        if (port != kNoPort && (members[0] & may_leave[0] & BIT(port)) != 0 && is_forwarding(tree, port))
            found |= BIT(port);
    }
    return found;
}

/* The frame has a VLAN tag, which the switch removes for the ports that send the VLAN untagged. */
static bool send_to(uint32_t ports, struct bytes frame) {
    const adp_tx_frame_t sent = {frame.at, (uint32_t)frame.length, 0};
    adp_list_link_t head = {&head, &head};
    adp_tx_dest_t nodes[kMaxInterfaces];
    adp_intf_t list[kMaxInterfaces];
    const uint32_t count = list_of(ports, list);

    for (uint32_t i = 0; i < count; i++) {
        nodes[i].intf = list[i];
        nodes[i].link = (adp_list_link_t){&head, head.prev};
        head.prev->next = &nodes[i].link;
        head.prev = &nodes[i].link;
    }
    return count == 0 || succeeded("send a frame", __adp_transmit_frame(&sent, &head, ADP_NO_VLAN, ADP_TX_PORTS));
}

void relay(const struct message *message, uint32_t everybody) {
    uint32_t wanted = 0;
    if (message->audience == kRouters)
        wanted = routers_of(message->vid, message->family);
    else if (message->audience == kEverybody)
        wanted = everybody;
    send_to(reachable(message->intf, message->vid, wanted), message->frame);
}

bool query_hosts(uint32_t everybody, uint32_t milliseconds) {
    uint8_t frame[kQueryRoom];
    bool good = true;
    for (uint32_t vid = 1; vid <= kLastVid; vid++) {
        const uint32_t ports = reachable(kCpu, vid, everybody);
        if (ports == 0)
            continue;
        good &= send_to(ports, (struct bytes){frame, write_igmp_query(frame, own_mac, vid, milliseconds)});
        good &= send_to(ports, (struct bytes){frame, write_mld_query(frame, own_mac, vid, milliseconds)});
    }
    return good;
}
