// The single-purpose calls on a port: learning, cable diagnosis, energy-efficient Ethernet, counters, copper or fibre.
#include <adp/port.h>
#include <netlink_api.h>

#include "core/members.h"
#include "core/resolve.h"

using namespace adp;

namespace {

// Abilities of 10 and 100 Mb/s; only copper has them.
constexpr uint32_t kCopperAbilities = 0xF0000000;

}  // namespace

adp_status_t adp_intf_learn_set(adp_intf_t intf, int32_t mode) {
    return on_port_or_members(Intf(intf), Members::kConfigured | Failure::kOwnOnPort,
                              [=](PhyPort port) { return user_port_learn_set(0, 0, number(port), mode); });
}

adp_status_t adp_intf_learn_get(adp_intf_t intf, uint32_t *mode) {
    return on_port_or_manager(Intf(intf), Failure::kOwnResult, user_port_learn_get, mode);
}

adp_status_t adp_intf_cablediag(adp_intf_t intf, void *result) {
    return on_port_or_manager(Intf(intf), Failure::kOwnResult, User_port_cablediag,
                              static_cast<adp_cable_diag_t *>(result));
}

adp_status_t adp_intf_eee_set(adp_intf_t intf, uint32_t enable) {
    return on_port_or_manager(Intf(intf), Failure::kOwnResult, user_eee_portEnable_set, enable);
}

adp_status_t adp_intf_eee_get(adp_intf_t intf, uint32_t *enable) {
    return on_port_or_manager(Intf(intf), Failure::kOwnResult, user_eee_portEnable_get, enable);
}

adp_status_t adp_intf_stat_get(adp_intf_t intf, uint32_t selector, void *value) {
    return user_stat_port_get(0, 0, number(phy_of(Intf(intf))), selector, static_cast<uint64_t *>(value));
}

adp_status_t adp_intf_combo_port_copper_or_fiber_check(adp_intf_t intf) {
    if (!has_known_kind(Intf(intf))) {
        return ADP_E_INTF_TYPE;
    }
    const int32_t port = number(phy_of(Intf(intf)));  // Contract: -1 for an aggregation interface.
    uint32_t autoneg = 0;
    uint32_t abilities = 0;
    user_port_autoneg_get(0, 0, port, &autoneg);
    if (autoneg == 0) {
        return ADP_FAIL;
    }
    user_port_ability_advert_get(0, 0, port, &abilities);
    return (abilities & kCopperAbilities) != 0 ? ADP_OK : ADP_FAIL;
}
