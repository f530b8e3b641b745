/*
 * A small IGMP and MLD snooping agent (RFC 4541): hosts report which multicast groups they join, and the switch
 * delivers the frames of each group to their ports alone, and those of a group without listeners to none.
 *
 *     igmp_snooping [PORT ...]
 *
 * The ports named, if any, are joined into aggregation group 1, which is one listener. At the end of its standard
 * input the program deletes its groups, lets multicast be flooded again, and ends.
 *
 * Two things are missing: the agent sends no queries, so a host that disappears without a report stays a listener;
 * and it does not distinguish the sources of a group, so a host that wants some of them stays a listener until it
 * reports that it wants none.
 */
#include <arpa/inet.h>
#include <errno.h>
#include <linux/if_packet.h>
#include <net/ethernet.h>
#include <poll.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include <adp/adp.h>

#include "multicast_messages.h"

enum {
    kCpuPhysicalPort = 0,
    kFirstPhysicalPort = 4, /* the board wires user port 1 to the chip's port 4, 2 to 5 and so on */
    kGroupNumber = 1,
    kGroupBit = ADP_USER_PORTS + kGroupNumber, /* listeners are a word: bit n user port n, then the group's */
    kMaxGroups = 1024,                         /* as many as fit into the chip */
    kFrameRoom = 2048
};
enum { kFlood = 0, kDrop = 1 };                                  /* what happens to groups without listeners */
enum { kMldTrap = 89, kIgmpTrap = 92, kControlGroupCopy = 215 }; /* the chip's switch controls */

#define GROUP ADP_AGG_INTF(kGroupNumber)
#define BIT(number) (1u << (number))

struct group {
    uint32_t listeners; /* none: the slot is free */
    uint32_t vid;
    int family;
    uint8_t address[16];
    uint8_t mac[ETH_ALEN];
};
static struct group groups[kMaxGroups];

static bool succeeded(const char *what, adp_status_t status) {
    if (status == ADP_OK)
        return true;
    fprintf(stderr, "igmp_snooping: Could not %s: the answer was %d.\n", what, (int)status);
    return false;
}

/* The groups. Several of them share a MAC address, which is all that the switch looks at. */

static bool share_an_entry(const struct group *one, const struct group *other) {
    return one->vid == other->vid && memcmp(one->mac, other->mac, ETH_ALEN) == 0;
}

static uint32_t listeners_of_entry(const struct group *group) {
    uint32_t listeners = group->listeners;
    for (size_t i = 0; i < kMaxGroups; i++)
        if (groups[i].listeners != 0 && share_an_entry(&groups[i], group))
            listeners |= groups[i].listeners;
    return listeners;
}

static uint32_t list_of(uint32_t listeners, adp_intf_t list[ADP_USER_PORTS + 1]) {
    uint32_t count = 0;
    for (adp_intf_t port = 1; port <= ADP_USER_PORTS; port++)
        if (listeners & BIT(port))
            list[count++] = port;
    if (listeners & BIT(kGroupBit))
        list[count++] = GROUP;
    return count;
}

/* Makes the switch's entry follow. Adding an aggregation group to an entry has no effect, so the entry is then made
 * anew with everybody in it. */
static bool update_entry(const struct group *group, uint32_t before, uint32_t after) {
    const uint16_t vid = (uint16_t)group->vid;
    const uint32_t joined = after & ~before;
    adp_intf_t list[ADP_USER_PORTS + 1] = {0};

    if (before == after)
        return true;
    if (after == 0)
        return succeeded("delete a group", adp_delete_igmpsn_group(group->mac, vid));
    if (before == 0 || (joined & BIT(kGroupBit)))
        return succeeded("create a group", adp_create_igmpsn_group(group->mac, vid, list_of(after, list), list));
    if (joined != 0)
        return succeeded("add a port", adp_add_igmpsn_member(group->mac, vid, list_of(joined, list), list, &vid));
    return succeeded("remove a port", adp_del_igmpsn_member(group->mac, vid, list_of(before & ~after, list), list));
}

