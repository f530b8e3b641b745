// How a decision of the chip is named.
#pragma once

namespace vdevice::chip {

/** A short word for tables, filters and programs, and what it says to people. */
struct Wording {
    const char *word;
    const char *text;
};

}  // namespace vdevice::chip
