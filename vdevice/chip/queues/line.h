// The line of a port: one frame at a time at the port's speed, with preamble and gap (IEEE 802.3).
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <algorithm>

#include "vdevice/chip/frame/frame.h"
#include "vdevice/chip/frame/time.h"

namespace vdevice::chip {

/** It counts in fractions of nanoseconds: nothing is rounded, however many frames follow each other. */
class Line {
  public:
    static constexpr size_t kLeastOctets = 60;  /**< shorter frames are padded */
    static constexpr size_t kAroundOctets = 20; /**< preamble and gap */

    /** An idle line, in kbit/s. */
    explicit Line(uint32_t speed) : speed_{speed} {}

    uint32_t speed() const { return speed_; }
    /** What is on the line keeps to the old speed. */
    void set_speed(uint32_t speed) {
        free_ = free_at();
        rest_ = 0;
        speed_ = speed;
    }
    /** The first whole nanosecond at which the line is free. */
    Time free_at() const { return free_ + Time{rest_ == 0 ? 0 : 1}; }
    /** Sends a frame of so many octets, without its check sequence, now or as soon as the line is free. */
    void send(size_t octets, Time now) {
        if (now > free_at()) {
            free_ = now;
            rest_ = 0;
        }
        constexpr uint64_t kBits = 8;
        constexpr uint64_t kScale = 1'000'000;  // of kbit/s and nanoseconds
        const uint64_t all = std::max(octets, kLeastOctets) + kCheckSequenceBytes + kAroundOctets;
        const uint64_t work = rest_ + all * kBits * kScale;
        free_ += Time{work / speed_};
        rest_ = work % speed_;
    }

  private:
    uint32_t speed_;
    Time free_{};
    uint64_t rest_ = 0; /**< after free_, in nanoseconds divided by the speed */
};

}  // namespace vdevice::chip
