// Storm control, queues and priority maps.
#include "platform/netlink_api.h"
#include "tests/differential/reference/tables.h"

namespace reference {
namespace {

uint32_t storm_type(uint32_t code) {
    switch (code & 0xFF) {
        case 1:
            return 3;
        case 2:
            return 2;
        case 4:
            return 4;
        case 8:
            return 1;
        default:
            return 0;
    }
}

}  // namespace

adp_status_t adp_set_storm_control(uint32_t dev_id, adp_intf_t intf, uint32_t code, uint32_t rate, uint32_t burst) {
    const auto set = [&](int32_t port) {
        return or_102(user_rate_bandwidth_set(0, 0, port, storm_type(code), rate, burst));
    };
    if (dev_id == 1) {
        return 0;
    }
    if (type_of(intf) > 1) {
        return 201;
    }
    if (is_user_port(intf)) {
        return set(adp_intf_2_phy_id(intf));
    }
    return is_group(intf) ? each_member(configured_members(intf), set) : -1;
}

adp_status_t adp_get_storm_control(uint32_t dev_id, adp_intf_t intf, uint32_t code, uint32_t *rate, uint32_t *burst) {
    if (dev_id == 1) {
        return 0;
    }
    return on_port_or_manager(
        intf, [&](int32_t port) { return or_102(user_rate_bandwidth_get(0, 0, port, storm_type(code), rate, burst)); });
}

adp_status_t adp_set_storm_seltype(uint32_t dev_id, adp_intf_t intf, uint32_t code, uint32_t value) {
    return dev_id == 1 ? 0 : on_port_only(intf, [&](int32_t port) {
        return user_rate_stormsel_set(0, 0, port, storm_type(code), value);
    });
}

adp_status_t adp_get_storm_seltype(uint32_t dev_id, adp_intf_t intf, uint32_t code, uint32_t *value) {
    return dev_id == 1 ? 0 : on_port_only(intf, [&](int32_t port) {
        return user_rate_stormsel_get(0, 0, port, storm_type(code), value);
    });
}

adp_status_t adp_set_stormcontrol_enable(uint32_t dev_id, adp_intf_t intf, uint32_t code, uint32_t enable) {
    return dev_id == 1 ? 0 : on_port_only(intf, [&](int32_t port) {
        return user_rate_stormControlEnable_set(0, 0, port, storm_type(code), enable);
    });
}

adp_status_t adp_get_storm_exceed_flag(uint32_t dev_id, adp_intf_t intf, uint32_t code, uint32_t *flag) {
    return dev_id == 1 ? 0 : on_port_only(intf, [&](int32_t port) {
        return user_rate_stormExceedFlag_get(0, 0, port, code & 0xFF, flag);
    });
}

adp_status_t adp_reset_storm_exceed_flag(uint32_t dev_id, adp_intf_t intf) {
    const auto reset = [](int32_t port) { return or_102(user_rate_stormExceedFlag_reset(0, 0, port)); };
    if (dev_id == 1) {
        return 0;
    }
    if (type_of(intf) > 1) {
        return 201;
    }
    if (is_user_port(intf)) {
        return reset(adp_intf_2_phy_id(intf));
    }
    if (!is_group(intf)) {
        return -1;
    }
    Members first_eight = configured_members(intf);
    first_eight.count = 8;
    return each_member(first_eight, reset);
}

adp_status_t adp_set_storm_counting_mode(uint32_t dev_id, uint32_t a, uint32_t /*unused*/, uint32_t c) {
    return dev_id == 1 ? 0 : or_102(user_rate_stormCountMode_set(0, 0, a & 0xFF, c));
}

adp_status_t adp_get_storm_counting_mode(uint32_t dev_id, uint32_t a, uint32_t /*unused*/, uint32_t *c) {
    return dev_id == 1 ? 0 : or_102(user_rate_stormCountMode_get(0, 0, a, c));
}

adp_status_t adp_set_ingress_limit(uint32_t dev_id, adp_intf_t intf, uint32_t rate, uint32_t burst) {
    return dev_id == 1
               ? 0
               : on_port_only(intf, [&](int32_t port) { return user_port_ingress_rate_set(0, 0, port, rate, burst); });
}

adp_status_t adp_get_ingress_limit(uint32_t dev_id, adp_intf_t intf, uint32_t *rate, uint32_t *burst) {
    return dev_id == 1
               ? 0
               : on_port_only(intf, [&](int32_t port) { return user_port_ingress_rate_get(0, 0, port, rate, burst); });
}

// Queues

namespace {

uint32_t mask_of(uint32_t intf) {
    return intf < 32 ? 1u << intf : 0;
}

}  // namespace

adp_status_t adp_qos_init() {
    const int32_t result = user_cosq_config_set(0, 0, 8);
    user_qos_default_cos_src_init();
    user_qos_remark_inner_tag_src_init();
    user_qos_trust_sel_group_init();
    user_field_meter_ifg_exclude_init();
    user_qos_cpu_weight_init();
    return or_102(result);
}

adp_status_t adp_set_port_queue_sch_mode(adp_intf_t intf, uint32_t mode) {
    if (mode == 3) {
        return 501;
    }
    return on_port_only(intf, [&](int32_t /*port*/) {
        const uint32_t weights[8] = {};
        return user_cosq_port_sched_set(0, 0, mask_of(intf), mode, weights, 0);
    });
}

adp_status_t adp_set_queue_weight_pri(adp_intf_t intf, uint32_t value, uint32_t select, adp_queue_weights_t weights) {
    return on_port_only(intf, [&](int32_t /*port*/) {
        if ((select & 0xFF) != 0) {
            return user_cosq_port_mapping_set(0, 0, static_cast<int32_t>(mask_of(intf)), weights.weight[0], value);
        }
        uint32_t mode = 0;
        uint32_t delay = 0;
        const int32_t result = user_cosq_port_sched_get(0, 0, mask_of(intf), &mode, weights.weight, &delay);
        return result != 0 ? result : user_cosq_port_sched_set(0, 0, mask_of(intf), mode, weights.weight, delay);
    });
}

adp_status_t adp_cosq_sched_set(uint32_t a, uint32_t b, uint32_t c, uint32_t d) {
    user_qos_schedule_set(a, b, c, d);
    return 0;
}

adp_status_t adp_cosq_sched_get(uint32_t a, uint32_t b, uint32_t *out, uint32_t d) {
    *out = 0;
    user_qos_schedule_get(a, b, out, d);
    return 0;
}

adp_status_t adp_set_port_egress_shaper(adp_intf_t intf, uint32_t rate, uint32_t burst) {
    return on_port_only(intf, [&](int32_t port) { return user_port_egress_rate_set(0, 0, port, rate, burst); });
}

adp_status_t adp_get_port_egress_shaper(adp_intf_t intf, uint32_t *rate, uint32_t *burst) {
    return on_port_only(intf, [&](int32_t port) { return user_port_egress_rate_get(0, 0, port, rate, burst); });
}

adp_status_t adp_set_queue_drop_method() {
    return 0;
}

adp_status_t adp_set_queue_wred_drop_probability() {
    return 0;
}

adp_status_t adp_set_queue_shaper() {
    return 0;
}

adp_status_t adp_get_queue_shaper() {
    return 0;
}

// Priority maps

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
