// An optional limit of a rate, with counts of the frames that passed and that were dropped.
#pragma once

#include <stdint.h>
#include <optional>

#include "vdevice/chip/frame/status.h"
#include "vdevice/chip/rates/token_bucket.h"

namespace vdevice::chip {

class Limiter {
  public:
    /**
     * A rate of 0 is no limit, and forgets what was counted. A new limit begins with a full bucket; of a changed one
     * the level is kept, up to the new depth. Rates and depths out of range are refused.
     */
    Status set(RateLimit limit, Time now);
    /** Another measure begins with a full bucket. */
    void set_counting(Counting counting, Time now);

    /** True if the frame, so many octets with its check sequence, keeps to the limit; nothing is taken for it. */
    bool has_room(size_t octets, Time now);
    /** Counts the frame as passed and takes it, which there must be room for. */
    void pass(size_t octets, Time now);
    void refuse();
    /** Passes or refuses the frame; true if it has passed. */
    bool charge(size_t octets, Time now) { return !bucket_ || charge_bucket(octets, now); }

    /** As it was set. */
    const RateLimit &limit() const { return limit_; }
    Counting counting() const { return counting_; }
    /** The bucket as it would be at this time, or nothing without a limit. */
    std::optional<TokenBucket> bucket_at(Time now) const;
    uint64_t passed() const { return passed_; }
    uint64_t dropped() const { return dropped_; }
    /** The bucket keeps its level. */
    void clear_counts() { passed_ = dropped_ = 0; }

  private:
    bool charge_bucket(size_t octets, Time now);

    Counting counting_ = Counting::kOctets;
    RateLimit limit_;
    std::optional<TokenBucket> bucket_;
    uint64_t passed_ = 0;
    uint64_t dropped_ = 0;
};

}  // namespace vdevice::chip
