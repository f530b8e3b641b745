// The single-purpose calls on a port: learning, cable diagnosis, energy-efficient Ethernet, counters, copper or fibre.
#include <adp/port.h>
#include <netlink_api.h>

#include "agg/members.h"
#include "agg/resolve.h"

using adp::Intf;
using adp::PhyPort;

namespace {

// The one port that stands for an interface: of a group its management interface. Without one that is interface 0, the
// CPU port: there is no fallback here.
template <typename Step>
adp_status_t on_one_port(adp_intf_t intf, Step step) {
    return adp::on_port_or_manager(Intf(intf), step);
}

// Abilities of 10 and 100 Mb/s, which only the copper side has.
constexpr uint32_t kCopperAbilities = 0xF0000000;

}  // namespace

adp_status_t adp_intf_learn_set(adp_intf_t intf, int32_t enable) {
    const auto step = [=](PhyPort port) { return user_port_learn_set(0, 0, port.value(), enable); };
    return adp::by_kind(Intf(intf), step, [&](Intf agg) {
        return adp::until_first_failure(adp::configured_members(agg),
                                        [&](Intf member) { return step(adp::phy_of(member)); });
    });
}

adp_status_t adp_intf_learn_get(adp_intf_t intf, uint32_t *mode) {
    return on_one_port(intf, [=](PhyPort port) { return user_port_learn_get(0, 0, port.value(), mode); });
}

adp_status_t adp_intf_cablediag(adp_intf_t intf, void *result) {
    auto *record = static_cast<netlink_cable_diag_t *>(result);
    return on_one_port(intf, [=](PhyPort port) { return User_port_cablediag(0, 0, port.value(), record); });
}

adp_status_t adp_intf_eee_set(adp_intf_t intf, uint32_t enable) {
    return on_one_port(intf, [=](PhyPort port) { return user_eee_portEnable_set(0, 0, port.value(), enable); });
}

adp_status_t adp_intf_eee_get(adp_intf_t intf, uint32_t *enable) {
    return on_one_port(intf, [=](PhyPort port) { return user_eee_portEnable_get(0, 0, port.value(), enable); });
}

adp_status_t adp_intf_stat_get(adp_intf_t intf, uint32_t selector, void *out) {
    return user_stat_port_get(0, 0, adp::phy_of(Intf(intf)).value(), selector, static_cast<uint64_t *>(out));
}

adp_status_t adp_intf_combo_port_copper_or_fiber_check(adp_intf_t intf) {
    const int32_t port = adp::phy_of(Intf(intf)).value();
    uint32_t autoneg = 0;
    uint32_t abilities = 0;
    user_port_autoneg_get(0, 0, port, &autoneg);
    if (autoneg == 0) {
        return ADP_FAIL;
    }
    user_port_ability_advert_get(0, 0, port, &abilities);
    return (abilities & kCopperAbilities) != 0 ? ADP_OK : ADP_FAIL;
}
