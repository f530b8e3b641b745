// A token bucket: tells which frames are over a rate, and when the next one will conform, on the time handed in.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <chrono>

#include "vdevice/chip/frame/time.h"

namespace vdevice::chip {

/** What the rate of a bucket is of: kilobits, or frames, however long they are. */
enum class Counting : uint8_t { kOctets, kFrames };

/** How much may pass. A depth of 0 lets the bucket choose: what the rate lets in within 10 ms, but two frames. */
struct RateLimit {
    uint32_t rate = 0;  /**< kbit/s or frames a second, 1 at least */
    uint32_t depth = 0; /**< kbit or frames */

    friend bool operator==(const RateLimit &, const RateLimit &) = default;
};

/**
 * The level is counted in billionths of a kilobit or of a frame: what a rate of one lets in within a nanosecond. So
 * nothing is ever rounded, and a flow keeps to its rate however long it runs.
 */
class TokenBucket {
  public:
    static constexpr uint32_t kMaxRate = 100'000'000;
    static constexpr uint32_t kMaxDepth = 1'000'000; /**< what the highest rate lets in within 10 ms */
    static constexpr std::chrono::milliseconds kBurst{10};
    static constexpr size_t kMinOctets = 3084; /**< two frames of full length, preamble and gap included */
    static constexpr size_t kMinFrames = 2;

    /** A full bucket. */
    TokenBucket(Counting counting, RateLimit limit, Time now);

    /** The level is kept, up to the new depth. */
    void set_limit(RateLimit limit, Time now);
    /** Fills the bucket until now; a time before the last one adds nothing. */
    void fill(Time now);
    /**
     * Takes a frame of so many octets out of the bucket; false, and nothing is taken, when it is over the rate. A frame
     * larger than the bucket passes when the bucket is full, and leaves it in debt.
     */
    bool charge(size_t octets, Time now);
    /** Whether charge() would let it pass, as far as the bucket has been filled. */
    bool has_room(size_t octets) const { return level_ >= needed(octets); }
    /** The first nanosecond at which such a frame will pass; the time of the last filling if it passes already. */
    Time ready_at(size_t octets) const;

    Counting counting() const { return counting_; }
    const RateLimit &limit() const { return limit_; }
    /** Whole octets or frames that fit in. */
    size_t depth() const;
    /** Whole octets or frames that were in at the last filling; below 0 in debt. */
    int64_t level() const;

  private:
    int64_t unit() const;
    int64_t full() const;
    int64_t cost(size_t octets) const;
    int64_t needed(size_t octets) const;

    Counting counting_;
    RateLimit limit_;
    int64_t level_;
    Time filled_;
};

}  // namespace vdevice::chip
