// For tests: the seeds of random sequences, as many as the build asks for: fewer on the target, under the emulator.
#pragma once

#include <gtest/gtest.h>

namespace vdevice::chip::test {

inline auto seeds(unsigned times = 1) {
    return testing::Range(1U, 1U + times * VDEVICE_SEEDS);
}

}  // namespace vdevice::chip::test
