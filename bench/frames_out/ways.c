// Each way to send a frame by the library.
#include "bench/frames_out/ways.h"

#include <stddef.h>
#include <string.h>

#include <device_services.h>

#include "examples/board.h"

enum { kVlan = 100, kOpcodeOnePort = 5, kPort = 7, kDestinations = 3 };

static const struct way kWays[] = {
    {"mode 0, list", false, true, ADP_NO_VLAN, ADP_TX_PORTS},
    {"mode 0, flood", false, false, ADP_NO_VLAN, ADP_TX_PORTS},
    {"mode 0, flood in VLAN", false, false, kVlan, ADP_TX_PORTS},
    {"mode 1", false, false, ADP_NO_VLAN, ADP_TX_SWITCH},
    {"mode 2", false, true, kVlan, ADP_TX_VLAN_PORT},
    {"mode 3", false, true, ADP_NO_VLAN, ADP_TX_ONE_PORT},
    {"mode 4", false, true, kVlan, ADP_TX_VLAN_NOT_SOURCE},
    {"adp_transmit_frame", true, false, ADP_NO_VLAN, kOpcodeOnePort},
};

static adp_tx_dest_t destinations[kDestinations];
static adp_list_link_t list;

/* The device's service, answered within this process: all ports are members. */
int32_t get_vlan_info(uint32_t vid, uint8_t record[DEVICE_VLAN_RECORD_BYTES]) {
    memset(record + DEVICE_VLAN_MEMBERS_OFFSET, 0xFF, sizeof(uint64_t));
    return vid == kVlan ? 0 : -1;
}

const struct way *find_way(const char *name) {
    for (size_t i = 0; i < sizeof kWays / sizeof *kWays; i++)
        if (strcmp(kWays[i].name, name) == 0)
            return &kWays[i];
    return NULL;
}

static void append(adp_tx_dest_t *node, adp_intf_t port) {
    node->intf = port;
    node->link.next = &list;
    node->link.prev = list.prev;
    list.prev->next = &node->link;
    list.prev = &node->link;
}

bool prepare_ways(void) {
    list.next = list.prev = &list;
    for (adp_intf_t i = 0; i < kDestinations; i++)
        append(&destinations[i], kPort + i);
    return set_up_board() == ADP_OK && adp_pkt_init() >= 0;
}

bool send_by(const struct way *way, const adp_tx_frame_t *frame) {
    if (way->single)
        return adp_transmit_frame(frame->frame, frame->length, 0, kPort, way->mode) == ADP_OK;
    return __adp_transmit_frame(frame, way->with_list ? &list : NULL, way->vid, way->mode) == ADP_OK;
}
