// The field processor's log lines: to the device's log and, while tracing is on, to the trace.
#ifndef FP_LOG_H
#define FP_LOG_H

#include <device_services.h>

namespace adp {

inline constexpr int32_t kLogLevel = 7;
inline constexpr int32_t kLogModule = 18;
inline constexpr char kLogWord[] = "ACL";

/** A line's place, which is part of its text, and its format, which begins with "%s:[%05d]" for the place. */
struct LogPoint {
    const char *function;
    int32_t line;
    const char *format;
};

/** Adds what @p format makes of the arguments behind it to the trace. */
void add_trace(const char *function, int32_t line, const char *format, ...);

/** The logger does not take a list of arguments, so there is one of these for each count of numbers. */
template <typename... Numbers>
[[gnu::noinline]] void log_numbers(const LogPoint &point, Numbers... numbers) {
    if (sys_trace_get() != 0) {
        add_trace(point.function, point.line, point.format, point.function, point.line, numbers...);
    }
    Log_logging_func(kLogLevel, kLogModule, kLogWord, point.format, point.function, point.line, numbers...);
}

template <typename... Numbers>
void log(const LogPoint &point, Numbers... numbers) {
    log_numbers(point, static_cast<int32_t>(numbers)...);
}

}  // namespace adp

#endif
