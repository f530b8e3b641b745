// Speed, duplex, auto-negotiation and pause of one port, and the abilities it advertises.
#include "port/attributes.h"

#include <netlink_api.h>

#include "port/map.h"

namespace adp {
namespace {

// The advertisement word's bits that are changed here; all others stay as read.
constexpr uint32_t k10Half = 1u << 31;
constexpr uint32_t k10Full = 1u << 30;
constexpr uint32_t k100Half = 1u << 29;
constexpr uint32_t k100Full = 1u << 28;
constexpr uint32_t k1000Half = 1u << 27;
constexpr uint32_t k1000Full = 1u << 26;
constexpr uint32_t kPause = 1u << 25 | 1u << 24;
constexpr uint32_t kHalf = k10Half | k100Half;
constexpr uint32_t kFull = k10Full | k100Full | k1000Full;
constexpr uint32_t kAll = kHalf | kFull;

static_assert(kAll == 0xF4000000 && kHalf == 0xA0000000 && kFull == 0x54000000 && kPause == 0x03000000);

constexpr uint32_t kHalfDuplex = 0;
constexpr uint32_t kFullDuplex = 1;
constexpr uint32_t kModeWithAutoneg = 2;  // the caller's mode that asks for auto-negotiation after a duplex change
constexpr uint32_t kTenGigabitSpeedMode = 2;

constexpr uint32_t abilities_of_speed(uint32_t speed) {
    switch (speed) {
        case 10:
            return k10Half | k10Full;
        case 100:
            return k100Half | k100Full;
        case kGigabit:
            return k1000Full;
        default:
            return kAll;
    }
}

constexpr uint32_t abilities_of_duplex(uint32_t duplex) {
    switch (duplex) {
        case kHalfDuplex:
            return kHalf;
        case kFullDuplex:
            return kFull;
        default:
            return kAll;
    }
}

int32_t read_abilities(PhyPort port, uint32_t *abilities) {
    return user_port_ability_advert_get(0, 0, port.value(), abilities);
}

int32_t write_abilities(PhyPort port, uint32_t abilities) {
    return user_port_ability_advert_set(0, 0, port.value(), abilities);
}

int32_t enable_autoneg(PhyPort port) {
    return user_port_autoneg_set(0, 0, port.value(), 1);
}

// Runs calls in order until one fails; gives that one's result.
int32_t in_order() {
    return 0;
}

template <typename Call, typename... Rest>
int32_t in_order(Call call, Rest... rest) {
    const int32_t result = call();
    return result != 0 ? result : in_order(rest...);
}

// The advertisement is rewritten to these abilities of 10, 100 and 1000 Mb/s, then auto-negotiation runs.
int32_t advertise_only(PhyPort port, uint32_t chosen) {
    uint32_t abilities = 0;
    return in_order([&] { return read_abilities(port, &abilities); },
                    [&] { return write_abilities(port, (abilities & ~kAll) | chosen); },
                    [&] { return enable_autoneg(port); });
}

// The ports of 10 Gb/s read on the number that is handed in and write on its translation: an interface number for a
// user port, a physical port, translated a second time, for a member of a group.
PhyPort translated_once_more(PhyPort handed) {
    return phy_of(Intf(static_cast<uint32_t>(handed.value())));
}

}  // namespace

int32_t step_gigabit_speed(PhyPort port, AttrRequest request) {
    uint32_t abilities = 0;
    return in_order([&] { return read_abilities(port, &abilities); },
                    [&] { return user_port_speed_set(0, 0, port.value(), request.value, request.mode); },
                    [&] { return write_abilities(port, (abilities & ~kAll) | abilities_of_speed(request.value)); },
                    [&] { return request.value == kGigabit ? enable_autoneg(port) : 0; });
}

int32_t step_ten_gigabit_speed(PhyPort port, AttrRequest request) {
    uint32_t abilities = 0;
    const uint32_t gigabit = request.value == kTenGigabit ? 0 : k1000Full;
    return in_order([&] { return read_abilities(port, &abilities); },
                    [&] { return write_abilities(port, (abilities & ~(k1000Half | k1000Full)) | gigabit); },
                    [&] { return user_port_speed_set(0, 0, port.value(), request.value, kTenGigabitSpeedMode); },
                    [&] { return request.value == kGigabit ? enable_autoneg(port) : 0; });
}

int32_t step_duplex(PhyPort port, AttrRequest request) {
    if (request.mode == kModeWithAutoneg && request.value == kFullDuplex) {
        return 0;
    }
    uint32_t abilities = 0;
    return in_order([&] { return read_abilities(port, &abilities); },
                    [&] { return write_abilities(port, (abilities & ~kAll) | abilities_of_duplex(request.value)); },
                    [&] { return user_port_duplex_set(0, 0, port.value(), request.value, request.mode); },
                    [&] { return request.mode == kModeWithAutoneg ? enable_autoneg(port) : 0; });
}

int32_t step_autoneg(PhyPort port, AttrRequest request) {
    uint32_t abilities = 0;
    const bool is_on = request.value != 0;
    return in_order([&] { return is_on ? read_abilities(port, &abilities) : 0; },
                    [&] { return is_on ? write_abilities(port, abilities | kAll) : 0; },
                    [&] { return user_port_autoneg_set(0, 0, port.value(), request.value); });
}

int32_t step_pause(PhyPort port, AttrRequest request) {
    uint32_t autoneg = 0;
    uint32_t abilities = 0;
    return in_order([&] { return user_port_autoneg_get(0, 0, port.value(), &autoneg); },
                    [&] { return read_abilities(port, &abilities); },
                    [&] {
                        if (autoneg == 0) {
                            return user_port_pause_set(0, 0, port.value(), request.value, request.value);
                        }
                        return write_abilities(port, request.value != 0 ? abilities | kPause : abilities & ~kPause);
                    });
}

int32_t step_gigabit_advert_duplex(PhyPort port, AttrRequest request) {
    return advertise_only(port, abilities_of_duplex(request.value));
}

int32_t step_gigabit_advert_speed(PhyPort port, AttrRequest request) {
    return advertise_only(port, abilities_of_speed(request.value));
}

int32_t step_ten_gigabit_advert_duplex(PhyPort handed, AttrRequest request) {
    uint32_t abilities = 0;
    const PhyPort port = translated_once_more(handed);
    const uint32_t gigabit = request.value == kFullDuplex ? k1000Full : 0;
    return in_order([&] { return read_abilities(handed, &abilities); },
                    [&] { return user_port_duplex_set(0, 0, handed.value(), request.value, 0); },
                    [&] { return write_abilities(port, (abilities & ~(k1000Half | k1000Full)) | gigabit); },
                    [&] { return enable_autoneg(port); });
}

int32_t step_ten_gigabit_advert_speed(PhyPort handed, AttrRequest request) {
    uint32_t abilities = 0;
    const PhyPort port = translated_once_more(handed);
    const uint32_t gigabit = request.value == kGigabit ? k1000Full : 0;
    return in_order([&] { return read_abilities(handed, &abilities); },
                    [&] { return user_port_speed_set(0, 0, handed.value(), request.value, kTenGigabitSpeedMode); },
                    [&] { return write_abilities(port, (abilities & ~(k1000Half | k1000Full)) | gigabit); },
                    [&] { return request.value == kGigabit ? enable_autoneg(port) : 0; });
}

}  // namespace adp
