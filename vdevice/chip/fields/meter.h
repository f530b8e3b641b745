// Meters: token buckets that tell which frames are over a rate, on the time handed in.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <array>
#include <optional>

#include "vdevice/chip/frame/status.h"
#include "vdevice/chip/rates/token_bucket.h"

namespace vdevice::chip {

/** A bucket of the default depth, and counts of the frames that were charged to it. */
class Meter {
  public:
    static constexpr uint32_t kMaxRate = TokenBucket::kMaxRate; /**< kbit/s */

    /** A full bucket. */
    Meter(uint32_t rate, Time now) : bucket_{Counting::kOctets, {rate}, now} {}

    /** The level is kept, up to the new depth. */
    void set_rate(uint32_t rate, Time now) { bucket_.set_limit({rate}, now); }
    /** Takes the octets out of the bucket; false, and nothing is taken, when they are over the rate. */
    bool charge(size_t octets, Time now);

    uint32_t rate() const { return bucket_.limit().rate; }
    size_t depth() const { return bucket_.depth(); }
    uint64_t passed() const { return passed_; }
    uint64_t dropped() const { return dropped_; }
    /** The bucket keeps its level. */
    void clear_counts() { passed_ = dropped_ = 0; }

  private:
    TokenBucket bucket_;
    uint64_t passed_ = 0;
    uint64_t dropped_ = 0;
};

class MeterTable {
  public:
    static constexpr uint32_t kMeters = 64;

    /** Makes the meter or changes its rate. */
    Status set(uint32_t meter, uint32_t rate, Time now);
    /** False if it was not there. */
    bool remove(uint32_t meter);
    void clear() { meters_ = {}; }
    void clear_counts() {
        for (std::optional<Meter> &meter : meters_) {
            if (meter) {
                meter->clear_counts();
            }
        }
    }
    /** The meter, or nothing. */
    const std::optional<Meter> &find(uint32_t meter) const { return meters_[meter]; }

    /** From now on a frame's octets do not include the preamble before it and the gap behind it. */
    void exclude_gap() { counts_gap_ = false; }
    bool counts_gap() const { return counts_gap_; }

    /** True if a frame of so many octets, check sequence not included, keeps to the rate, or the meter is not there. */
    bool passes(uint32_t meter, size_t octets, Time now);

  private:
    std::array<std::optional<Meter>, kMeters> meters_;
    bool counts_gap_ = true;
};

}  // namespace vdevice::chip
