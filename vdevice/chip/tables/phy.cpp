// Speed and duplex: fixed, or negotiated from the advertised abilities.
#include "vdevice/chip/tables/phy.h"

#include <algorithm>
#include <iterator>

namespace vdevice::chip {
namespace {

constexpr uint32_t kCopperSpeeds[] = {10, 100, kGigabit};
constexpr uint32_t kFibreSpeeds[] = {kGigabit, kTenGigabit};

template <size_t N>
bool is_among(const uint32_t (&speeds)[N], uint32_t speed) {
    return std::find(std::begin(speeds), std::end(speeds), speed) != std::end(speeds);
}

}  // namespace

// The best first.
const Phy::Ability Phy::kAbilities[] = {
    {1U << 26, kGigabit, true}, {1U << 27, kGigabit, false}, {1U << 28, 100, true},
    {1U << 29, 100, false},     {1U << 30, 10, true},        {1U << 31, 10, false},
};

Phy::Phy(uint32_t max_speed)
    : max_speed_{max_speed},
      speed_{max_speed},
      abilities_{kPauseAbilities | (max_speed == kTenGigabit ? 0 : kAllSpeeds)} {}

const Phy::Ability *Phy::best_advertised() const {
    const auto *const best = std::find_if(std::begin(kAbilities), std::end(kAbilities),
                                          [&](const Ability &ability) { return (abilities_ & ability.bit) != 0; });
    return best == std::end(kAbilities) ? nullptr : best;
}

uint32_t Phy::speed() const {
    const Ability *ability = negotiated();
    return ability == nullptr ? speed_ : ability->speed;
}

bool Phy::full_duplex() const {
    const Ability *ability = negotiated();
    return ability == nullptr ? full_duplex_ : ability->full_duplex;
}

bool Phy::pause() const {
    return autoneg_ ? (abilities_ & kPauseAbilities) != 0 : pause_;
}

Status Phy::set_speed(uint32_t speed) {
    if (speed == kAutomaticSpeed) {
        speed_ = max_speed_;
        autoneg_ = true;
        return Status::kOk;
    }
    if (!(is_ten_gigabit() ? is_among(kFibreSpeeds, speed) : is_among(kCopperSpeeds, speed))) {
        return Status::kBadArgument;
    }
    speed_ = speed;
    autoneg_ = false;
    return Status::kOk;
}

Status Phy::set_duplex(uint32_t duplex) {
    if (duplex == kHalfDuplex && is_ten_gigabit()) {
        return Status::kBadArgument;
    }
    full_duplex_ = duplex != kHalfDuplex;
    autoneg_ = duplex != kHalfDuplex && duplex != kFullDuplex;
    return Status::kOk;
}

Status Phy::set_crossover(uint32_t crossover) {
    if (medium() != Medium::kCopper) {
        return Status::kWrongMedium;
    }
    if (crossover > static_cast<uint32_t>(Crossover::kMdix)) {
        return Status::kBadArgument;
    }
    crossover_ = static_cast<Crossover>(crossover);
    return Status::kOk;
}

}  // namespace vdevice::chip
