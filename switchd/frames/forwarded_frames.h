// The frames that the chip has just forwarded: the kernel's bridge, which got a copy, must not forward them again.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <array>
#include <chrono>
#include <vector>

#include "vdevice/chip/frame/frame.h"
#include "vdevice/chip/frame/time.h"

namespace switchd {

using vdevice::chip::Time;

/** Chosen at random, so that nobody can make frames that are taken for each other. */
using HashKey = std::array<uint64_t, 2>;

/**
 * Of a frame without its tag, and its VLAN. The same frame has the same hash on each port, also when the kernel has
 * taken the padding off a short packet on the way.
 */
uint64_t hash_of(const HashKey &key, uint16_t vid, const vdevice::chip::Frame &frame);

/** A table of fixed size. When a row is full the oldest frame in it is forgotten. */
class ForwardedFrames {
  public:
    static constexpr Time kLifetime = std::chrono::seconds{1};
    /** More than the kernel can have in the queues of all interfaces. */
    static constexpr size_t kFrames = 65536;

    void remember(uint64_t hash, Time now);
    bool has(uint64_t hash, Time now) const;

  private:
    static constexpr size_t kRowFrames = 8;
    static constexpr size_t kRows = kFrames / kRowFrames;

    struct Entry {
        uint64_t hash = 0;
        Time end{}; /**< of its life; 0 for a free entry */
    };
    using Row = std::array<Entry, kRowFrames>;

    std::vector<Row> rows_ = std::vector<Row>(kRows);
};

}  // namespace switchd
