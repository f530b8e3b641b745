// Priorities of a port: trust mode, untagged frames, queues.
#include <adp/l2.h>
#include <adp/priority.h>
#include <netlink_api.h>

#include "core/resolve.h"
#include "qos/untagged_priority.h"

namespace adp {
namespace {

/** Contract: unlike other calls on ports these refuse an aggregation interface as a wrong type. */
template <typename Value>
adp_status_t on_user_port(adp_intf_t intf, PortCall<Value> call, Value value) {
    return kind_of(Intf(intf)) == IntfKind::kUserPort ? on_port_only(Intf(intf), call, value) : ADP_E_INTF_TYPE;
}

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t adp_add_dot1p_assign(uint32_t map_type, adp_intf_t intf, uint32_t, uint32_t, uint32_t, uint32_t priority) {
    switch (map_type) {
        case ADP_MAP_DOT1P:
        case ADP_MAP_DSCP:
            return ADP_OK;
        case ADP_MAP_NONE:
            return hal_port_untagged_priority_set(Intf(intf), low8(priority));
        default:
            return ADP_E_SELECTOR;
    }
}

// Contract: an unknown type succeeds, unlike in the add.
adp_status_t adp_del_dot1p_assign(uint32_t map_type, adp_intf_t intf, uint32_t, uint32_t, uint32_t, uint32_t) {
    return map_type == ADP_MAP_NONE ? hal_port_untagged_priority_set(Intf(intf), 0) : ADP_OK;
}

adp_status_t adp_set_port_pri_trust_mode(adp_intf_t intf, uint32_t mode) {
    return on_port_only(Intf(intf), user_port_dscp_map_mode_set, mode);
}

adp_status_t adp_get_port_pri_trust_mode(adp_intf_t intf, uint32_t *mode) {
    return on_port_only(Intf(intf), user_port_dscp_map_mode_get, mode);
}

adp_status_t adp_set_port_cos_map(adp_intf_t intf, uint32_t priority) {
    return on_user_port(intf, user_port_untagged_priority_set, priority);
}

adp_status_t adp_get_port_cos_map(adp_intf_t intf, uint32_t *priority) {
    return on_user_port(intf, user_port_untagged_priority_get, priority);
}

adp_status_t adp_cosq_port_mapping_set(adp_intf_t intf, uint32_t priority, uint32_t queue) {
    return on_port_only(Intf(intf), user_cosq_port_mapping_set, priority, queue);
}

adp_status_t adp_cosq_port_mapping_get(adp_intf_t intf, uint32_t priority, uint32_t *queue) {
    return on_port_only(Intf(intf), user_cosq_port_mapping_get, priority, queue);
}

adp_status_t adp_port_cos_map_set(adp_intf_t intf, uint32_t cos) {
    return user_qos_port_cos_set(number(phy_of(Intf(intf))), cos);
}

adp_status_t adp_port_cos_map_get(adp_intf_t intf, uint32_t *cos) {
    return user_qos_port_cos_get(number(phy_of(Intf(intf))), cos);
}

adp_status_t adp_vlan_control_port_set(adp_intf_t intf, uint32_t control, int32_t value) {
    return hal_vlan_control_port_set(intf, control, value);
}

adp_status_t adp_vlan_control_port_get(adp_intf_t intf, uint32_t control, uint32_t *value) {
    return hal_vlan_control_port_get(intf, control, value);
}
