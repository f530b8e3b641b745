// adp_get_phy_port_attr(): the table of selectors, and which port answers for a group.
#include <adp/port.h>
#include <netlink_api.h>

#include "core/members.h"
#include "core/resolve.h"
#include "port/attributes.h"
#include "port/hold.h"
#include "port/max_speed.h"

namespace adp {
namespace {

using DriverGet = PortCall<uint32_t *>;

adp_status_t read_port(DriverGet get, PhyPort port, uint32_t *value) {
    return driver_status(get(0, 0, number(port), value));
}

adp_status_t get_one(Intf intf, DriverGet get, uint32_t *value) {
    return on_port_or_answering_member(intf, get, value);
}

constexpr int32_t kFound = 1;  // ends the walk; no driver status has this value

/** The link of a group is that of its first linked active member. A group outside 1..8 reads as down. */
adp_status_t get_link(Intf intf, DriverGet get, uint32_t *value) {
    if (kind_of(intf) == IntfKind::kUserPort) {
        return read_port(get, phy_of(intf), value);
    }
    *value = 0;
    if (!exists(trunk_of(intf))) {
        return ADP_FAIL;
    }
    const int32_t end = first_failure(intf, Members::kActive, [=](PhyPort port) {
        const adp_status_t status = read_port(get, port, value);
        return status == ADP_OK && *value != 0 ? kFound : status;
    });
    return end == kFound ? ADP_OK : end;
}

/** A held interface reads as enabled: the protocol holds it, not the administrator. */
adp_status_t get_admin_state(Intf intf, DriverGet get, uint32_t *value) {
    if (hold_state_of(intf) == HoldState::kHeld) {
        *value = 1;
        return ADP_OK;
    }
    return get_one(intf, get, value);
}

adp_status_t get_max_speed(Intf intf, DriverGet, uint32_t *value) {
    uint32_t speed = 0;
    const adp_status_t status = read_max_speed(intf, &speed);
    if (status == ADP_OK) {
        *value = speed;
    }
    return status;
}

/** Contract: the status of a group is its configured setting. */
adp_status_t get_pause_status(Intf intf, DriverGet get, uint32_t *value) {
    return get_one(intf, kind_of(intf) == IntfKind::kUserPort ? get : user_port_pause_get, value);
}

adp_status_t get_nothing(Intf, DriverGet, uint32_t *) {
    return ADP_OK;
}

/** How a selector is read, and with which driver call. */
struct Getter {
    adp_status_t (*read)(Intf, DriverGet, uint32_t *);
    DriverGet get;
};

constexpr Getter kGetters[] = {
    {get_one, user_port_speed_get},                // ADP_ATTR_SPEED
    {get_one, user_port_duplex_get},               // ADP_ATTR_DUPLEX
    {get_one, user_port_autoneg_get},              // ADP_ATTR_AUTONEG
    {get_admin_state, user_port_enable_get},       // ADP_ATTR_ADMIN_STATE
    {get_one, user_port_loopback_get},             // ADP_ATTR_LOOPBACK
    {get_one, user_port_pause_get},                // ADP_ATTR_PAUSE
    {get_one, user_port_jumboframe_get},           // ADP_ATTR_JUMBO
    {get_nothing, nullptr},                        // ADP_ATTR_ADVERT_DUPLEX
    {get_nothing, nullptr},                        // ADP_ATTR_ADVERT_SPEED
    {get_one, user_port_mdix_get},                 // ADP_ATTR_MDIX
    {get_one, user_port_link_medium_get},          // ADP_ATTR_MEDIUM
    {get_link, user_port_link_status_get},         // ADP_ATTR_LINK
    {get_max_speed, nullptr},                      // ADP_ATTR_MAX_SPEED
    {get_pause_status, user_port_pause_get_stat},  // ADP_ATTR_PAUSE_STATUS
    {get_link, user_fiberport_link_status_get},    // ADP_ATTR_FIBRE_LINK
};
constexpr uint32_t kGetSelectors = sizeof kGetters / sizeof kGetters[0];
static_assert(kGetSelectors == ADP_ATTR_FIBRE_LINK + 1);

}  // namespace

uint32_t attribute_or_zero(Intf intf, uint32_t selector) {
    uint32_t value = 0;
    adp_get_phy_port_attr(number(intf), selector, &value);
    return value;
}

adp_status_t read_max_speed(Intf intf, uint32_t *speed) {
    *speed = 0;
    return on_port_or_members(intf, Members::kConfigured | Failure::kDriverError, [=](PhyPort port) {
        uint32_t maximum = 0;
        const int32_t result = user_port_speed_max(0, 0, number(port), &maximum);
        *speed = maximum > *speed ? maximum : *speed;
        return result;
    });
}

}  // namespace adp

using namespace adp;

adp_status_t adp_get_phy_port_attr(adp_intf_t intf, uint32_t selector, uint32_t *value) {
    if (selector >= kGetSelectors) {
        return ADP_E_SELECTOR;
    }
    if (!has_known_kind(Intf(intf))) {
        return ADP_E_INTF_TYPE;
    }
    const Getter &getter = kGetters[selector];
    return getter.read(Intf(intf), getter.get, value);
}