/* When the switch refuses, the list stays as it was too: hosts repeat what they say. */
static bool set_listeners(struct group *group, uint32_t listeners) {
    const uint32_t before = group->listeners;
    const uint32_t before_all = listeners_of_entry(group);
    group->listeners = listeners;
    if (update_entry(group, before_all, listeners_of_entry(group)))
        return true;
    group->listeners = before;
    return false;
}

/* The slot of a group, or if there is none a free one; null when the list is full. */
static struct group *find_slot(const struct group *wanted) {
    struct group *free_slot = NULL;
    for (size_t i = 0; i < kMaxGroups; i++) {
        struct group *group = &groups[i];
        if (group->listeners == 0)
            free_slot = free_slot ? free_slot : group;
        else if (group->vid == wanted->vid && group->family == wanted->family &&
                 memcmp(group->address, wanted->address, sizeof group->address) == 0)
            return group;
    }
    return free_slot;
}

static void print_change(const struct group *group, const struct wish *wish) {
    char text[INET6_ADDRSTRLEN] = "";
    inet_ntop(group->family, group->address, text, sizeof text);
    printf("VLAN %u, %s: %s %u %s\n", (unsigned)group->vid, text, wish->intf == GROUP ? "group" : "port",
           (unsigned)(wish->intf == GROUP ? kGroupNumber : wish->intf), wish->joins ? "joined" : "left");
}

/* Groups of which a switch delivers everything to everybody, because hosts need not ask for them, or that stay within
 * a host: 224.0.0.0/24, ff02::1 and the scopes 0 and 1. What is no group at all is none to follow either. */
static bool is_followed(const struct group *group) {
    static const uint8_t kAllNodes[16] = {0xFF, 0x02, [15] = 1};
    const uint8_t *address = group->address;
    if (group->family == AF_INET)
        return address[0] >> 4 == 0xE && !(address[0] == 224 && address[1] == 0 && address[2] == 0);
    return address[0] == 0xFF && (address[1] & 0xF) > 1 && memcmp(address, kAllNodes, sizeof kAllNodes) != 0;
}

/* The MAC address that stands for a group's IP address: RFC 1112, section 6.4, and RFC 2464, section 7. */
static void fill_mac(struct group *group) {
    const uint8_t *a = group->address;
    const uint8_t ipv4[] = {0x01, 0x00, 0x5E, a[1] & 0x7F, a[2], a[3]};
    const uint8_t ipv6[] = {0x33, 0x33, a[12], a[13], a[14], a[15]};
    memcpy(group->mac, group->family == AF_INET ? ipv4 : ipv6, ETH_ALEN);
}

static void follow(const struct wish *wish) {
    struct group wanted = {.vid = wish->vid, .family = wish->family};
    const bool is_group = wish->intf == GROUP;
    if (!is_group && (wish->intf < 1 || wish->intf > ADP_USER_PORTS))
        return;
    memcpy(wanted.address, wish->address, sizeof wanted.address);
    fill_mac(&wanted);
    struct group *group = is_followed(&wanted) ? find_slot(&wanted) : NULL;
    if (group == NULL)
        return;
    if (group->listeners == 0)
        *group = wanted;
    const uint32_t bit = BIT(is_group ? kGroupBit : wish->intf);
    if (wish->joins != ((group->listeners & bit) != 0) && set_listeners(group, group->listeners ^ bit))
        print_change(group, wish);
}

/* The program around it. */

static int listen_on_cpu_port(void) {
    struct sockaddr_ll address = {.sll_family = AF_PACKET, .sll_protocol = htons(ETH_P_ALL)};
    const int listener = socket(AF_PACKET, SOCK_RAW | SOCK_NONBLOCK, 0);
    address.sll_ifindex = get_nic_index("eth0");
    if (listener >= 0 && bind(listener, (const struct sockaddr *)&address, sizeof address) == 0)
        return listener;
    fprintf(stderr, "igmp_snooping: Could not listen on eth0: %s.\n", strerror(errno));
    return -1;
}

static void take_frame(int listener) {
    uint8_t frame[kFrameRoom];
    struct sockaddr_ll from = {0};
    socklen_t from_size = sizeof from;
    const ssize_t length = recvfrom(listener, frame, sizeof frame, 0, (struct sockaddr *)&from, &from_size);
    if (length > 0 && from.sll_pkttype != PACKET_OUTGOING) /* sent by this CPU */
        read_wishes(frame, (size_t)length, follow);
}

