// The numbers by which the counter calls choose a counter. docs/reference/counters.md shows the same rows; a
// test compares the two.
#pragma once

#include <stdint.h>
#include <span>

#include "vdevice/chip/tables/port.h"

namespace vdevice::driver {

struct Statistic {
    uint32_t selector;
    const char *name;
    uint64_t (*value)(const chip::PortCounters &);
};

std::span<const Statistic> statistic_table();

}  // namespace vdevice::driver
