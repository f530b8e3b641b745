// Speed, duplex, auto-negotiation, advertisement and pause.
#include <algorithm>

#include "platform/netlink_api.h"
#include "tests/differential/reference/attributes.h"

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

}  // namespace

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

namespace {

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

}  // namespace

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

}  // namespace reference
