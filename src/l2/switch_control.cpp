// Switch controls, traps and per-port controls that do not fan out over a group.
#include <adp/l2.h>
#include <netlink_api.h>

#include "core/resolve.h"

using namespace adp;

adp_status_t adp_switch_control_set(uint32_t control, uint32_t value) {
    return driver_status(user_switch_control_set(0, 0, control, value));
}

adp_status_t adp_switch_control_get(uint32_t control, uint32_t *value) {
    return user_switch_control_get(0, 0, control, value);
}

adp_status_t adp_selfmac_trap_tocpu(uint32_t enable, uint32_t, uint32_t, adp_word_t option) {
    return user_selfmac_trap_to_cpu(0, 0, enable, option);
}

adp_status_t hal_vlan_control_port_set(adp_intf_t intf, uint32_t control, int32_t value) {
    return on_port_only(Intf(intf), user_vlan_control_port_set, control, value);
}

adp_status_t hal_vlan_control_port_get(adp_intf_t intf, uint32_t control, uint32_t *value) {
    return on_port_only(Intf(intf), user_vlan_control_port_get, control, value);
}
