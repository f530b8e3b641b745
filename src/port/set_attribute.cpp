// adp_set_phy_port_attr(): the table of selectors, and how each reaches a port or a group's members.
#include <adp/port.h>
#include <netlink_api.h>
#include <unistd.h>

#include "core/members.h"
#include "core/resolve.h"
#include "port/attributes.h"
#include "port/hold.h"
#include "port/max_speed.h"

namespace adp {

HoldState port_hold_state[kHoldStates];

namespace {

// The chip needs time to settle after each member.
constexpr useconds_t kSettleMicroseconds = 500000;

template <PortCall<uint32_t> Call>
int32_t step_value(PhyPort port, uint32_t value, uint32_t) {
    return Call(0, 0, number(port), value);
}

int32_t step_enable(PhyPort port, uint32_t value, uint32_t mode) {
    return step_value<user_port_enable_set>(port, value, mode);
}

int32_t step_settled_enable(PhyPort port, uint32_t value, uint32_t mode) {
    const int32_t result = step_enable(port, value, mode);
    if (result == 0) {
        usleep(kSettleMicroseconds);
    }
    return result;
}

/** The steps of a selector: on most ports, and on ports of 10 Gb/s where they differ. */
struct Steps {
    AttrStep step;
    AttrStep ten_gigabit;
};

adp_status_t set_members(Intf intf, Fan fan, AttrStep step, uint32_t value, uint32_t mode) {
    return on_port_or_members(intf, fan, [=](PhyPort port) { return step(port, value, mode); });
}

/** Most selectors: the port, or each configured member. */
adp_status_t set_each(Intf intf, const Steps &steps, uint32_t value, uint32_t mode) {
    return set_members(intf, Members::kConfigured | Failure::kDriverError, steps.step, value, mode);
}

/** Loopback and MDI/MDIX: as set_each(), but the driver's own result is the answer. */
adp_status_t set_each_own_result(Intf intf, const Steps &steps, uint32_t value, uint32_t mode) {
    return set_members(intf, Members::kConfigured | Failure::kOwnResult, steps.step, value, mode);
}

/** How the attribute is set depends on the maximum speed. On 10 Gb/s it is set on @p handed, and on active members. */
adp_status_t set_by_max_speed(Intf intf, PhyPort handed, const Steps &steps, uint32_t value, uint32_t mode) {
    uint32_t maximum = 0;
    const adp_status_t status = read_max_speed(intf, &maximum);
    if (status != ADP_OK) {
        return status;
    }
    if (maximum == kGigabit) {
        return set_each(intf, steps, value, mode);
    }
    if (maximum != kTenGigabit) {
        return ADP_OK;
    }
    return kind_of(intf) == IntfKind::kUserPort
               ? driver_status(steps.ten_gigabit(handed, value, mode))
               : set_members(intf, Members::kActive | Failure::kDriverError, steps.ten_gigabit, value, mode);
}

adp_status_t set_speed(Intf intf, const Steps &steps, uint32_t value, uint32_t mode) {
    return set_by_max_speed(intf, phy_of(intf), steps, value, mode);
}

/** Advertised duplex and speed. Contract: on 10 Gb/s a user port's interface number is handed in untranslated. */
adp_status_t set_advertised(Intf intf, const Steps &steps, uint32_t value, uint32_t mode) {
    return set_by_max_speed(intf, PhyPort(static_cast<int32_t>(number(intf))), steps, value, mode);
}

/** What the administrator and the protocol have in common. */
adp_status_t enable(Intf intf, uint32_t value, uint32_t mode) {
    const bool is_group = kind_of(intf) == IntfKind::kAggregation;
    return set_members(intf, Members::kConfigured | Failure::kDriverError, is_group ? step_settled_enable : step_enable,
                       value, mode);
}

/** The administrator's state. A protocol hold prevents enabling, not disabling. */
adp_status_t set_admin_state(Intf intf, const Steps &, uint32_t value, uint32_t mode) {
    const bool is_on = value != 0;
    if (is_on && hold_state_of(intf) == HoldState::kHeld) {
        return ADP_OK;
    }
    set_hold_state(intf, is_on ? HoldState::kFree : HoldState::kDisabled);
    return enable(intf, value, mode);
}

/** The protocol hold. Only a held interface is released. Contract: the driver's result on a user port is ignored. */
adp_status_t set_hold(Intf intf, const Steps &, uint32_t value, uint32_t mode) {
    const bool release = value != 0;
    if (release && hold_state_of(intf) != HoldState::kHeld) {
        return ADP_OK;
    }
    set_hold_state(intf, release ? HoldState::kFree : HoldState::kHeld);
    const adp_status_t status = enable(intf, value, mode);
    return kind_of(intf) == IntfKind::kUserPort ? ADP_OK : status;
}

adp_status_t set_nothing(Intf, const Steps &, uint32_t, uint32_t) {
    return ADP_OK;
}

/** How a selector is set, and with which steps. */
struct Setter {
    adp_status_t (*set)(Intf, const Steps &, uint32_t, uint32_t);
    Steps steps;
};

constexpr Setter kSetters[] = {
    {set_speed, {step_gigabit_speed, step_ten_gigabit_speed}},                       // ADP_ATTR_SPEED
    {set_each, {step_duplex, nullptr}},                                              // ADP_ATTR_DUPLEX
    {set_each, {step_autoneg, nullptr}},                                             // ADP_ATTR_AUTONEG
    {set_admin_state, {}},                                                           // ADP_ATTR_ADMIN_STATE
    {set_each_own_result, {step_value<user_port_loopback_set>, nullptr}},            // ADP_ATTR_LOOPBACK
    {set_each, {step_pause, nullptr}},                                               // ADP_ATTR_PAUSE
    {set_each, {step_value<user_port_jumboframe_set>, nullptr}},                     // ADP_ATTR_JUMBO
    {set_advertised, {step_gigabit_advert_duplex, step_ten_gigabit_advert_duplex}},  // ADP_ATTR_ADVERT_DUPLEX
    {set_advertised, {step_gigabit_advert_speed, step_ten_gigabit_advert_speed}},    // ADP_ATTR_ADVERT_SPEED
    {set_each_own_result, {step_value<user_port_mdix_set>, nullptr}},                // ADP_ATTR_MDIX
    {set_nothing, {}},                                                               // ADP_ATTR_MEDIUM
    {set_hold, {}},                                                                  // ADP_ATTR_HOLD
    {set_nothing, {}},                                                               // ADP_ATTR_MAX_SPEED
};
constexpr uint32_t kSetSelectors = sizeof kSetters / sizeof kSetters[0];
static_assert(kSetSelectors == ADP_ATTR_MAX_SPEED + 1);

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t adp_set_phy_port_attr(adp_intf_t intf, uint32_t selector, uint32_t value, uint32_t mode) {
    if (selector >= kSetSelectors) {
        return ADP_E_SELECTOR;
    }
    if (!has_known_kind(Intf(intf))) {
        return ADP_E_INTF_TYPE;
    }
    const Setter &setter = kSetters[selector];
    return setter.set(Intf(intf), setter.steps, value, mode);
}
