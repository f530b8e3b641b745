/**
 * @file call_trace.h
 * Traces the imported calls of a program. Linked into the executable, it interposes on the libraries that libadp
 * imports, forwards every call and, while enabled, stores each as text with its result and outputs. A failed call is
 * remembered in any case.
 *
 * The executable must export its symbols (ENABLE_EXPORTS), so that the loader finds these definitions first.
 */
#pragma once

#include <stdint.h>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace call_trace {

/** Off at first. */
extern bool enabled;

/** The calls since the last take(), in order: `user_vlan_create(unit=0, zero=0, vid=100) -> 0`. */
std::vector<std::string> take();

/** The names of the results in the texts; null: they have none. */
extern std::string_view (*name_of)(int64_t result);

/** A call that gave another result than 0. */
struct Failure {
    const char *call;
    std::optional<int64_t> port;  ///< its argument of this name
    int64_t result;
};

/** The last failed call since this was last asked. */
std::optional<Failure> take_failure();

}  // namespace call_trace
