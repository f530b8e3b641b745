// For tests: a driver on a chip whose frames go nowhere in particular and whose clock stands where it is put.
#pragma once

#include <gtest/gtest.h>

#include <array>

#include "vdevice/chip/testing/recording_sink.h"
#include "vdevice/driver/driver.h"

namespace vdevice::driver::test {

// What tests compare results with.
constexpr int32_t kBadArgument = chip::code(chip::Status::kBadArgument);
constexpr int32_t kNoPort = chip::code(chip::Status::kNoPort);
constexpr int32_t kCpuPort = chip::code(chip::Status::kCpuPort);
constexpr int32_t kNotFrontPort = chip::code(chip::Status::kNotFrontPort);
constexpr int32_t kVlanRange = chip::code(chip::Status::kVlanRange);
constexpr int32_t kQueueRange = chip::code(chip::Status::kQueueRange);

using Words = std::array<uint32_t, chip::PortSet::kWords>;

inline Words words_of(const chip::PortSet &set) {
    Words words{};
    set.to_words(words.data());
    return words;
}

inline chip::PortSet ports(std::initializer_list<int> numbers) {
    chip::PortSet set;
    for (const int number : numbers) {
        set.add(number);
    }
    return set;
}

class DriverTest : public testing::Test {
  protected:
    chip::test::RecordingSink sink_;
    chip::Switch chip_{sink_};
    chip::Time now_{};
    Driver driver_{chip_, Board{}, [this] { return now_; }};
};

}  // namespace vdevice::driver::test
