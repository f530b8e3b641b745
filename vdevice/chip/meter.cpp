#include "vdevice/chip/meter.h"

#include <algorithm>

namespace vdevice::chip {
namespace {

constexpr std::int64_t kUnitsPerOctet = 8'000'000;
constexpr std::size_t kCheckSequenceBytes = 4;
constexpr std::size_t kGapBytes = 20;  // preamble, start of frame and the shortest gap (IEEE 802.3)

}  // namespace

Meter::Meter(std::uint32_t rate, Time now) : rate_{rate}, level_{full()}, filled_{now} {}

std::int64_t Meter::full() const {
    const std::int64_t burst = std::int64_t{rate_} * std::chrono::nanoseconds{kBurst}.count();
    return std::max(burst, static_cast<std::int64_t>(kMinDepth) * kUnitsPerOctet);
}

std::size_t Meter::depth() const {
    return static_cast<std::size_t>(full() / kUnitsPerOctet);
}

void Meter::set_rate(std::uint32_t rate, Time now) {
    fill(now);
    rate_ = rate;
    level_ = std::min(level_, full());
}

// The bucket may have been left alone for years: the time is compared before it is multiplied.
void Meter::fill(Time now) {
    const std::int64_t missing = full() - level_;
    const std::int64_t elapsed = std::max<std::int64_t>((now - filled_).count(), 0);
    level_ += elapsed > missing / rate_ ? missing : elapsed * rate_;
    filled_ = std::max(filled_, now);
}

// A frame longer than the bucket is deep passes when the bucket is full, and leaves it in debt.
bool Meter::charge(std::size_t octets, Time now) {
    fill(now);
    const std::int64_t cost = static_cast<std::int64_t>(octets) * kUnitsPerOctet;
    if (level_ < std::min(cost, full())) {
        ++dropped_;
        return false;
    }
    level_ -= cost;
    ++passed_;
    return true;
}

Status MeterTable::set(std::uint32_t meter, std::uint32_t rate, Time now) {
    if (meter >= kMeters) {
        return Status::kMeterRange;
    }
    if (rate == 0 || rate > Meter::kMaxRate) {
        return Status::kBadArgument;
    }
    std::optional<Meter> &slot = meters_[meter];
    if (slot) {
        slot->set_rate(rate, now);
    } else {
        slot.emplace(rate, now);
    }
    return Status::kOk;
}

bool MeterTable::remove(std::uint32_t meter) {
    const bool was_there = meters_[meter].has_value();
    meters_[meter].reset();
    return was_there;
}

bool MeterTable::passes(std::uint32_t meter, std::size_t octets, Time now) {
    std::optional<Meter> &slot = meters_[meter];
    const std::size_t counted = octets + kCheckSequenceBytes + (counts_gap_ ? kGapBytes : 0);
    return !slot || slot->charge(counted, now);
}

}  // namespace vdevice::chip
