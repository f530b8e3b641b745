/*
 * A small management program: it sets up the port map and two VLANs, sends frames from the CPU in every way that the
 * library offers, and receives frames from the hosts.
 *
 * It runs on the device's CPU, whose interface "eth0" leads to the switch, and needs the right to open raw sockets.
 * With --step it waits for a line on its standard input before each step, so that the effect of each can be watched.
 */
#include <arpa/inet.h>
#include <net/ethernet.h>
#include <stdbool.h>
#include <stdio.h>
#include <string.h>

#include <adp/adp.h>

#include "frame_reception.h"

enum {
    kCpuPhysicalPort = 0,
    kFirstPhysicalPort = 4, /* the board wires user port 1 to the chip's port 4, 2 to 5 and so on */
    kOfficeVlan = 100,
    kCameraVlan = 200,
    kDefaultVlan = 1,
    kOpcodeOnePort = 5, /* switch tag: one port, the frame exactly as given */
    kTestEtherType = 0x88B5,
    kFrameRoom = 96,
    kListRoom = 8
};

/* One group has a management port. The other has none, as if all its links were down. */
#define GROUP_WITH_PORT ADP_AGG_INTF(1)
#define GROUP_WITHOUT_PORT ADP_AGG_INTF(2)
#define SET(port) (1u << (port))

/* Prints the result of a call; false if it is not the expected one. */
static bool expect(const char *what, adp_status_t status, adp_status_t wanted) {
    printf("    %s: %d\n", what, (int)status);
    if (status != wanted)
        fprintf(stderr, "frame_path: %s returned %d, but %d was expected.\n", what, (int)status, (int)wanted);
    return status == wanted;
}

static bool set_up_port_map(void) {
    if (!expect("adp_set_max_phy_port_num(26)", adp_set_max_phy_port_num(ADP_USER_PORTS), ADP_OK))
        return false;
    adp_status_t status = adp_add_cpu_port(0, 0, 0, kCpuPhysicalPort, 0);
    for (uint32_t port = 1; status == ADP_OK && port <= ADP_USER_PORTS; port++)
        status = adp_add_phy_port(port, 0, 0, port + kFirstPhysicalPort - 1, 0);
    if (!expect("adp_add_cpu_port and 26 x adp_add_phy_port", status, ADP_OK))
        return false;
    for (uint32_t port = 1; port <= ADP_USER_PORTS; port += ADP_USER_PORTS - 1)
        printf("    user port %u is physical port %d\n", (unsigned)port, (int)adp_intf_2_phy_id(port));
    return true;
}

static void print_ports(const char *title, const adp_ports_t set) {
    printf("    %s:", title);
    for (uint32_t port = 0; port <= ADP_USER_PORTS; port++)
        if (set[port / 32] & SET(port % 32))
            printf(port == 0 ? " CPU" : " %u", (unsigned)port);
    printf("\n");
}

static bool create_vlan(uint32_t vlan, uint32_t members, uint32_t untagged) {
    const adp_ports_t wanted_members = {members};
    const adp_ports_t wanted_untagged = {untagged};
    adp_ports_t read_members = {0};
    adp_ports_t read_untagged = {0};

    printf("    VLAN %u\n", (unsigned)vlan);
    if (!expect("adp_vlan_create", adp_vlan_create(vlan), ADP_OK) ||
        !expect("adp_vlan_port_set", adp_vlan_port_set(vlan, wanted_members, wanted_untagged), ADP_OK) ||
        !expect("adp_vlan_port_get", adp_vlan_port_get(vlan, read_members, read_untagged), ADP_OK))
        return false;
    print_ports("members", read_members);
    print_ports("untagged", read_untagged);
    return read_members[0] == members && read_untagged[0] == untagged;
}

/* Untagged frames that arrive on the office's ports belong to the given VLAN. */
static bool set_office_pvid(uint32_t vlan) {
    static const adp_intf_t kOfficePorts[] = {1, 5, 21, 22};
    adp_status_t status = ADP_OK;
    for (size_t i = 0; status == ADP_OK && i < sizeof kOfficePorts / sizeof *kOfficePorts; i++)
        status = adp_intf_pivd_set(kOfficePorts[i], vlan);
    printf("    port VLAN %u for the ports 1, 5, 21 and 22\n", (unsigned)vlan);
    return expect("adp_intf_pivd_set", status, ADP_OK);
}

