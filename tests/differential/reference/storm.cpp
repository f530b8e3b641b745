// Storm control and ingress limits.
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

}  // namespace reference
