// The field processor's log lines: to the device's log and, while tracing is on, to the trace.
#pragma once

#include <stdint.h>

namespace adp {

/** A line's place, which is part of its text, and its format, which begins with "%s:[%05d]" for the place. */
struct LogPoint {
    const char *function;
    int32_t line;
    const char *format;
};

/**
 * Writes a line. Numbers behind those that its format asks for are ignored, as printf ignores them: so these two serve
 * every log point.
 */
void log_numbers(const LogPoint &point, int32_t a = 0, int32_t b = 0, int32_t c = 0);
void log_numbers(const LogPoint &point, int32_t a, int32_t b, int32_t c, int32_t d, int32_t e = 0);

template <typename... Numbers>
void log(const LogPoint &point, Numbers... numbers) {
    log_numbers(point, static_cast<int32_t>(numbers)...);
}

}  // namespace adp
