// Saying that a driver call failed.
#pragma once

#include <stdint.h>

namespace adp {

/** A message's place, which is part of its text, and its format: for the place and then, if it asks for it, a result.
 */
struct FailurePoint {
    const char *function;
    int line;
    const char *format;
};

/** Writes the message on standard output; gives the result back. */
int32_t report(const FailurePoint &point, int32_t result);

inline int32_t report_if_negative(const FailurePoint &point, int32_t result) {
    return result < 0 ? report(point, result) : result;
}

inline int32_t report_if_failed(const FailurePoint &point, int32_t result) {
    return result != 0 ? report(point, result) : result;
}

}  // namespace adp
