/**
 * @file timeline.h
 * A picture of calls over time: a lane for each thread, the driver calls below the calls that made them.
 */
#pragma once

#include <string>

#include "tools/adptrace/recording/recording.h"
#include "tools/adptrace/show/filter.h"

namespace adptrace {

struct Timeline {
    std::string svg;
    std::string summary; /**< what it shows, and what was left out */
};

Timeline timeline_of(const Recording &recording, const Filter &filter);

}  // namespace adptrace
