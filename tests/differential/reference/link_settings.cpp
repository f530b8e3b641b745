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

bool read_advert(int32_t port, uint32_t *advert) {
    return user_port_ability_advert_get(0, 0, port, advert) == 0;
}
bool write_advert(int32_t port, uint32_t advert) {
    return user_port_ability_advert_set(0, 0, port, advert) == 0;
}
bool enable_autoneg(int32_t port) {
    return user_port_autoneg_set(0, 0, port, 1) == 0;
}
adp_status_t status_of(bool is_done) {
    return is_done ? 0 : 102;
}

adp_status_t set_speed_1000(int32_t port, uint32_t speed, uint32_t mode) {
    uint32_t advert = 0;
    return status_of(read_advert(port, &advert) && user_port_speed_set(0, 0, port, speed, mode) == 0 &&
                     write_advert(port, (advert & ~kAll) | speed_bits(speed)) &&
                     (speed != 1000 || enable_autoneg(port)));
}

adp_status_t set_speed_10000(int32_t port, uint32_t speed) {
    uint32_t advert = 0;
    return status_of(read_advert(port, &advert) &&
                     write_advert(port, (advert & ~(kBit27 | kBit26)) | (speed == 10000 ? 0 : kBit26)) &&
                     user_port_speed_set(0, 0, port, speed, 2) == 0 && (speed != 1000 || enable_autoneg(port)));
}

adp_status_t advertise_1000(int32_t port, uint32_t bits) {
    uint32_t advert = 0;
    return status_of(read_advert(port, &advert) && write_advert(port, (advert & ~kAll) | bits) && enable_autoneg(port));
}

/** Reads and sets on the number it is handed, writes on that number translated once more. */
adp_status_t advertise_10000(int32_t number, bool is_duplex, uint32_t value) {
    const int32_t port = adp_intf_2_phy_id(static_cast<uint32_t>(number));
    uint32_t advert = 0;
    return status_of(
        read_advert(number, &advert) &&
        (is_duplex ? user_port_duplex_set(0, 0, number, value, 0) : user_port_speed_set(0, 0, number, value, 2)) == 0 &&
        write_advert(port, (advert & ~(kBit27 | kBit26)) | (value == (is_duplex ? 1 : 1000) ? kBit26 : 0)) &&
        (!(is_duplex || value == 1000) || enable_autoneg(port)));
}

}  // namespace

adp_status_t set_duplex(int32_t port, uint32_t value, uint32_t mode) {
    uint32_t advert = 0;
    return mode == 2 && value == 1
               ? 0
               : status_of(read_advert(port, &advert) && write_advert(port, (advert & ~kAll) | duplex_bits(value)) &&
                           user_port_duplex_set(0, 0, port, value, mode) == 0 && (mode != 2 || enable_autoneg(port)));
}

adp_status_t set_autoneg(int32_t port, uint32_t value) {
    uint32_t advert = 0;
    return status_of((value == 0 || (read_advert(port, &advert) && write_advert(port, advert | kAll))) &&
                     user_port_autoneg_set(0, 0, port, value) == 0);
}

adp_status_t set_pause(int32_t port, uint32_t value) {
    uint32_t autoneg = 0;
    uint32_t advert = 0;
    return status_of(user_port_autoneg_get(0, 0, port, &autoneg) == 0 && read_advert(port, &advert) &&
                     (autoneg != 0 ? write_advert(port, value != 0 ? advert | kPause : advert & ~kPause)
                                   : user_port_pause_set(0, 0, port, value, value) == 0));
}

adp_status_t max_speed(uint32_t intf, uint32_t *speed) {
    uint32_t largest = 0;
    const adp_status_t status = on_port_or_members(intf, configured_members, [&](int32_t port) {
        uint32_t one = 0;
        const int32_t result = user_port_speed_max(0, 0, port, &one);
        largest = result == 0 ? std::max(largest, one) : largest;
        return or_102(result);
    });
    if (status == 0) {
        *speed = largest;
    }
    return status;
}

/** Speed, advertised duplex and advertised speed: the method follows the maximum speed. */
adp_status_t set_by_max_speed(uint32_t intf, uint32_t selector, uint32_t value, uint32_t mode) {
    uint32_t speed = 0;
    const adp_status_t status = max_speed(intf, &speed);
    if (status != 0) {
        return status;
    }
    const auto at_1000 = [&](int32_t port) {
        return selector == 0 ? set_speed_1000(port, value, mode)
                             : advertise_1000(port, selector == 7 ? duplex_bits(value) : speed_bits(value));
    };
    const auto at_10000 = [&](int32_t number) {
        return selector == 0 ? set_speed_10000(number, value) : advertise_10000(number, selector == 7, value);
    };
    if (speed == 1000) {
        return on_port_or_members(intf, configured_members, at_1000);
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