static bool create_vlans(void) {
    const uint32_t office = SET(1) | SET(5) | SET(21) | SET(22);
    const uint32_t cameras = SET(2) | SET(22) | SET(26);
    return create_vlan(kOfficeVlan, office | SET(0), office) && create_vlan(kCameraVlan, cameras | SET(0), 0) &&
           set_office_pvid(kOfficeVlan);
}

static bool give_management_port(void) {
    adp_intf_t port = 0;
    return expect("SET_AGG_MANAGE_INTF(group 1, port 21)", SET_AGG_MANAGE_INTF(GROUP_WITH_PORT, 21), ADP_OK) &&
           expect("GET_AGG_MANAGE_INTF(group 1)", GET_AGG_MANAGE_INTF(GROUP_WITH_PORT, &port), ADP_OK) && port == 21;
}

static bool open_send_socket(void) {
    /* On failure the call returns the length of its message, so only the frames sent later show a failure: without the
     * socket __adp_transmit_frame() answers -1, and prints nothing. */
    printf("    adp_pkt_init: descriptor %d\n", (int)adp_pkt_init());
    return true;
}

/* A frame to send, and the way to send it. */
struct transmit {
    const char *name;
    const char *asked;
    enum adp_tx_mode mode;
    uint32_t vlan;     /* the call's VLAN argument */
    uint32_t tag_vlan; /* VLAN tag in the frame, 0 for none */
    adp_intf_t source;
    adp_status_t wanted;
    size_t count; /* 0: no list is given */
    adp_intf_t list[kListRoom];
};

static const struct transmit kTransmits[] = {
    {"low-port", "mode 3, to port 1", ADP_TX_ONE_PORT, ADP_NO_VLAN, 0, 0, ADP_OK, 1, {1}},
    {"high-port", "mode 3, to port 22", ADP_TX_ONE_PORT, ADP_NO_VLAN, 0, 0, ADP_OK, 1, {22}},
    {"last-port", "mode 3, to port 5, then 26", ADP_TX_ONE_PORT, ADP_NO_VLAN, 0, 0, ADP_OK, 2, {5, 26}},
    {"vlan-port", "mode 2, to port 21 of VLAN 100", ADP_TX_VLAN_PORT, 100, 100, 0, ADP_OK, 1, {21}},
    {"not-source", "mode 4, to ports 22 and 5 but source 5", ADP_TX_VLAN_NOT_SOURCE, 100, 100, 5, ADP_OK, 2, {22, 5}},
    {"list", "mode 0, to ports 1 2 21 22 26", ADP_TX_PORTS, ADP_NO_VLAN, 0, 0, ADP_OK, 5, {1, 2, 21, 22, 26}},
    {"vlan-list", "mode 0, to ports 1 2 22 if in VLAN 100", ADP_TX_PORTS, 100, 100, 0, ADP_OK, 3, {1, 2, 22}},
    {"group", "mode 0, to group 1 and port 2", ADP_TX_PORTS, ADP_NO_VLAN, 0, 0, ADP_OK, 2, {GROUP_WITH_PORT, 2}},
    {"no-group", "mode 0, to group 2 and port 5", ADP_TX_PORTS, ADP_NO_VLAN, 0, 0, ADP_OK, 2, {GROUP_WITHOUT_PORT, 5}},
    {"vlan-flood", "mode 0, to VLAN 200 but source 2", ADP_TX_PORTS, 200, 200, 2, ADP_OK, 0, {0}},
    {"flood", "mode 0, to every port but source 1", ADP_TX_PORTS, ADP_NO_VLAN, 0, 1, ADP_OK, 0, {0}},
    {"switched", "mode 1, switched in VLAN 200", ADP_TX_SWITCH, ADP_NO_VLAN, 200, 0, ADP_OK, 0, {0}},
    {"stranger", "mode 2, to port 2, not in VLAN 100", ADP_TX_VLAN_PORT, 100, 100, 0, ADP_FAIL, 1, {2}},
};

/* Builds a broadcast frame with the step's name as payload, so that it can be recognised. */
static uint32_t build_frame(uint8_t frame[kFrameRoom], const char *name, uint32_t tag_vlan) {
    static const uint8_t kAddresses[2 * ETH_ALEN] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x02, 0, 0, 0, 0x0C, 0x01};
    uint16_t words[3] = {htons(ETH_P_8021Q), htons((uint16_t)tag_vlan), htons(kTestEtherType)};
    size_t first = tag_vlan != 0 ? 0 : 2;
    size_t at = sizeof kAddresses;

    memset(frame, 0, kFrameRoom);
    memcpy(frame, kAddresses, sizeof kAddresses);
    memcpy(frame + at, words + first, sizeof words - first * sizeof *words);
    at += sizeof words - first * sizeof *words;
    snprintf((char *)frame + at, kFrameRoom - at, "<frame_path %s>", name);
    return kFrameRoom;
}

