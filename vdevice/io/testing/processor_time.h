// For tests of how long something takes: the processor's time, which other programs of the machine do not lengthen.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>

namespace vdevice::io {

/** What this thread has used, the kernel's work for it included. */
inline double processor_seconds() {
    timespec used{};
    EXPECT_EQ(clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used), 0);
    return std::chrono::duration<double>(std::chrono::seconds{used.tv_sec} + std::chrono::nanoseconds{used.tv_nsec})
        .count();
}

}  // namespace vdevice::io
