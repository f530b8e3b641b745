// Controls of IGMP handling and of multicast forwarding.
#include <adp/mcast.h>
#include <netlink_api.h>

#include "core/port_map.h"

namespace adp {
namespace {

constexpr uint32_t kOff = 0;
constexpr uint32_t kOn = 1;

int32_t phy_number_of(adp_intf_t intf) {
    return number(phy_of(Intf(intf)));
}

// Contract: all user ports of the board, whatever the size of the map; results are ignored.
void on_every_user_port(int32_t (*set)(uint32_t, uint32_t, int32_t, uint32_t), uint32_t action) {
    for (uint32_t port = 1; port <= ADP_USER_PORTS; ++port) {
        set(0, 0, phy_number_of(port), action);
    }
}

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t adp_set_vlan_igmp_pkt_action(uint32_t control, uint32_t value) {
    return user_switch_control_set(0, 0, control, value);
}

adp_status_t adp_get_vlan_igmp_pkt_action(uint32_t control, uint32_t *value) {
    return user_switch_control_get(0, 0, control, value);
}

adp_status_t adp_control_port_l2mc_enable(adp_intf_t intf, uint32_t enable) {
    return User_switch_port_control_l2mc_enable(0, phy_number_of(intf), 0, enable);
}

adp_status_t adp_control_port_l2mc_get_status(adp_intf_t intf, uint32_t *enable) {
    return User_switch_port_control_l2mc_get(0, phy_number_of(intf), 0, enable);
}

adp_status_t adp_control_port_ipmc_get_status(adp_intf_t intf, uint32_t *enable) {
    return User_switch_port_control_ipmc_get(0, phy_number_of(intf), 0, enable);
}

adp_status_t adp_control_port_ipmc_set_enable(adp_intf_t intf, uint32_t enable) {
    return User_switch_port_control_ipmc_set(0, phy_number_of(intf), 0, enable);
}

adp_status_t adp_control_ipmc_set_disable() {
    return User_switch_ipmc_set(0, 0, kOff);
}

adp_status_t adp_control_ipmc_set_enable() {
    return User_switch_ipmc_set(0, 0, kOn);
}

adp_status_t adp_control_ip6mc_mode_enable(uint32_t mode) {
    return User_switch_ip6mc_mode_set(0, 0, mode);
}

adp_status_t adp_control_ipmc_lookup_miss_action(uint32_t action) {
    on_every_user_port(User_switch_ipmc_lookup_miss_action, action);
    return ADP_OK;
}

adp_status_t adp_control_ip6mc_lookup_miss_action(uint32_t action) {
    on_every_user_port(User_switch_ip6mc_lookup_miss_action, action);
    return ADP_OK;
}
