// For tests: a driver on a chip whose frames go nowhere in particular and whose clock stands where it is put.
#pragma once

#include <gtest/gtest.h>

#include <array>

#include "vdevice/chip/testing/recording_sink.h"
#include "vdevice/driver/driver.h"

namespace vdevice::driver::test {

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
