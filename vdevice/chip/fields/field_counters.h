// The field processor's counters: how many frames and octets met the rules that count them.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <array>

namespace vdevice::chip {

/** Which of a counter's two values is meant. */
enum class CounterType : uint8_t { kFrames = 0, kOctets = 1, kCount };

constexpr size_t kCounterTypes = static_cast<size_t>(CounterType::kCount);

class FieldCounters {
  public:
    static constexpr uint32_t kCounters = 256;

    void add(uint32_t counter, size_t octets) {
        ++at(counter, CounterType::kFrames);
        at(counter, CounterType::kOctets) += octets;
    }
    void clear(uint32_t counter, CounterType type) { at(counter, type) = 0; }
    void clear() { values_ = {}; }
    uint64_t get(uint32_t counter, CounterType type) const { return values_[counter][static_cast<size_t>(type)]; }

  private:
    uint64_t &at(uint32_t counter, CounterType type) { return values_[counter][static_cast<size_t>(type)]; }

    std::array<std::array<uint64_t, kCounterTypes>, kCounters> values_{};
};

}  // namespace vdevice::chip
