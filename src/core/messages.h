// What the library says: a message is a place and a format, and goes to standard output, to standard error, or to the
// device's log and trace. Management software and its tests know these texts, places included.
#pragma once

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

/** A line of the device's log: its level, its module and its first word. */
struct Channel {
    int32_t level;
    int32_t module;
    const char *word;
};

inline constexpr Channel kRuleLog{7, 18, "ACL"};
inline constexpr Channel kLinkLog{5, 5, "UPDOWN"};

// A format ignores the numbers after those that it asks for, as printf does: so one function serves all messages.

/** On standard output; gives what printf() does. */
int32_t print(const Message &message, int32_t a = 0, int32_t b = 0);

/** On standard error; gives what fprintf() does. */
int32_t complain(const Message &message, int32_t a = 0);

/** To the log and, while tracing is on, to the trace. */
void log_numbers(const Channel &channel, const Message &message, int32_t a = 0, int32_t b = 0);
void log_numbers(const Channel &channel, const Message &message, int32_t a, int32_t b, int32_t c, int32_t d = 0,
                 int32_t e = 0);

template <typename... Numbers>
void log(const Channel &channel, const Message &message, Numbers... numbers) {
    log_numbers(channel, message, static_cast<int32_t>(numbers)...);
}

/** To the trace, if it is on: for a text that does not name its place. */
void trace(const Place &place, const char *format, ...);

/** The result, after a message if it is negative, or not 0. The calls differ in which of the two counts as failed. */
inline int32_t print_if_negative(const Message &message, int32_t result) {
    if (result < 0) {
        print(message, result);
    }
    return result;
}

inline int32_t print_if_failed(const Message &message, int32_t result) {
    if (result != 0) {
        print(message, result);
    }
    return result;
}

}  // namespace adp
