// The field processor's counters: how many frames and octets met the rules that count them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace vdevice::chip {

/** Which of a counter's two values is meant. */
enum class CounterType : std::uint8_t { kFrames = 0, kOctets = 1, kCount };

constexpr std::size_t kCounterTypes = static_cast<std::size_t>(CounterType::kCount);

class FieldCounters {
  public:
    static constexpr std::uint32_t kCounters = 256;

    void add(std::uint32_t counter, std::size_t octets) {
        ++at(counter, CounterType::kFrames);
        at(counter, CounterType::kOctets) += octets;
    }
    void clear(std::uint32_t counter, CounterType type) { at(counter, type) = 0; }
    std::uint64_t get(std::uint32_t counter, CounterType type) const {
        return values_[counter][static_cast<std::size_t>(type)];
    }

  private:
    std::uint64_t &at(std::uint32_t counter, CounterType type) {
        return values_[counter][static_cast<std::size_t>(type)];
    }

    std::array<std::array<std::uint64_t, kCounterTypes>, kCounters> values_{};
};

}  // namespace vdevice::chip