static bool has_input_ended(void) {
    char ignored[64];
    return read(STDIN_FILENO, ignored, sizeof ignored) == 0;
}

static void serve(int listener) {
    struct pollfd sources[] = {{.fd = listener, .events = POLLIN}, {.fd = STDIN_FILENO, .events = POLLIN}};
    while (poll(sources, sizeof sources / sizeof *sources, -1) >= 0 || errno == EINTR) {
        if (sources[0].revents)
            take_frame(listener);
        if (sources[1].revents && has_input_ended())
            return;
    }
}

static bool set_up_port_map(void) {
    adp_status_t status = adp_set_max_phy_port_num(ADP_USER_PORTS);
    if (status == ADP_OK)
        status = adp_add_cpu_port(0, 0, 0, kCpuPhysicalPort, 0);
    for (uint32_t port = 1; status == ADP_OK && port <= ADP_USER_PORTS; port++)
        status = adp_add_phy_port(port, 0, 0, port + kFirstPhysicalPort - 1, 0);
    return succeeded("set up the port map", status);
}

static bool form_group(uint32_t ports) {
    return ports == 0 || (succeeded("create the group", adp_create_agg_group(GROUP)) &&
                          succeeded("configure its members", adp_add_agg_standby_member(GROUP, ports, 0)) &&
                          succeeded("add its members", adp_add_agg_member_by_map(GROUP, ports, 0)));
}

/* The two calls of start-up clear the switch's groups and have IGMP and MLD handed to the CPU. */
static bool start_snooping(void) {
    return succeeded("snoop IGMP", adp_igmp_init()) && succeeded("snoop MLD", ipv6_user_init()) &&
           succeeded("drop groups that nobody wants", adp_control_ipmc_lookup_miss_action(kDrop)) &&
           succeeded("drop IPv6 groups that nobody wants", adp_control_ip6mc_lookup_miss_action(kDrop));
}

/* Does what it can, whatever fails. */
static bool tidy_up(uint32_t ports) {
    static const uint32_t kControls[] = {kMldTrap, kIgmpTrap, kControlGroupCopy};
    bool good = true;
    for (size_t i = 0; i < kMaxGroups; i++)
        if (groups[i].listeners != 0)
            good &= set_listeners(&groups[i], 0);
    good &= succeeded("flood groups", adp_control_ipmc_lookup_miss_action(kFlood));
    good &= succeeded("flood IPv6 groups", adp_control_ip6mc_lookup_miss_action(kFlood));
    for (size_t i = 0; i < sizeof kControls / sizeof *kControls; i++)
        good &= succeeded("turn a trap off", adp_set_vlan_igmp_pkt_action(kControls[i], 0));
    return (ports == 0 || succeeded("delete the group", adp_delete_agg_group(GROUP))) && good;
}

static bool read_ports(int count, char **words, uint32_t *ports) {
    for (int i = 0; i < count; i++) {
        char *end = NULL;
        const unsigned long port = strtoul(words[i], &end, 10);
        if (*end != '\0' || port < 1 || port > ADP_USER_PORTS || count > ADP_AGG_ACTIVE_MAX) {
            fprintf(stderr, "usage: igmp_snooping [PORT ...], at most %d user ports from 1 to %d\n", ADP_AGG_ACTIVE_MAX,
                    ADP_USER_PORTS);
            return false;
        }
        *ports |= BIT(port);
    }
    return true;
}

int main(int argc, char **argv) {
    uint32_t ports = 0;
    if (!read_ports(argc - 1, argv + 1, &ports))
        return 2;
    setvbuf(stdout, NULL, _IOLBF, 0);
    const int listener = listen_on_cpu_port();
    if (listener < 0 || !set_up_port_map() || !form_group(ports))
        return 1;
    bool good = start_snooping();
    if (good) {
        printf("ready\n");
        serve(listener);
    }
    good &= tidy_up(ports);
    printf("ended\n");
    return good ? 0 : 1;
}
