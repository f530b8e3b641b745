// Isolation, counters, media, mirroring and storm limits of ports.
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
    return on_port_or_members(intf, configured_members,
                              [&](int32_t port) { return or_102(user_port_egress_set(0, 0, port, 0, egress)); });
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

adp_status_t adp_get_port_stat(adp_intf_t intf, uint32_t type, uint64_t *out) {
    if (is_user_port(intf)) {
        return or_102(user_port_packetstat_get(0, 0, adp_intf_2_phy_id(intf), type, out));
    }
    uint64_t sum = 0;
    const adp_status_t status = on_port_or_members(intf, active_members, [&](int32_t port) {
        uint64_t one = 0;
        const int32_t result = user_port_packetstat_get(0, 0, port, type, &one);
        sum += one;
        return result;
    });
    if (status == 0) {
        *out = sum;
    }
    return status;
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

adp_status_t adp_add_port_mirror(adp_intf_t source, adp_intf_t destination, uint32_t directions, uint32_t session) {
    const uint32_t mode = (directions & 1 ? 2u : 0u) + (directions & 2 ? 4u : 0u);
    if (mode == 0) {
        return 0;
    }
    return user_mirror_port_set(0, 0, adp_intf_2_phy_id(source), session - 1, adp_intf_2_phy_id(destination), mode);
}

uint32_t storm_type(uint32_t code) {
    return code == 1 ? 3 : code == 2 ? 2 : code == 4 ? 4 : code == 8 ? 1 : 0;
}

adp_status_t adp_reset_storm_exceed_flag(uint32_t dev_id, adp_intf_t intf) {
    const auto reset = [](int32_t port) { return or_102(user_rate_stormExceedFlag_reset(0, 0, port)); };
    if (dev_id == 1) {
        return 0;
    }
    const auto first_eight = [](uint32_t agg) {
        Members members = configured_members(agg);
        members.count = 8;
        return members;
    };
    return on_port_or_members(intf, first_eight, reset);
}

}  // namespace reference
