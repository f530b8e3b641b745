/**
 * @file marks.h
 * Calls over time on a surface of so many pixels: what is drawn, without how it looks.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <optional>
#include <vector>

#include "tools/adptrace/recording/recording.h"
#include "tools/adptrace/show/filter.h"

namespace adptrace {

/** One call, or several that are too short to be told apart. */
struct Mark {
    double left = 0; /**< pixels */
    double right = 0;
    double busy = 0;  /**< of its width, with calls */
    size_t first = 0; /**< index of the call, or of the first one */
    size_t count = 0;
    size_t failed = 0;
    size_t unreturned = 0;
    int64_t until = 0;
};

/** The calls of a thread. */
struct Lane {
    size_t process = 0;
    uint32_t thread = 0;
    std::vector<std::vector<Mark>> rows; /**< by the number of calls around a call */
};

struct Marks {
    int64_t from = 0;
    int64_t until = 0;
    std::vector<Lane> lanes;
    size_t calls = 0;       /**< drawn */
    size_t marks = 0;       /**< of them */
    size_t threads = 0;     /**< left out */
    size_t other_calls = 0; /**< of those threads */
    size_t inner_calls = 0; /**< left out since they are within too many others */
};

/** No more marks than there is room for, whatever the recording has. */
Marks marks_of(const Recording &recording, const Filter &filter, double width);

}  // namespace adptrace
