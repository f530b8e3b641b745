// What the chip is measured with: a name, the chip's settings, the frames that come in on one port again and again, and
// how many copies of each leave.
#pragma once

#include <stddef.h>
#include <span>
#include <vector>

#include "vdevice/chip/switch.h"

namespace bench {

using Octets = std::vector<uint8_t>;

constexpr int kIn = 4;
constexpr int kOut = 5;

/** Counts what leaves and throws it away. */
class CountingSink final : public vdevice::chip::Sink {
  public:
    void transmit(int /*port*/, const vdevice::chip::Frame &frame) override {
        ++frames_;
        octets_ += frame.size();
    }

    size_t frames() const { return frames_; }
    size_t octets() const { return octets_; }

  private:
    size_t frames_ = 0;
    size_t octets_ = 0;
};

/** A chip of which ports kIn and kOut have a link, and the frames to send through it. */
struct Bench {
    CountingSink sink;
    vdevice::chip::Switch chip{sink};
    std::vector<Octets> frames;
};

struct ChipCase {
    const char *name;
    void (*prepare)(Bench &bench);
    size_t copies; /**< of each frame */
};

std::span<const ChipCase> chip_cases();

}  // namespace bench
