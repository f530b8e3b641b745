// Charges frames to meters.
#include "vdevice/chip/fields/meter.h"

#include "vdevice/chip/frame/frame.h"

namespace vdevice::chip {
namespace {

constexpr size_t kGapBytes = 20;  // preamble, start of frame and the shortest gap (IEEE 802.3)

}  // namespace

bool Meter::charge(size_t octets, Time now) {
    const bool passes = bucket_.charge(octets, now);
    ++(passes ? passed_ : dropped_);
    return passes;
}

Status MeterTable::set(uint32_t meter, uint32_t rate, Time now) {
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

bool MeterTable::remove(uint32_t meter) {
    const bool was_there = meters_[meter].has_value();
    meters_[meter].reset();
    return was_there;
}

bool MeterTable::passes(uint32_t meter, size_t octets, Time now) {
    std::optional<Meter> &slot = meters_[meter];
    const size_t counted = octets + kCheckSequenceBytes + (counts_gap_ ? kGapBytes : 0);
    return !slot || slot->charge(counted, now);
}

}  // namespace vdevice::chip
