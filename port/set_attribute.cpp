// adp_set_phy_port_attr(): the table of selectors, and how each reaches a port or a group's members.
#include <adp/port.h>
#include <netlink_api.h>
#include <unistd.h>

#include "agg/members.h"
#include "agg/resolve.h"
#include "port/attributes.h"
#include "port/hold.h"
#include "port/max_speed.h"

namespace adp {

HoldState port_hold_state[kHoldStates];

namespace {

// After each member's enable or disable the chip is given time to settle.
constexpr useconds_t kSettleMicroseconds = 500000;

template <int32_t (*Call)(uint32_t, uint32_t, int32_t, uint32_t)>
int32_t step_value(PhyPort port, AttrRequest request) {
    return Call(0, 0, port.value(), request.value);
}

int32_t step_settled_enable(PhyPort port, AttrRequest request) {
    const int32_t result = step_value<user_port_enable_set>(port, request);
    if (result == 0) {
        usleep(kSettleMicroseconds);
    }
    return result;
}

adp_status_t on_configured(Intf agg, AttrStep step, AttrRequest request) {
    return until_first_failure(configured_members(agg), [=](Intf member) { return step(phy_of(member), request); });
}

adp_status_t on_active(Intf agg, AttrStep step, AttrRequest request) {
    return until_first_failure(active_members(agg), [=](Intf member) { return step(phy_of(member), request); });
}

/** Most selectors: the port, or each configured member. */
template <AttrStep kStep>
adp_status_t set_each(Intf intf, AttrRequest request) {
    return by_kind(
        intf, [&](PhyPort port) { return driver_status(kStep(port, request)); },
        [&](Intf agg) { return on_configured(agg, kStep, request); });
}

/** Loopback and MDI/MDIX: as set_each(), but the driver's own result is the answer. */
template <AttrStep kStep>
adp_status_t set_each_own_result(Intf intf, AttrRequest request) {
    return by_kind(
        intf, [&](PhyPort port) { return kStep(port, request); },
        [&](Intf agg) {
            return until_first_failure_own_result(configured_members(agg),
                                                  [&](Intf member) { return kStep(phy_of(member), request); });
        });
}

/** Speed: the method follows the maximum speed; on 10 Gb/s the active members are set. */
adp_status_t set_speed(Intf intf, AttrRequest request) {
    uint32_t maximum = 0;
    const adp_status_t status = read_max_speed(intf, &maximum);
    if (status != ADP_OK) {
        return status;
    }
    if (maximum == kGigabit) {
        return set_each<step_gigabit_speed>(intf, request);
    }
    if (maximum != kTenGigabit) {
        return ADP_OK;
    }
    return by_kind(
        intf, [&](PhyPort port) { return driver_status(step_ten_gigabit_speed(port, request)); },
        [&](Intf agg) { return on_active(agg, step_ten_gigabit_speed, request); });
}

/** Advertised duplex and speed: as speed, but on 10 Gb/s a user port hands its interface number on as it is. */
template <AttrStep kGigabitStep, AttrStep kTenGigabitStep>
adp_status_t set_advertised(Intf intf, AttrRequest request) {
    uint32_t maximum = 0;
    const adp_status_t status = read_max_speed(intf, &maximum);
    if (status != ADP_OK) {
        return status;
    }
    if (maximum == kGigabit) {
        return set_each<kGigabitStep>(intf, request);
    }
    if (maximum != kTenGigabit) {
        return ADP_OK;
    }
    const PhyPort handed(static_cast<int32_t>(intf.value()));
    return by_kind(
        intf, [&](PhyPort) { return driver_status(kTenGigabitStep(handed, request)); },
        [&](Intf agg) { return on_active(agg, kTenGigabitStep, request); });
}

/** The administrator's switch: a hold of the protocol stands against enabling, but not against disabling. */
adp_status_t set_admin_state(Intf intf, AttrRequest request) {
    const bool enable = request.value != 0;
    if (enable && hold_state_of(intf) == HoldState::kHeld) {
        return ADP_OK;
    }
    set_hold_state(intf, enable ? HoldState::kFree : HoldState::kDisabled);
    return by_kind(
        intf, [&](PhyPort port) { return driver_status(step_value<user_port_enable_set>(port, request)); },
        [&](Intf agg) { return on_configured(agg, step_settled_enable, request); });
}

/** The protocol's hold: only what it holds can be released, and a user port's driver result is not looked at. */
adp_status_t set_hold(Intf intf, AttrRequest request) {
    const bool release = request.value != 0;
    if (release && hold_state_of(intf) != HoldState::kHeld) {
        return ADP_OK;
    }
    set_hold_state(intf, release ? HoldState::kFree : HoldState::kHeld);
    return by_kind(
        intf,
        [&](PhyPort port) {
            step_value<user_port_enable_set>(port, request);
            return ADP_OK;
        },
        [&](Intf agg) { return on_configured(agg, step_settled_enable, request); });
}

adp_status_t set_nothing(Intf, AttrRequest) {
    return ADP_OK;
}

using AttrSetter = adp_status_t (*)(Intf, AttrRequest);

constexpr AttrSetter kSetters[] = {
    set_speed,                                                                   // ADP_ATTR_SPEED
    set_each<step_duplex>,                                                       // ADP_ATTR_DUPLEX
    set_each<step_autoneg>,                                                      // ADP_ATTR_AUTONEG
    set_admin_state,                                                             // ADP_ATTR_ADMIN_STATE
    set_each_own_result<step_value<user_port_loopback_set>>,                     // ADP_ATTR_LOOPBACK
    set_each<step_pause>,                                                        // ADP_ATTR_PAUSE
    set_each<step_value<user_port_jumboframe_set>>,                              // ADP_ATTR_JUMBO
    set_advertised<step_gigabit_advert_duplex, step_ten_gigabit_advert_duplex>,  // ADP_ATTR_ADVERT_DUPLEX
    set_advertised<step_gigabit_advert_speed, step_ten_gigabit_advert_speed>,    // ADP_ATTR_ADVERT_SPEED
    set_each_own_result<step_value<user_port_mdix_set>>,                         // ADP_ATTR_MDIX
    set_nothing,                                                                 // ADP_ATTR_MEDIUM
    set_hold,                                                                    // ADP_ATTR_HOLD
    set_nothing,                                                                 // ADP_ATTR_MAX_SPEED
};
constexpr uint32_t kSetSelectors = sizeof kSetters / sizeof kSetters[0];
static_assert(kSetSelectors == ADP_ATTR_MAX_SPEED + 1);

}  // namespace
}  // namespace adp

adp_status_t adp_set_phy_port_attr(adp_intf_t intf, uint32_t selector, uint32_t value, uint32_t mode) {
    using namespace adp;
    if (selector >= kSetSelectors) {
        return ADP_E_SELECTOR;
    }
    if (Intf(intf).kind() == IntfKind::kOther) {
        return ADP_E_INTF_TYPE;
    }
    return kSetters[selector](Intf(intf), {value, mode});
}
