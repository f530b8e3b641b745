// VLANs, port VLAN ids, translation and double tags.
#include <cstring>

#include "platform/netlink_api.h"
#include "tests/differential/reference/tables.h"

namespace reference {
namespace {

uint32_t low16(uint32_t word) {
    return word & 0xFFFF;
}

const uint32_t *as_ports(adp_word_t word) {
    return reinterpret_cast<const uint32_t *>(word);
}

}  // namespace

adp_status_t adp_vlan_create(uint32_t vlan) {
    return user_vlan_create(0, 0, low16(vlan));
}

adp_status_t adp_vlan_destroy(uint32_t vlan) {
    return user_vlan_destroy(0, 0, low16(vlan));
}

adp_status_t adp_vlan_createEx(uint32_t first, uint32_t second) {
    return user_vlan_createEx(0, 0, low16(first), low16(second));
}

adp_status_t adp_vlan_destroyEx(uint32_t first, uint32_t second) {
    return user_vlan_destroyEx(0, 0, low16(first), low16(second));
}

adp_status_t adp_vlan_port_add(uint32_t vlan, adp_word_t ports, adp_word_t untagged) {
    return user_vlan_port_add(0, 0, low16(vlan), as_ports(ports), as_ports(untagged));
}

adp_status_t adp_vlan_port_addEx(uint32_t first, uint32_t second, adp_word_t ports, adp_word_t untagged) {
    return user_vlan_port_addEx(0, 0, low16(first), low16(second), as_ports(ports), as_ports(untagged));
}

adp_status_t adp_vlan_port_remove(uint32_t vlan, adp_word_t ports) {
    return user_vlan_port_remove(0, 0, low16(vlan), as_ports(ports));
}

adp_status_t adp_vlan_port_removeEx(uint32_t first, uint32_t second, adp_word_t ports) {
    return user_vlan_port_removeEx(0, 0, low16(first), low16(second), as_ports(ports));
}

adp_status_t adp_vlan_default_set(uint32_t vlan) {
    return user_vlan_default_set(0, 0, low16(vlan));
}

adp_status_t adp_vlan_default_get(uint32_t *vlan) {
    return user_vlan_default_get(0, 0, vlan);
}

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
    const auto set = [&](int32_t /*member*/) { return user_port_untagged_vlan_set(0, 0, port, low16(vlan)); };
    if (is_user_port(intf)) {
        return set(port);
    }
    if (!is_agg(intf)) {
        return 201;
    }
    return is_group(intf) ? each_member(active_members(intf), set) : -1;
}

adp_status_t adp_intf_pivd_get(adp_intf_t intf, uint32_t *vlan) {
    if (type_of(intf) > 1) {
        return 201;
    }
    uint32_t port_intf = intf;
    if (is_agg(intf)) {
        if (!is_group(intf)) {
            return -1;
        }
        port_intf = manager_of(intf);
        if (port_intf == 0) {
            GET_AGG_CONFIG_MIN_INTF(intf, &port_intf);
        }
        if (port_intf == 0) {
            return 203;
        }
    }
    return or_102(user_port_untagged_vlan_get(0, 0, adp_intf_2_phy_id(port_intf), vlan));
}

// Translation, subnets, double tags

adp_status_t adp_vlan_translate_add(adp_word_t a, adp_word_t b, adp_word_t c, uint32_t d, uint32_t e, adp_word_t f) {
    return user_vlan_translate_add(0, 0, a, b, c, low16(d), low16(e), f);
}

adp_status_t adp_vlan_translate_delete(adp_word_t a, adp_word_t b, uint32_t c) {
    return user_vlan_translate_delete(0, 0, a, b, low16(c));
}

adp_status_t adp_vlan_translate_delete_all() {
    return user_vlan_translate_delete_all(0, 0);
}

adp_status_t adp_vlan_translate_get(adp_word_t a, uint32_t b, uint32_t *c, uint32_t *d) {
    return user_vlan_translate_get(0, 0, a, low16(b), c, d);
}

