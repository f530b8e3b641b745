// The clock of a recording.
#include "tools/adptrace/record/session.h"

#include <time.h>

namespace adptrace::record {

int64_t nanoseconds_now() {
    constexpr int64_t kSecond = 1000000000;
    struct timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * kSecond + now.tv_nsec;
}

}  // namespace adptrace::record
