/**
 * @file compare.h
 * The differences of two recordings in meaning.
 */
#pragma once

#include <stddef.h>
#include <string>

#include "tools/adptrace/recording/recording.h"
#include "tools/adptrace/show/filter.h"

namespace adptrace {

struct CompareOptions {
    bool shows_all = false;    /**< else the first difference */
    bool with_imported = true; /**< driver and service calls */
    Filter filter = {};        /**< no difference of other calls is shown or counted */
    std::string name_a = "A";  /**< as the text calls the recordings */
    std::string name_b = "B";
    size_t most_differences = 1000; /**< of one alignment, see align() */
};

struct Comparison {
    std::string text; /**< lines */
    size_t differences = 0;
};

Comparison compare(const Recording &a, const Recording &b, const CompareOptions &options);

}  // namespace adptrace
