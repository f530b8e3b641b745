// Port isolation and switch controls.
#include <cstring>

#include "platform/netlink_api.h"
#include "tests/differential/reference/tables.h"

namespace reference {

adp_status_t hal_set_port_isolate(adp_intf_t intf, uint32_t word0, uint32_t word1) {
    PortSet interfaces;
    interfaces.word[0] = word0;
    interfaces.word[1] = word1;
    const PortSet physical = to_physical(interfaces);
    adp_port_set_t egress{};
    std::memcpy(egress.word, physical.word.data(), sizeof egress.word);
    const auto set = [&](int32_t port) { return or_102(user_port_egress_set(0, 0, port, 0, egress)); };
    if (type_of(intf) > 1) {
        return 201;
    }
    if (is_user_port(intf)) {
        return set(adp_intf_2_phy_id(intf));
    }
    return is_group(intf) ? each_member(configured_members(intf), set) : -1;
}

adp_status_t hal_get_port_isolate(adp_intf_t intf, uint32_t *map) {
    if (is_agg(intf) && !is_group(intf)) {
        map[0] = map[1] = 0;
    }
    return on_port_or_manager(intf, [&](int32_t port) {
        adp_ports_t egress{};
        const int32_t result = user_port_egress_get(0, 0, port, 0, egress);
        const PortSet interfaces = to_interfaces(PortSet::from(egress));
        map[0] = interfaces.word[0];
        map[1] = interfaces.word[1];
        return or_102(result);
    });
}

adp_status_t adp_set_port_isolate(adp_intf_t intf, uint32_t word0, uint32_t word1) {
    return hal_set_port_isolate(intf, word0, word1);
}

adp_status_t adp_get_port_isolatestatus(adp_intf_t intf, uint32_t *map) {
    return hal_get_port_isolate(intf, map);
}

adp_status_t adp_switch_control_set(uint32_t control, uint32_t value) {
    return or_102(user_switch_control_set(0, 0, control, value));
}

adp_status_t adp_switch_control_get(uint32_t control, uint32_t *value) {
    return user_switch_control_get(0, 0, control, value);
}

adp_status_t adp_selfmac_trap_tocpu(uint32_t value, uint32_t /*unused*/, uint32_t /*unused2*/, adp_word_t option) {
    return user_selfmac_trap_to_cpu(0, 0, value, option);
}

adp_status_t hal_vlan_control_port_set(adp_intf_t intf, uint32_t control, int32_t value) {
    return on_port_only(intf, [&](int32_t port) { return user_vlan_control_port_set(0, 0, port, control, value); });
}

adp_status_t hal_vlan_control_port_get(adp_intf_t intf, uint32_t control, uint32_t *value) {
    return on_port_only(intf, [&](int32_t port) { return user_vlan_control_port_get(0, 0, port, control, value); });
}

}  // namespace reference
