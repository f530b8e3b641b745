/*
 * Sets and reads the port VLAN of a group that has active members, and prints both results. Groups cannot be formed by
 * calls alone here, so the group's record is written where the library exports it.
 */
#include <stdio.h>

#include <adp/adp.h>

enum { kUserPort = 22, kPhysicalPort = 25, kVlan = 1 };

int main(void) {
    const adp_intf_t group = ADP_AGG_INTF(2);
    uint32_t vlan = 0;

    if (adp_set_max_phy_port_num(ADP_USER_PORTS) != ADP_OK ||
        adp_add_phy_port(kUserPort, 0, 0, kPhysicalPort, 0) != ADP_OK) {
        fprintf(stderr, "group_pvid: the port map cannot be set up.\n");
        return 1;
    }
    agg_info[1].count = 1;
    agg_info[1].ports[0] = kPhysicalPort;
    agg_standby_members[1][0] = 1u << kUserPort;
    printf("set %d\n", (int)adp_intf_pivd_set(group, kVlan));
    printf("get %d\n", (int)adp_intf_pivd_get(group, &vlan));
    printf("vlan %u\n", (unsigned)vlan);
    return 0;
}
