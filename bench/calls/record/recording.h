/**
 * @file recording.h
 * A case run with the recording driver, and the results as C.
 */
#pragma once

#include <stddef.h>
#include <string>
#include <vector>

#include "bench/calls/record/blocks.h"
#include "bench/calls/record/cases.h"
#include "calls/exported.h"

namespace record {

struct Recording {
    std::vector<std::string> before; /**< calls that prepare the tables */
    std::string call;
    std::vector<std::string> driver_calls;
    size_t remote = 0;        /**< of these, calls that leave the process */
    size_t remote_in_all = 0; /**< with those made before */
    calls::Result kind = calls::Result::kNothing;
    int64_t result = 0; /**< an address as a number */

    /** The expected result, as C. */
    [[nodiscard]] std::string expected() const;
    /** Whether the call was refused without a driver call. */
    [[nodiscard]] bool is_refused() const;
};

/** Sets the tables up, prepares them and makes the call. The memory of all arguments is added to the blocks. */
Recording run(const Case &one, Blocks &blocks);

}  // namespace record
