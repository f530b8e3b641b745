/**
 * @file recording.h
 * A case run against the recording driver, and all that came of it as C.
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
    std::vector<std::string> before; /**< the calls that make what this one finds */
    std::string call;
    std::vector<std::string> driver_calls;
    size_t remote = 0;        /**< of these, calls that leave the process */
    size_t remote_in_all = 0; /**< with those made before */
    calls::Result kind = calls::Result::kNothing;
    int64_t result = 0; /**< an address as a number */

    /** What a later call has to give, as C. */
    [[nodiscard]] std::string expected() const;
    /** Whether the call was told that this is not to be had, and did nothing. */
    [[nodiscard]] bool is_refused() const;
};

/** Brings the tables up, makes what the call finds, and the call. All that they read and write is added to the blocks.
 */
Recording run(const Case &one, Blocks &blocks);

}  // namespace record
