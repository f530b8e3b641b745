// Calls something over and over for a while.
#pragma once

#include <stdint.h>
#include <chrono>

namespace bench {

/** How often it was done within the time; 0 as soon as it fails once. */
template <typename Step>
uint64_t repeat_for(double seconds, Step step) {
    using Clock = std::chrono::steady_clock;
    const std::chrono::duration<double> duration{seconds};
    uint64_t done = 0;
    for (const auto began = Clock::now(); Clock::now() - began < duration; ++done) {
        if (!step()) {
            return 0;
        }
    }
    return done;
}

}  // namespace bench
