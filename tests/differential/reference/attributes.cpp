// Port attributes by selector, and holds.
#include <unistd.h>

#include "platform/netlink_api.h"
#include "tests/differential/reference/attributes.h"

namespace reference {
namespace {

uint32_t hold_index(uint32_t intf) {
    return is_agg(intf) ? index_of(intf) + 26 : index_of(intf);
}
int hold_of(uint32_t intf) {
    const auto found = tables.hold.find(hold_index(intf));
    return found == tables.hold.end() ? 0 : found->second;
}
void set_hold(uint32_t intf, int state) {
    if (hold_index(intf) >= 1 && hold_index(intf) <= 34) {
        tables.hold[hold_index(intf)] = state;
    }
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
    const int state = hold_of(intf);
    if (value != 0 && (is_hold ? state != 1 : state == 1)) {
        return 0;
    }
    set_hold(intf, value != 0 ? 0 : is_hold ? 1 : 2);
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
        case 1:
            return on_port_or_members(intf, configured_members,
                                      [&](int32_t port) { return set_duplex(port, value, mode); });
        case 2:
            return on_port_or_members(intf, configured_members, [&](int32_t port) { return set_autoneg(port, value); });
        case 3:
            return set_enable(intf, value, false);
        case 4:
            return with_own_result(intf, [&](int32_t port) { return user_port_loopback_set(0, 0, port, value); });
        case 5:
            return on_port_or_members(intf, configured_members, [&](int32_t port) { return set_pause(port, value); });
        case 6:
            return on_port_or_members(intf, configured_members, [&](int32_t port) {
                return or_102(user_port_jumboframe_set(0, 0, port, value));
            });
        case 9:
            return with_own_result(intf, [&](int32_t port) { return user_port_mdix_set(0, 0, port, value); });
        case 11:
            return set_enable(intf, value, true);
        default:
            return 0;
    }
}

namespace {

using Get = int32_t (*)(uint32_t, uint32_t, int32_t, uint32_t *);

Get getter(uint32_t selector) {
    switch (selector) {
        case 0:
            return user_port_speed_get;
        case 1:
            return user_port_duplex_get;
        case 2:
            return user_port_autoneg_get;
        case 3:
            return user_port_enable_get;
        case 4:
            return user_port_loopback_get;
        case 5:
            return user_port_pause_get;
        case 6:
            return user_port_jumboframe_get;
        case 9:
            return user_port_mdix_get;
        case 10:
            return user_port_link_medium_get;
        case 11:
            return user_port_link_status_get;
        case 13:
            return user_port_pause_get_stat;
        default:
            return user_fiberport_link_status_get;
    }
}

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
    if (selector == 3 && hold_of(intf) == 1) {
        *value = 1;
        return 0;
    }
    if (selector == 12) {
        return is_agg(intf) && !is_group(intf) ? -1 : max_speed(intf, value);
    }
    if (is_agg(intf) && (selector == 11 || selector == 14)) {
        return group_link(intf, getter(selector), value);
    }
    const Get get = getter(is_agg(intf) && selector == 13 ? 5 : selector);
    return on_port_or_answering_member(intf, [&](int32_t port) { return or_102(get(0, 0, port, value)); });
}

}  // namespace reference
