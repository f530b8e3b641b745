// The daemon's own process, as the kernel sees it.
#pragma once

#include <stdint.h>

namespace vdevice::inspect {

struct Process {
    uint64_t resident_bytes;
    uint64_t virtual_bytes;
    uint64_t open_fds;
    uint64_t max_fds;
    double cpu_seconds;
};

/** What cannot be read is 0. */
Process read_process();

}  // namespace vdevice::inspect
