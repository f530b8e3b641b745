// Learning, cable diagnosis, energy saving and counters of a port.
#include "platform/netlink_api.h"
#include "tests/differential/reference/attributes.h"

namespace reference {

adp_status_t adp_intf_learn_set(adp_intf_t intf, int32_t enable) {
    if (type_of(intf) > 1) {
        return 201;
    }
    return on_port_or_configured(intf, [&](int32_t port) { return user_port_learn_set(0, 0, port, enable); });
}

adp_status_t adp_intf_learn_get(adp_intf_t intf, uint32_t *mode) {
    return on_port_or_manager(intf, [&](int32_t port) { return user_port_learn_get(0, 0, port, mode); });
}

adp_status_t adp_intf_cablediag(adp_intf_t intf, void *result) {
    return on_port_or_manager(intf, [&](int32_t port) {
        return User_port_cablediag(0, 0, port, static_cast<netlink_cable_diag_t *>(result));
    });
}

adp_status_t adp_intf_eee_set(adp_intf_t intf, uint32_t enable) {
    return on_port_or_manager(intf, [&](int32_t port) { return user_eee_portEnable_set(0, 0, port, enable); });
}

adp_status_t adp_intf_eee_get(adp_intf_t intf, uint32_t *enable) {
    return on_port_or_manager(intf, [&](int32_t port) { return user_eee_portEnable_get(0, 0, port, enable); });
}

adp_status_t adp_intf_stat_get(adp_intf_t intf, uint32_t selector, void *out) {
    return user_stat_port_get(0, 0, adp_intf_2_phy_id(intf), selector, static_cast<uint64_t *>(out));
}

adp_status_t adp_intf_combo_port_copper_or_fiber_check(adp_intf_t intf) {
    if (intf >> 28 > 1) {
        return 201;
    }
    const int32_t port = adp_intf_2_phy_id(intf);
    uint32_t autoneg = 0;
    user_port_autoneg_get(0, 0, port, &autoneg);
    if (autoneg == 0) {
        return -1;
    }
    uint32_t advert = 0;
    user_port_ability_advert_get(0, 0, port, &advert);
    return (advert & 0xF0000000) != 0 ? 0 : -1;
}

}  // namespace reference
