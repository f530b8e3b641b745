/**
 * @file compare.h
 * The differences of two recordings in meaning.
 */
#pragma once

#include <stddef.h>
#include <string>

#include "tools/adptrace/recording/recording.h"

namespace adptrace {

struct CompareOptions {
    bool shows_all = false;    /**< else the first difference */
    bool with_imported = true; /**< driver and service calls */
    std::string calls = "*";   /**< a pattern: of calls that it does not match no difference is shown or counted */
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