static bool transmit(const struct transmit *what) {
    uint8_t bytes[kFrameRoom];
    const adp_tx_frame_t frame = {bytes, build_frame(bytes, what->name, what->tag_vlan), what->source};
    adp_list_link_t head = {&head, &head};
    adp_tx_dest_t nodes[kListRoom];

    for (size_t i = 0; i < what->count; i++) {
        nodes[i].intf = what->list[i];
        nodes[i].link = (adp_list_link_t){&head, head.prev};
        head.prev->next = &nodes[i].link;
        head.prev = &nodes[i].link;
    }
    return expect("__adp_transmit_frame",
                  __adp_transmit_frame(&frame, what->count ? &head : NULL, what->vlan, what->mode), what->wanted);
}

static bool transmit_to_group(void) {
    uint8_t frame[kFrameRoom];
    uint32_t length = build_frame(frame, "single", 0);
    return expect("adp_transmit_frame", adp_transmit_frame(frame, length, 0, GROUP_WITH_PORT, kOpcodeOnePort), ADP_OK);
}

static bool transmit_to_empty_group(void) {
    uint8_t frame[kFrameRoom];
    uint32_t length = build_frame(frame, "no-single", 0);
    return expect("adp_transmit_frame", adp_transmit_frame(frame, length, 0, GROUP_WITHOUT_PORT, kOpcodeOnePort),
                  ADP_FAIL);
}

static bool tidy_up(void) {
    return set_office_pvid(kDefaultVlan) && expect("adp_vlan_destroy(100)", adp_vlan_destroy(kOfficeVlan), ADP_OK) &&
           expect("adp_vlan_destroy(200)", adp_vlan_destroy(kCameraVlan), ADP_OK);
}

/* Announces a step and, when stepping, waits for a line; false at the end of the input. */
static bool announce(const char *name, const char *title, bool stepping) {
    char line[kFrameRoom];
    printf("-- %s: %s\n", name, title);
    fflush(stdout);
    return !stepping || fgets(line, sizeof line, stdin) != NULL;
}

struct step {
    const char *name;
    const char *title;
    bool (*run)(void);
};

static bool run_steps(const struct step *steps, size_t count, bool stepping) {
    for (size_t i = 0; i < count; i++)
        if (!announce(steps[i].name, steps[i].title, stepping) || !steps[i].run())
            return false;
    return true;
}

static bool run_transmits(bool stepping) {
    for (size_t i = 0; i < sizeof kTransmits / sizeof *kTransmits; i++)
        if (!announce(kTransmits[i].name, kTransmits[i].asked, stepping) || !transmit(&kTransmits[i]))
            return false;
    return true;
}

int main(int argc, char **argv) {
    static const struct step kSetUp[] = {
        {"port-map", "set up the port map", set_up_port_map},
        {"vlans", "create two VLANs", create_vlans},
        {"management-port", "give group 1 its management port", give_management_port},
        {"send-socket", "open the send socket", open_send_socket},
    };
    static const struct step kRest[] = {
        {"single", "adp_transmit_frame, to group 1", transmit_to_group},
        {"no-single", "adp_transmit_frame, to group 2, without a port", transmit_to_empty_group},
        {"listen", "listen to the hosts", listen_on_cpu_port},
        {"receive", "receive what the hosts sent", receive_frames},
        {"tidy", "remove the VLANs", tidy_up},
    };
    bool stepping = argc == 2 && strcmp(argv[1], "--step") == 0;
    if (argc > 1 && !stepping) {
        fprintf(stderr, "usage: frame_path [--step]\n");
        return 2;
    }
    setvbuf(stdout, NULL, _IOLBF, 0);
    bool done = run_steps(kSetUp, sizeof kSetUp / sizeof *kSetUp, stepping) && run_transmits(stepping) &&
                run_steps(kRest, sizeof kRest / sizeof *kRest, stepping) &&
                announce("done", "every step had the expected result", false);
    return done ? 0 : 1;
}
