/* A program that is not position-independent, as a management daemon may be: it reads the library's tables through copy
 * relocations, and library and program must use the same object. */
#include <adp/adp.h>
#include <stdio.h>

static int failures;

static void expect(int good, const char *what) {
    printf("%s %s\n", good ? "ok    " : "FAILED", what);
    failures += !good;
}

static int32_t on_link(uint32_t unit, uint32_t port, uint32_t status) {
    return (int32_t)(unit + port + status);
}

int main(void) {
    uint32_t intf = 0;
    uint32_t count = 0;
    uint32_t list[ADP_AGG_ACTIVE_MAX];
    const uint32_t info[4] = {0, 0, 0, 40};

    expect(intf_to_phy_port == NULL && adp_max_phy_port_num == 0, "tables start empty");
    expect(adp_set_max_phy_port_num(26) == ADP_OK && adp_max_phy_port_num == 26, "the maximum is seen by the program");
    expect(adp_add_phy_port(5, 0, 0, 8, 0x77) == ADP_OK && intf_to_phy_port[5].phy == 8, "a map row is seen too");
    intf_to_phy_port[6].phy = 9;
    expect(adp_intf_2_phy_id(6) == 9, "a row written by the program is seen by the library");
    intf_map_trunk[5] = ADP_AGG_INTF(2);
    expect(GET_INTF_MAPPING_AGGINTF(5) == ADP_AGG_INTF(2), "and so is a port's group");
    agg_manage_intf[1] = 6;
    expect(GET_AGG_MANAGE_INTF(ADP_AGG_INTF(2), &intf) == ADP_OK && intf == 6, "and a management interface");
    expect(SET_AGG_MANAGE_INTF(ADP_AGG_INTF(3), 5) == ADP_OK && agg_manage_intf[2] == 5, "the other way round as well");
    agg_info[1].count = 1;
    agg_info[1].ports[0] = 8;
    expect(GET_AGG_GROUP(ADP_AGG_INTF(2), &count, list) == ADP_OK && count == 1 && list[0] == 5,
           "and a group's record");
    agg_standby_members[1][0] = 1u << 6;
    expect(GET_AGG_CONFIG_MIN_INTF(ADP_AGG_INTF(2), &intf) == ADP_OK && intf == 6, "and its configured members");
    expect(adp_linkscan_register(on_link) == ADP_OK && link_event_handle == on_link,
           "a handler is seen by the program");
    expect(linkscan_handle_cb(1, 1, info) == 42, "and called by the library");
    expect(acl_fp_list_head.next == &acl_fp_list_head && acl_fp_list_head.prev == &acl_fp_list_head,
           "a table whose start value is its own address is one object too");
    expect(adp_fp_find_list_node_by_entity(1, 1) == NULL && fp_find_data_by_submodetype(43) == &g_stFpInfo[42],
           "for the library as well");
    return failures != 0;
}
