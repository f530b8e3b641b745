// Port attributes by selector, and holds.
#include <unistd.h>

#include "platform/netlink_api.h"
#include "tests/differential/reference/attributes.h"

namespace reference {
namespace {

/** Null for an interface without a state. */
uint8_t *hold_of(uint32_t intf) {
    const uint32_t row = (is_agg(intf) ? index_of(intf) + 26 : index_of(intf)) - 1;
    return row < tables.hold.size() ? &tables.hold[row] : nullptr;
}

/** Loopback and MDI/MDIX hand on the driver's own result. */
template <typename Step>
adp_status_t with_own_result(uint32_t intf, Step step) {
    int32_t result = 0;
    const adp_status_t status =
        on_port_or_members(intf, configured_members, [&](int32_t port) { return result = step(port); });
    return result != 0 ? result : status;
}

adp_status_t set_enable(uint32_t intf, uint32_t value, bool is_hold) {
    uint8_t *const hold = hold_of(intf);
    const bool is_held = hold != nullptr && *hold == 1;
    if (value != 0 && is_held != is_hold) {
        return 0;
    }
    if (hold != nullptr) {
        *hold = value != 0 ? 0 : is_hold ? 1 : 2;
    }
    return on_port_or_members(intf, configured_members, [&](int32_t port) {
        const int32_t result = user_port_enable_set(0, 0, port, value);
        if (is_agg(intf) && result == 0) {
            usleep(500000);
        }
        return is_user_port(intf) && is_hold ? 0 : or_102(result);
    });
}

}  // namespace

adp_status_t adp_set_phy_port_attr(adp_intf_t intf, uint32_t selector, uint32_t value, uint32_t mode) {
    if (selector >= 13) {
        return 101;
    }
    if (type_of(intf) > 1) {
        return 201;
    }
    switch (selector) {
        case 0:
        case 7:
        case 8:
            return set_by_max_speed(intf, selector, value, mode);
        case 3:
            return set_enable(intf, value, false);
        case 4:
            return with_own_result(intf, [&](int32_t port) { return user_port_loopback_set(0, 0, port, value); });
        case 9:
            return with_own_result(intf, [&](int32_t port) { return user_port_mdix_set(0, 0, port, value); });
        case 11:
            return set_enable(intf, value, true);
        case 10:
        case 12:
            return 0;
        default:
            return on_port_or_members(intf, configured_members, [&](int32_t port) {
                return selector == 1   ? set_duplex(port, value, mode)
                       : selector == 2 ? set_autoneg(port, value)
                       : selector == 5 ? set_pause(port, value)
                                       : or_102(user_port_jumboframe_set(0, 0, port, value));
            });
    }
}

namespace {

using Get = int32_t (*)(uint32_t, uint32_t, int32_t, uint32_t *);

constexpr Get kGets[] = {user_port_speed_get,
                         user_port_duplex_get,
                         user_port_autoneg_get,
                         user_port_enable_get,
                         user_port_loopback_get,
                         user_port_pause_get,
                         user_port_jumboframe_get,
                         nullptr,
                         nullptr,
                         user_port_mdix_get,
                         user_port_link_medium_get,
                         user_port_link_status_get,
                         nullptr,
                         user_port_pause_get_stat,
                         user_fiberport_link_status_get};

adp_status_t group_link(uint32_t intf, Get get, uint32_t *value) {
    *value = 0;
    if (!is_group(intf)) {
        return -1;
    }
    const Members members = active_members(intf);
    for (uint32_t n = 0; n < members.count; ++n) {
        if (members.slots[n] == 0) {
            continue;
        }
        uint32_t status = 0;
        if (get(0, 0, adp_intf_2_phy_id(members.slots[n]), &status) != 0) {
            return 102;
        }
        if (status != 0) {
            *value = status;
            return 0;
        }
    }
    return 0;
}

}  // namespace

adp_status_t adp_get_phy_port_attr(adp_intf_t intf, uint32_t selector, uint32_t *value) {
    if (selector >= 15) {
        return 101;
    }
    if (type_of(intf) > 1) {
        return 201;
    }
    if (selector == 7 || selector == 8) {
        return 0;
    }
    if (selector == 3 && hold_of(intf) != nullptr && *hold_of(intf) == 1) {
        *value = 1;
        return 0;
    }
    if (selector == 12) {
        return max_speed(intf, value);
    }
    if (is_agg(intf) && (selector == 11 || selector == 14)) {
        return group_link(intf, kGets[selector], value);
    }
    const Get get = kGets[is_agg(intf) && selector == 13 ? 5 : selector];
    return on_port_or_answering_member(intf, [&](int32_t port) { return or_102(get(0, 0, port, value)); });
}

}  // namespace reference
