/**
 * @file times.h
 * Times of a recording as text. They are numbers of nanoseconds.
 */
#pragma once

#include <stdint.h>
#include <string>

namespace adptrace {

struct TimeUnit {
    uint64_t nanoseconds;
    const char *name;
};

/** The largest unit that is not longer. */
const TimeUnit &unit_for(uint64_t nanoseconds);

/** Seconds, `0.001234`. */
std::string time_text(int64_t nanoseconds);
/** In a unit that fits, `12 us`. */
std::string duration_text(uint64_t nanoseconds);
/** From one time to a later one. */
uint64_t time_between(int64_t earlier, int64_t later);

}  // namespace adptrace
