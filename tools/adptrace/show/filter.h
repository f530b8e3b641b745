/**
 * @file filter.h
 * Which calls of a recording are looked at.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "tools/adptrace/recording/recording.h"

namespace adptrace {

/** Whether it is one of the library's exported calls; otherwise the driver or a service has it. */
bool is_of_library(const Call &call);

struct Filter {
    std::vector<std::string> patterns; /**< of names, as a shell has them; one of them */
    bool is_failed = false;
    bool is_library = false;
    bool is_driver = false;
    std::optional<uint32_t> thread;
    std::optional<int64_t> process; /**< its id */
    int64_t since = 0;
    int64_t until = std::numeric_limits<int64_t>::max();

    [[nodiscard]] bool has(const Recording &recording, const Call &call) const;
    /** What is no call. */
    [[nodiscard]] bool has(const Recording &recording, size_t in_process, int64_t at) const;
    /** Whether it is about calls alone. */
    [[nodiscard]] bool is_about_calls() const {
        return !patterns.empty() || is_failed || is_library || is_driver || thread.has_value();
    }
};

}  // namespace adptrace
