// Priority maps, trust and the priority of untagged frames.
#include "platform/netlink_api.h"
#include "tests/differential/reference/tables.h"

namespace reference {
namespace {

/** What a map of another kind than @p own gets, or what @p row gives for 0..count - 1 until one fails. */
template <typename Row>
adp_status_t each_row(uint32_t type, uint32_t own, uint32_t count, Row row) {
    if (type != own) {
        return type == 2 ? 0 : 101;
    }
    for (uint32_t n = 0; n < count; ++n) {
        if (row(n) != 0) {
            return 102;
        }
    }
    return 0;
}

}  // namespace

adp_status_t adp_create_dot1p_map(uint32_t type, const adp_dot1p_map_entry_t *entries) {
    return each_row(type, 0, 8, [&](uint32_t p) { return user_cosq_mapping_set(0, 0, p, entries[p].queue); });
}

adp_status_t adp_get_dot1p_map(uint32_t type, adp_dot1p_map_entry_t *entries) {
    return each_row(type, 0, 8, [&](uint32_t p) { return user_cosq_mapping_get(0, 0, p, &entries[p].queue); });
}

adp_status_t adp_delete_dot1p_map(uint32_t type) {
    return each_row(type, 0, 8, [&](uint32_t p) { return user_cosq_mapping_set(0, 0, p, p / 2); });
}

adp_status_t adp_create_dscp_map(uint32_t type, const adp_dscp_map_entry_t *entries) {
    return each_row(type, 1, 64, [&](uint32_t d) {
        return user_port_dscp_map_set(0, 0, -1, static_cast<int32_t>(d), entries[d].mapped, entries[d].priority);
    });
}

adp_status_t adp_get_dscp_map(uint32_t type, adp_dscp_map_entry_t *entries) {
    return each_row(type, 1, 64, [&](uint32_t d) {
        return user_port_dscp_map_get(0, 0, -1, static_cast<int32_t>(d), &entries[d].mapped, &entries[d].priority);
    });
}

adp_status_t adp_delete_dscp_map(uint32_t type) {
    return each_row(type, 1, 64, [](uint32_t) { return user_port_dscp_map_set(0, 0, -1, -1, -1, 0); });
}

namespace {

adp_status_t set_untagged(uint32_t intf, uint32_t priority) {
    return on_port_only(intf, [&](int32_t port) { return user_port_untagged_priority_set(0, 0, port, priority); });
}

}  // namespace

adp_status_t adp_add_dot1p_assign(uint32_t type, adp_intf_t intf, uint32_t /*unused3*/, uint32_t /*unused4*/,
                                  uint32_t /*unused5*/, uint32_t priority) {
    return type == 2 ? set_untagged(intf, priority & 0xFF) : type < 2 ? 0 : 101;
}

adp_status_t adp_del_dot1p_assign(uint32_t type, adp_intf_t intf, uint32_t /*unused3*/, uint32_t /*unused4*/,
                                  uint32_t /*unused5*/, uint32_t /*unused6*/) {
    return type == 2 ? set_untagged(intf, 0) : 0;
}

adp_status_t adp_set_port_pri_trust_mode(adp_intf_t intf, uint32_t mode) {
    return on_port_only(intf, [&](int32_t port) { return user_port_dscp_map_mode_set(0, 0, port, mode); });
}

adp_status_t adp_get_port_pri_trust_mode(adp_intf_t intf, uint32_t *mode) {
    return on_port_only(intf, [&](int32_t port) { return user_port_dscp_map_mode_get(0, 0, port, mode); });
}

adp_status_t adp_set_port_cos_map(adp_intf_t intf, uint32_t priority) {
    return is_agg(intf) ? 201 : set_untagged(intf, priority);
}

adp_status_t adp_get_port_cos_map(adp_intf_t intf, uint32_t *priority) {
    return is_agg(intf) ? 201 : on_port_only(intf, [&](int32_t port) {
        return user_port_untagged_priority_get(0, 0, port, priority);
    });
}

adp_status_t adp_cosq_port_mapping_set(adp_intf_t intf, uint32_t a, uint32_t b) {
    return on_port_only(intf, [&](int32_t port) { return user_cosq_port_mapping_set(0, 0, port, a, b); });
}

adp_status_t adp_cosq_port_mapping_get(adp_intf_t intf, uint32_t a, uint32_t *b) {
    return on_port_only(intf, [&](int32_t port) { return user_cosq_port_mapping_get(0, 0, port, a, b); });
}

adp_status_t adp_port_dscp_map_set(uint32_t /*unused*/, int32_t a, int32_t b, uint32_t c) {
    return user_port_dscp_map_set(0, 0, -1, a, b, c);
}

adp_status_t adp_port_dscp_map_get(uint32_t /*unused*/, int32_t a, uint8_t *b, uint8_t *c) {
    return user_port_dscp_map_get(0, 0, -1, a, b, c);
}

adp_status_t adp_cosq_mapping_set(adp_word_t a, adp_word_t b, adp_word_t c, adp_word_t d) {
    return user_qos_pri_queue_map_set(a, b, c, d);
}

adp_status_t adp_cosq_mapping_get(adp_word_t a, adp_word_t b, adp_word_t c, uint32_t *d) {
    return user_qos_pri_queue_map_get(a, b, c, d);
}

adp_status_t adp_dscp_map_set(adp_word_t a, adp_word_t b, adp_word_t c, adp_word_t d) {
    return user_qos_dscp_map_set(a, b, c, d);
}

adp_status_t adp_dscp_map_get(adp_word_t a, adp_word_t b, adp_word_t c, uint32_t *d) {
    return user_qos_dscp_map_get(a, b, c, d);
}

adp_status_t adp_set_dot1p_pri_remap(adp_word_t a, adp_word_t b, adp_word_t /*unused*/, adp_word_t d,
                                     adp_word_t further1, adp_word_t further2, adp_word_t further3,
                                     adp_word_t further4) {
    return user_qos_pri_remap_set(0, a, b, d, further1, further2, further3, further4);
}

adp_status_t adp_port_cos_map_set(adp_intf_t intf, uint32_t value) {
    return user_qos_port_cos_set(adp_intf_2_phy_id(intf), value);
}

adp_status_t adp_port_cos_map_get(adp_intf_t intf, uint32_t *value) {
    return user_qos_port_cos_get(adp_intf_2_phy_id(intf), value);
}

adp_status_t adp_vlan_control_port_set(adp_intf_t intf, uint32_t control, int32_t value) {
    return hal_vlan_control_port_set(intf, control, value);
}

adp_status_t adp_vlan_control_port_get(adp_intf_t intf, uint32_t control, uint32_t *value) {
    return hal_vlan_control_port_get(intf, control, value);
}

}  // namespace reference