adp_status_t adp_vlan_translate_egress_add(adp_word_t a, adp_word_t b, uint32_t c, uint32_t d, adp_word_t e) {
    return user_vlan_translate_egress_add(0, 0, a, b, low16(c), low16(d), e);
}

adp_status_t adp_vlan_translate_egress_delete(adp_word_t a, adp_word_t b, uint32_t c) {
    return user_vlan_translate_egress_delete(0, 0, a, b, low16(c));
}

adp_status_t adp_vlan_translate_egress_delete_all() {
    return user_vlan_translate_egress_delete_all(0, 0);
}

adp_status_t adp_vlan_translate_egress_get(adp_word_t a, uint32_t b, uint32_t *c, uint32_t *d) {
    return user_vlan_translate_egress_get(0, 0, a, low16(b), c, d);
}

adp_status_t adp_vlan_ip4_add(adp_word_t a, adp_word_t b, adp_word_t c, uint32_t d, adp_word_t e, adp_word_t f) {
    return user_vlan_ip4_add(0, 0, a, b, c, low16(d), e, f);
}

adp_status_t adp_vlan_ip4_delete(adp_word_t a, adp_word_t b, adp_word_t c) {
    return user_vlan_ip4_delete(0, 0, a, b, c);
}

adp_status_t adp_vlan_ip4_delete_all() {
    return user_vlan_ip4_delete_all(0, 0);
}

adp_status_t adp_vlan_dtag_delete_all() {
    return user_vlan_dtag_delete_all(0, 0);
}

namespace {

template <typename Step>
adp_status_t on_port_or_active(uint32_t intf, Step step) {
    if (is_user_port(intf)) {
        return step(adp_intf_2_phy_id(intf));
    }
    if (!is_agg(intf)) {
        return 201;
    }
    return is_group(intf) ? each_member(active_members(intf), step) : -1;
}

}  // namespace

adp_status_t adp_vlan_dtag_add(adp_word_t a, adp_intf_t intf, adp_word_t b, uint32_t c, uint32_t d, adp_word_t e) {
    return on_port_or_active(intf,
                             [&](int32_t port) { return user_vlan_dtag_add(0, 0, a, port, b, low16(c), low16(d), e); });
}

adp_status_t adp_vlan_dtag_delete(adp_word_t a, adp_intf_t intf, uint32_t c) {
    return on_port_or_active(intf, [&](int32_t port) { return user_vlan_dtag_delete(0, 0, a, port, low16(c)); });
}

adp_status_t adp_vlan_dtag_get(adp_intf_t intf, uint32_t vlan, uint32_t *c, uint32_t *d) {
    return on_port_or_manager(intf,
                              [&](int32_t port) { return or_102(user_vlan_dtag_get(0, 0, port, low16(vlan), c, d)); });
}

adp_status_t adp_double_tag_set(adp_intf_t intf, uint32_t mode) {
    return on_port_or_active(intf, [&](int32_t port) { return user_port_dtag_mode_set(0, 0, port, low16(mode)); });
}

adp_status_t adp_double_tag_get(adp_intf_t intf, uint32_t *mode) {
    if (is_agg(intf) && is_group(intf) && manager_of(intf) == 0) {
        return 0;
    }
    return on_port_or_manager(intf, [&](int32_t port) { return or_102(user_port_dtag_mode_get(0, 0, port, mode)); });
}

adp_status_t adp_double_tag_tipd_set(adp_intf_t intf, uint32_t tpid, adp_word_t c) {
    return on_port_or_active(intf, [&](int32_t port) { return user_port_tpid_set(0, 0, port, low16(tpid), c); });
}

adp_status_t adp_double_tag_tpid_get(adp_intf_t intf, uint32_t *tpid) {
    return on_port_or_manager(intf, [&](int32_t port) { return or_102(user_port_tpid_get(0, 0, port, tpid)); });
}

}  // namespace reference
