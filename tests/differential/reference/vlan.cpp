// VLANs, port VLAN ids and double tags.
#include <cstring>

#include "platform/netlink_api.h"
#include "tests/differential/reference/l2.h"

namespace reference {
adp_status_t adp_vlan_port_set(uint32_t vlan, const uint32_t *members, const uint32_t *untagged) {
    const PortSet member_ports = to_physical(PortSet::from(members));
    const PortSet untagged_ports = to_physical(PortSet::from(untagged));
    return user_vlan_port_set(0, 0, low16(vlan), member_ports.word.data(), untagged_ports.word.data());
}

adp_status_t adp_vlan_port_get(uint32_t vlan, uint32_t *members, uint32_t *untagged) {
    const int32_t result = user_vlan_port_get(0, 0, low16(vlan), members, untagged);
    for (uint32_t *set : {members, untagged}) {
        const PortSet interfaces = to_interfaces(PortSet::from(set));
        std::memcpy(set, interfaces.word.data(), sizeof interfaces.word);
    }
    return result;
}

adp_status_t adp_intf_pivd_set(adp_intf_t intf, uint32_t vlan) {
    const int32_t port = adp_intf_2_phy_id(intf);
    return on_port_or_members(intf, active_members,
                              [&](int32_t /*member*/) { return user_port_untagged_vlan_set(0, 0, port, low16(vlan)); });
}

adp_status_t adp_double_tag_get(adp_intf_t intf, uint32_t *mode) {
    if (is_agg(intf) && is_group(intf) && manager_of(intf) == 0) {
        return 0;
    }
    return on_port_or_manager(intf, [&](int32_t port) { return or_102(user_port_dtag_mode_get(0, 0, port, mode)); });
}

}  // namespace reference
