// adp_get_phy_port_attr(): the table of selectors, and which port answers for a group.
#include <adp/port.h>
#include <netlink_api.h>

#include "agg/members.h"
#include "agg/resolve.h"
#include "port/attributes.h"
#include "port/hold.h"
#include "port/max_speed.h"

namespace adp {
namespace {

using DriverGet = int32_t (*)(uint32_t, uint32_t, int32_t, uint32_t *);
using AttrGetter = adp_status_t (*)(Intf, uint32_t *);

template <DriverGet kGet>
adp_status_t read_port(PhyPort port, uint32_t *value) {
    return driver_status(kGet(0, 0, port.value(), value));
}

/** One port answers: the user port with kGet, for a group its answering member with kGroupGet. */
template <DriverGet kGet, DriverGet kGroupGet = kGet>
adp_status_t get_one(Intf intf, uint32_t *value) {
    return by_kind(
        intf, [&](PhyPort port) { return read_port<kGet>(port, value); },
        [&](Intf agg) -> adp_status_t {
            const Intf member = answering_member_of(agg);
            return member == kNoIntf ? ADP_E_NO_MEMBER : read_port<kGroupGet>(phy_of(member), value);
        });
}

/** A group is linked as its first linked active member is; one that does not exist reads as down, too. */
template <DriverGet kGet>
adp_status_t get_link(Intf intf, uint32_t *value) {
    if (intf.kind() == IntfKind::kAggregation) {
        *value = 0;
    }
    return by_kind(
        intf, [&](PhyPort port) { return read_port<kGet>(port, value); },
        [&](Intf agg) {
            return until_first_failure(active_members(agg), [&](Intf member) {
                return *value != 0 ? ADP_OK : read_port<kGet>(phy_of(member), value);
            });
        });
}

/** A held interface is the administrator's enabled one, whatever the port is. */
adp_status_t get_admin_state(Intf intf, uint32_t *value) {
    if (hold_state_of(intf) == HoldState::kHeld) {
        *value = 1;
        return ADP_OK;
    }
    return get_one<user_port_enable_get>(intf, value);
}

adp_status_t get_max_speed(Intf intf, uint32_t *value) {
    uint32_t speed = 0;
    const adp_status_t status = read_max_speed(intf, &speed);
    if (status == ADP_OK) {
        *value = speed;
    }
    return status;
}

adp_status_t get_nothing(Intf, uint32_t *) {
    return ADP_OK;
}

constexpr AttrGetter kGetters[] = {
    get_one<user_port_speed_get>,         // ADP_ATTR_SPEED
    get_one<user_port_duplex_get>,        // ADP_ATTR_DUPLEX
    get_one<user_port_autoneg_get>,       // ADP_ATTR_AUTONEG
    get_admin_state,                      // ADP_ATTR_ADMIN_STATE
    get_one<user_port_loopback_get>,      // ADP_ATTR_LOOPBACK
    get_one<user_port_pause_get>,         // ADP_ATTR_PAUSE
    get_one<user_port_jumboframe_get>,    // ADP_ATTR_JUMBO
    get_nothing,                          // ADP_ATTR_ADVERT_DUPLEX
    get_nothing,                          // ADP_ATTR_ADVERT_SPEED
    get_one<user_port_mdix_get>,          // ADP_ATTR_MDIX
    get_one<user_port_link_medium_get>,   // ADP_ATTR_MEDIUM
    get_link<user_port_link_status_get>,  // ADP_ATTR_LINK
    get_max_speed,                        // ADP_ATTR_MAX_SPEED
    // A group's flow-control status is its configured setting.
    get_one<user_port_pause_get_stat, user_port_pause_get>,  // ADP_ATTR_PAUSE_STATUS
    get_link<user_fiberport_link_status_get>,                // ADP_ATTR_FIBRE_LINK
};
constexpr uint32_t kGetSelectors = sizeof kGetters / sizeof kGetters[0];
static_assert(kGetSelectors == ADP_ATTR_FIBRE_LINK + 1);

}  // namespace

adp_status_t read_max_speed(Intf intf, uint32_t *speed) {
    *speed = 0;
    return by_kind(
        intf, [&](PhyPort port) { return read_port<user_port_speed_max>(port, speed); },
        [&](Intf agg) {
            return until_first_failure(configured_members(agg), [&](Intf member) {
                uint32_t maximum = 0;
                const adp_status_t status = read_port<user_port_speed_max>(phy_of(member), &maximum);
                *speed = maximum > *speed ? maximum : *speed;
                return status;
            });
        });
}

}  // namespace adp

adp_status_t adp_get_phy_port_attr(adp_intf_t intf, uint32_t selector, uint32_t *value) {
    using namespace adp;
    if (selector >= kGetSelectors) {
        return ADP_E_SELECTOR;
    }
    if (Intf(intf).kind() == IntfKind::kOther) {
        return ADP_E_INTF_TYPE;
    }
    return kGetters[selector](Intf(intf), value);
}
