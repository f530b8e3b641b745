// The tables before each call. It makes no driver calls.
#include "bench/calls/state.h"

#include <adp/adp.h>
#include <stdlib.h>
#include <string.h>

// User port i is physical port i + 3 on the default board.
#define PORT_OFFSET 3u

static const uint8_t kActiveOfTwo[] = {3, 5, 7};
static const uint8_t kActiveOfEight[] = {1, 4, 6, 8, 10, 12, 14, 16};
static const uint8_t kConfiguredOfTwo[] = {2, 5, 9};
static const uint8_t kConfiguredOfEight[] = {3, 4, 7, 9, 11, 13, 15, 17};

static int32_t ignore_link(uint32_t unit, uint32_t port, uint32_t status) {
    (void)unit;
    (void)port;
    (void)status;
    return 0;
}

static int32_t ignore_group(const adp_agg_event_t *event) {
    (void)event;
    return 0;
}

static void drop_rules(void) {
    while (acl_fp_list_head.next != NULL && acl_fp_list_head.next != &acl_fp_list_head) {
        adp_list_link_t *link = acl_fp_list_head.next;
        acl_fp_list_head.next = link->next;
        free(link);
    }
    acl_fp_list_head.next = acl_fp_list_head.prev = &acl_fp_list_head;
}

static int make_map(void) {
    free(intf_to_phy_port);
    free(intf_map_trunk);
    int failed = adp_set_max_phy_port_num(ADP_USER_PORTS) != ADP_OK || adp_add_cpu_port(0, 0, 0, 0, 0) != ADP_OK;
    for (uint32_t port = 1; !failed && port <= ADP_USER_PORTS; ++port) {
        failed = adp_add_phy_port(port, 0, 0, port + PORT_OFFSET, 0) != ADP_OK;
    }
    return failed;
}

static void make_group(uint32_t group, const uint8_t *active, size_t count, const uint8_t *configured, size_t all) {
    adp_agg_record_t *record = &agg_info[group - 1];
    record->count = (int32_t)count;
    record->in_use = 1;
    for (size_t index = 0; index < count; ++index) {
        record->ports[index] = (uint8_t)(active[index] + PORT_OFFSET);
        intf_map_trunk[active[index]] = ADP_AGG_INTF(group);
    }
    for (size_t index = 0; index < all; ++index) {
        agg_standby_members[group - 1][0] |= 1u << configured[index];
    }
    agg_manage_intf[group - 1] = active[1];
}

int bring_up(void) {
    if (make_map() != 0) {
        return -1;
    }
    memset(agg_info, 0, sizeof agg_info);
    memset(agg_standby_members, 0, sizeof agg_standby_members);
    memset(agg_manage_intf, 0, sizeof agg_manage_intf);
    memset(g_intf_link_data, 0, sizeof g_intf_link_data);
    memset(aiVlanStg, 0, sizeof aiVlanStg);
    drop_rules();
    make_group(2, kActiveOfTwo, sizeof kActiveOfTwo, kConfiguredOfTwo, sizeof kConfiguredOfTwo);
    make_group(8, kActiveOfEight, sizeof kActiveOfEight, kConfiguredOfEight, sizeof kConfiguredOfEight);
    link_event_handle = ignore_link;
    agg_event_handle = ignore_group;
    return 0;
}
