// Messages of the library: a place and a format, for standard output, standard error, or the device's log and trace.
// Management software knows these texts, places included.
#pragma once

#include <device_services.h>
#include <stdint.h>

namespace adp {

/** Where a message says it comes from. */
struct Place {
    const char *function;
    int32_t line;
};

/** A message's place, and its format, which begins with a %s and a %d for the place and takes up to five numbers. */
struct Message {
    Place place;
    const char *format;
};

/** Level, module and first word of a line in the device's log. */
struct Channel {
    int32_t level;
    int32_t module;
    const char *word;
};

inline constexpr Channel kRuleLog{7, 18, "ACL"};
inline constexpr Channel kLinkLog{5, 5, "UPDOWN"};

// Numbers that a format does not ask for are ignored, as printf ignores them: so one function serves all messages.

/** On standard output; gives what printf() does. */
int32_t print(const Message &message, int32_t a = 0, int32_t b = 0);

/** On standard error; gives what fprintf() does. */
int32_t complain(const Message &message, int32_t a = 0);

/** To the rules' log and, while tracing is on, to the trace. */
void log_numbers(const Message &message, int32_t a = 0, int32_t b = 0, int32_t c = 0);
void log_numbers(const Message &message, int32_t a, int32_t b, int32_t c, int32_t d, int32_t e = 0);

template <typename... Numbers>
void log_rule(const Message &message, Numbers... numbers) {
    log_numbers(message, static_cast<int32_t>(numbers)...);
}

/** Whether the trace is on; asked before each line of it. */
inline bool is_tracing() {
    return sys_trace_get() != 0;
}

/** To the trace; for a text that does not name its place. */
void trace(const Place &place, const char *format, ...);

/** Prints the result of a failed driver call, and gives it back. */
int32_t report(const Message &message, int32_t result);

// The calls differ in what counts as failed.

inline int32_t report_if_negative(const Message &message, int32_t result) {
    return result < 0 ? report(message, result) : result;
}

inline int32_t report_if_not_zero(const Message &message, int32_t result) {
    return result != 0 ? report(message, result) : result;
}

}  // namespace adp
