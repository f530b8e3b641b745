// Speed, duplex, auto-negotiation and pause of one port, and the abilities it advertises.
#include "port/attributes.h"

#include <netlink_api.h>

#include "core/port_map.h"
#include "core/resolve.h"

namespace adp {
namespace {

// Bits of the advertisement; other bits are written back as read.
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
constexpr uint32_t kModeWithAutoneg = 2;  // auto-negotiation follows the change
constexpr uint32_t kTenGigabitSpeedMode = 2;
constexpr uint32_t kOwnDuplexMode = 0;  // of the duplex set together with the advertised one

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
    return user_port_ability_advert_get(0, 0, number(port), abilities);
}

int32_t write_abilities(PhyPort port, uint32_t abilities) {
    return user_port_ability_advert_set(0, 0, number(port), abilities);
}

int32_t enable_autoneg(PhyPort port) {
    return user_port_autoneg_set(0, 0, number(port), 1);
}

/** A change of the advertised abilities: some are cleared, then some set. */
struct Change {
    uint32_t cleared;
    uint32_t set;

    constexpr uint32_t applied_to(uint32_t abilities) const { return (abilities & ~cleared) | set; }
};

int32_t rewrite_abilities(PhyPort port, Change change) {
    uint32_t abilities = 0;
    const int32_t result = read_abilities(port, &abilities);
    return result != 0 ? result : write_abilities(port, change.applied_to(abilities));
}

// The same with a driver call between read and write, on the port that is read.
int32_t rewrite_abilities_around(PortCall<uint32_t, uint32_t> call, uint32_t value, uint32_t mode, PhyPort read,
                                 PhyPort written, Change change) {
    uint32_t abilities = 0;
    int32_t result = read_abilities(read, &abilities);
    if (result == 0) {
        result = call(0, 0, number(read), value, mode);
    }
    return result != 0 ? result : write_abilities(written, change.applied_to(abilities));
}

// The last call of a step, made if those before it succeeded.
int32_t then_enable_autoneg(int32_t result, PhyPort port, bool wanted = true) {
    return result == 0 && wanted ? enable_autoneg(port) : result;
}

// Advertises these abilities of 10, 100 and 1000 Mb/s and no others, then enables auto-negotiation.
int32_t advertise_only(PhyPort port, uint32_t chosen) {
    return then_enable_autoneg(rewrite_abilities(port, {kAll, chosen}), port);
}

// On ports of 10 Gb/s only the abilities of 1000 Mb/s are changed.
constexpr Change gigabit_abilities(bool full) {
    return {k1000Half | k1000Full, full ? k1000Full : 0};
}

// Contract: ports of 10 Gb/s are read on the number that is handed in and written on its translation. That number is
// an interface for a user port, and a physical port, so translated twice, for a member of a group.
PhyPort translated_once_more(PhyPort handed) {
    return phy_of(Intf(static_cast<uint32_t>(number(handed))));
}

}  // namespace

int32_t step_gigabit_speed(PhyPort port, uint32_t value, uint32_t mode) {
    const int32_t result =
        rewrite_abilities_around(user_port_speed_set, value, mode, port, port, {kAll, abilities_of_speed(value)});
    return then_enable_autoneg(result, port, value == kGigabit);
}

int32_t step_ten_gigabit_speed(PhyPort port, uint32_t value, uint32_t) {
    int32_t result = rewrite_abilities(port, gigabit_abilities(value != kTenGigabit));
    if (result == 0) {
        result = user_port_speed_set(0, 0, number(port), value, kTenGigabitSpeedMode);
    }
    return then_enable_autoneg(result, port, value == kGigabit);
}

int32_t step_duplex(PhyPort port, uint32_t value, uint32_t mode) {
    const bool with_autoneg = mode == kModeWithAutoneg;
    if (with_autoneg && value == kFullDuplex) {
        return 0;
    }
    int32_t result = rewrite_abilities(port, {kAll, abilities_of_duplex(value)});
    if (result == 0) {
        result = user_port_duplex_set(0, 0, number(port), value, mode);
    }
    return then_enable_autoneg(result, port, with_autoneg);
}

int32_t step_autoneg(PhyPort port, uint32_t value, uint32_t) {
    const int32_t result = value != 0 ? rewrite_abilities(port, {0, kAll}) : 0;
    return result != 0 ? result : user_port_autoneg_set(0, 0, number(port), value);
}

int32_t step_pause(PhyPort port, uint32_t value, uint32_t) {
    uint32_t autoneg = 0;
    uint32_t abilities = 0;
    int32_t result = user_port_autoneg_get(0, 0, number(port), &autoneg);
    if (result == 0) {
        result = read_abilities(port, &abilities);
    }
    if (result != 0) {
        return result;
    }
    if (autoneg == 0) {
        return user_port_pause_set(0, 0, number(port), value, value);
    }
    return write_abilities(port, value != 0 ? abilities | kPause : abilities & ~kPause);
}

int32_t step_gigabit_advert_duplex(PhyPort port, uint32_t value, uint32_t) {
    return advertise_only(port, abilities_of_duplex(value));
}

int32_t step_gigabit_advert_speed(PhyPort port, uint32_t value, uint32_t) {
    return advertise_only(port, abilities_of_speed(value));
}

int32_t step_ten_gigabit_advert_duplex(PhyPort handed, uint32_t value, uint32_t) {
    const PhyPort port = translated_once_more(handed);
    const int32_t result = rewrite_abilities_around(user_port_duplex_set, value, kOwnDuplexMode, handed, port,
                                                    gigabit_abilities(value == kFullDuplex));
    return then_enable_autoneg(result, port);
}

int32_t step_ten_gigabit_advert_speed(PhyPort handed, uint32_t value, uint32_t) {
    const PhyPort port = translated_once_more(handed);
    const bool is_gigabit = value == kGigabit;
    const int32_t result = rewrite_abilities_around(user_port_speed_set, value, kTenGigabitSpeedMode, handed, port,
                                                    gigabit_abilities(is_gigabit));
    return then_enable_autoneg(result, port, is_gigabit);
}

}  // namespace adp
