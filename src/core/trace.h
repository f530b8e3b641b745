// The device's trace.
#pragma once

#include <stdint.h>

namespace adp {

/** Adds what @p format makes of the arguments behind it to the trace, with the place in the source that it tells of. */
void add_trace(const char *function, int32_t line, const char *format, ...);

}  // namespace adp
