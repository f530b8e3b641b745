// Port attributes by selector, and the single-purpose calls beside them.
#include <unistd.h>

#include <algorithm>

#include "platform/netlink_api.h"
#include "tests/differential/reference/tables.h"

namespace reference {
namespace {

constexpr uint32_t kAll = 0xF4000000;
constexpr uint32_t kHalf = 0xA0000000;
constexpr uint32_t kFull = 0x54000000;
constexpr uint32_t kS10 = 0xC0000000;
constexpr uint32_t kS100 = 0x30000000;
constexpr uint32_t kS1000 = 0x04000000;
constexpr uint32_t kPause = 0x03000000;
constexpr uint32_t kBit26 = 1u << 26;
constexpr uint32_t kBit27 = 1u << 27;

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

uint32_t speed_bits(uint32_t speed) {
    return speed == 1000 ? kS1000 : speed == 100 ? kS100 : speed == 10 ? kS10 : kAll;
}
uint32_t duplex_bits(uint32_t duplex) {
    return duplex == 0 ? kHalf : duplex == 1 ? kFull : kAll;
}

#define OR_FAIL(call)    \
    do {                 \
        if ((call) != 0) \
            return 102;  \
    } while (false)

adp_status_t set_speed_1000(int32_t port, uint32_t speed, uint32_t mode) {
    uint32_t advert = 0;
    OR_FAIL(user_port_ability_advert_get(0, 0, port, &advert));
    advert = (advert & ~kAll) | speed_bits(speed);
    OR_FAIL(user_port_speed_set(0, 0, port, speed, mode));
    OR_FAIL(user_port_ability_advert_set(0, 0, port, advert));
    if (speed == 1000) {
        OR_FAIL(user_port_autoneg_set(0, 0, port, 1));
    }
    return 0;
}

adp_status_t set_speed_10000(int32_t port, uint32_t speed) {
    uint32_t advert = 0;
    OR_FAIL(user_port_ability_advert_get(0, 0, port, &advert));
    advert &= ~(kBit27 | kBit26);
    advert |= speed == 10000 ? 0 : kBit26;
    OR_FAIL(user_port_ability_advert_set(0, 0, port, advert));
    OR_FAIL(user_port_speed_set(0, 0, port, speed, 2));
    if (speed == 1000) {
        OR_FAIL(user_port_autoneg_set(0, 0, port, 1));
    }
    return 0;
}

adp_status_t set_duplex(int32_t port, uint32_t value, uint32_t mode) {
    if (mode == 2 && value == 1) {
        return 0;
    }
    uint32_t advert = 0;
    OR_FAIL(user_port_ability_advert_get(0, 0, port, &advert));
    OR_FAIL(user_port_ability_advert_set(0, 0, port, (advert & ~kAll) | duplex_bits(value)));
    OR_FAIL(user_port_duplex_set(0, 0, port, value, mode));
    if (mode == 2) {
        OR_FAIL(user_port_autoneg_set(0, 0, port, 1));
    }
    return 0;
}

adp_status_t set_autoneg(int32_t port, uint32_t value) {
    if (value != 0) {
        uint32_t advert = 0;
        OR_FAIL(user_port_ability_advert_get(0, 0, port, &advert));
        OR_FAIL(user_port_ability_advert_set(0, 0, port, advert | kAll));
    }
    OR_FAIL(user_port_autoneg_set(0, 0, port, value));
    return 0;
}

adp_status_t set_pause(int32_t port, uint32_t value) {
    uint32_t autoneg = 0;
    uint32_t advert = 0;
    OR_FAIL(user_port_autoneg_get(0, 0, port, &autoneg));
    OR_FAIL(user_port_ability_advert_get(0, 0, port, &advert));
    if (autoneg != 0) {
        OR_FAIL(user_port_ability_advert_set(0, 0, port, value != 0 ? advert | kPause : advert & ~kPause));
    } else {
        OR_FAIL(user_port_pause_set(0, 0, port, value, value));
    }
    return 0;
}

adp_status_t advertise_1000(int32_t port, uint32_t bits) {
    uint32_t advert = 0;
    OR_FAIL(user_port_ability_advert_get(0, 0, port, &advert));
    OR_FAIL(user_port_ability_advert_set(0, 0, port, (advert & ~kAll) | bits));
    OR_FAIL(user_port_autoneg_set(0, 0, port, 1));
    return 0;
}

/** Reads on the number it is handed, writes on that number translated once more. */
adp_status_t advertise_duplex_10000(int32_t number, uint32_t value) {
    const int32_t port = adp_intf_2_phy_id(static_cast<uint32_t>(number));
    uint32_t advert = 0;
    OR_FAIL(user_port_ability_advert_get(0, 0, number, &advert));
    OR_FAIL(user_port_duplex_set(0, 0, number, value, 0));
    OR_FAIL(user_port_ability_advert_set(0, 0, port, (advert & ~(kBit27 | kBit26)) | (value == 1 ? kBit26 : 0)));
    OR_FAIL(user_port_autoneg_set(0, 0, port, 1));
    return 0;
}

adp_status_t advertise_speed_10000(int32_t number, uint32_t value) {
    const int32_t port = adp_intf_2_phy_id(static_cast<uint32_t>(number));
    uint32_t advert = 0;
    OR_FAIL(user_port_ability_advert_get(0, 0, number, &advert));
    OR_FAIL(user_port_speed_set(0, 0, number, value, 2));
    OR_FAIL(user_port_ability_advert_set(0, 0, port, (advert & ~(kBit27 | kBit26)) | (value == 1000 ? kBit26 : 0)));
    if (value == 1000) {
        OR_FAIL(user_port_autoneg_set(0, 0, port, 1));
    }
    return 0;
}

adp_status_t max_speed(uint32_t intf, uint32_t *speed) {
    uint32_t largest = 0;
    if (is_user_port(intf)) {
        OR_FAIL(user_port_speed_max(0, 0, adp_intf_2_phy_id(intf), &largest));
        *speed = largest;
        return 0;
    }
    const adp_status_t status = each_member(configured_members(intf), [&](int32_t port) {
        uint32_t one = 0;
        const int32_t result = user_port_speed_max(0, 0, port, &one);
        largest = result == 0 ? std::max(largest, one) : largest;
        return result;
    });
    if (status == 0) {
        *speed = largest;
    }
    return status;
}

/** Speed, advertised duplex and advertised speed: the method follows the maximum speed. */
adp_status_t set_by_max_speed(uint32_t intf, uint32_t selector, uint32_t value, uint32_t mode) {
    uint32_t speed = 0;
    if (is_agg(intf) && !is_group(intf)) {
        return -1;
    }
    OR_FAIL(max_speed(intf, &speed));
    const auto at_1000 = [&](int32_t port) {
        return selector == 0 ? set_speed_1000(port, value, mode)
                             : advertise_1000(port, selector == 7 ? duplex_bits(value) : speed_bits(value));
    };
    const auto at_10000 = [&](int32_t number) {
        return selector == 0   ? set_speed_10000(number, value)
               : selector == 7 ? advertise_duplex_10000(number, value)
                               : advertise_speed_10000(number, value);
    };
    if (speed == 1000) {
        return is_agg(intf) ? each_member(configured_members(intf), at_1000) : at_1000(adp_intf_2_phy_id(intf));
    }
    if (speed == 10000) {
        if (is_agg(intf)) {
            return each_member(active_members(intf), at_10000);
        }
        return at_10000(selector == 0 ? adp_intf_2_phy_id(intf) : static_cast<int32_t>(intf));
    }
    return 0;
}

template <typename Step>
adp_status_t on_port_or_configured(uint32_t intf, Step step) {
    if (is_user_port(intf)) {
        return step(adp_intf_2_phy_id(intf));
    }
    return is_group(intf) ? each_member(configured_members(intf), step) : -1;
}

/** Loopback and MDI/MDIX hand on the driver's own result. */
template <typename Step>
adp_status_t with_own_result(uint32_t intf, Step step) {
    if (is_user_port(intf)) {
        return step(adp_intf_2_phy_id(intf));
    }
    if (!is_group(intf)) {
        return -1;
    }
    int32_t result = 0;
    each_member(configured_members(intf), [&](int32_t port) { return result = step(port); });
    return result;
}

adp_status_t set_enable(uint32_t intf, uint32_t value, bool is_hold) {
    const int state = hold_of(intf);
    if (value != 0 && (is_hold ? state != 1 : state == 1)) {
        return 0;
    }
    set_hold(intf, value != 0 ? 0 : is_hold ? 1 : 2);
    if (is_user_port(intf)) {
        const int32_t result = user_port_enable_set(0, 0, adp_intf_2_phy_id(intf), value);
        return is_hold ? 0 : or_102(result);
    }
    if (!is_group(intf)) {
        return -1;
    }
    return each_member(configured_members(intf), [&](int32_t port) {
        const int32_t result = user_port_enable_set(0, 0, port, value);
        if (result == 0) {
            usleep(500000);
        }
        return result;
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
            return on_port_or_configured(intf, [&](int32_t port) { return set_duplex(port, value, mode); });
        case 2:
            return on_port_or_configured(intf, [&](int32_t port) { return set_autoneg(port, value); });
        case 3:
            return set_enable(intf, value, false);
        case 4:
            return with_own_result(intf, [&](int32_t port) { return user_port_loopback_set(0, 0, port, value); });
        case 5:
            return on_port_or_configured(intf, [&](int32_t port) { return set_pause(port, value); });
        case 6:
            return on_port_or_configured(
                intf, [&](int32_t port) { return or_102(user_port_jumboframe_set(0, 0, port, value)); });
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
        OR_FAIL(get(0, 0, adp_intf_2_phy_id(members.slots[n]), &status));
        if (status != 0) {
            *value = status;
            return 0;
        }
    }
    return 0;
}

adp_status_t group_attribute(uint32_t intf, uint32_t selector, uint32_t *value) {
    if (selector == 11 || selector == 14) {
        return group_link(intf, getter(selector), value);
    }
    if (!is_group(intf)) {
        return -1;
    }
    uint32_t member = manager_of(intf);
    if (member == 0) {
        GET_AGG_CONFIG_MIN_INTF(intf, &member);
    }
    if (member == 0) {
        return 203;
    }
    return or_102(getter(selector == 13 ? 5 : selector)(0, 0, adp_intf_2_phy_id(member), value));
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
    if (is_agg(intf)) {
        return group_attribute(intf, selector, value);
    }
    return or_102(getter(selector)(0, 0, adp_intf_2_phy_id(intf), value));
}

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
