// Messages and where they go.
#include "core/messages.h"

#include <device_services.h>
#include <stdarg.h>
#include <stdio.h>

namespace adp {
namespace {

constexpr uint32_t kTraceBuffer = 256;  // of the place and of the text, each

}  // namespace

// The formats are constants, but as members of a message no literals to the compiler.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"

int32_t print(const Message &message, int32_t a, int32_t b) {
    return printf(message.format, message.place.function, message.place.line, a, b);
}

int32_t complain(const Message &message, int32_t a) {
    return fprintf(stderr, message.format, message.place.function, message.place.line, a);
}

int32_t report(const Message &message, int32_t result) {
    print(message, result);
    return result;
}

void log_numbers(const Message &message, int32_t a, int32_t b, int32_t c) {
    log_numbers(message, a, b, c, 0, 0);
}

void log_numbers(const Message &message, int32_t a, int32_t b, int32_t c, int32_t d, int32_t e) {
    const auto &[place, format] = message;
    if (is_tracing()) {
        trace(place, format, place.function, place.line, a, b, c, d, e);
    }
    Log_logging_func(kRuleLog.level, kRuleLog.module, kRuleLog.word, format, place.function, place.line, a, b, c, d, e);
}

void trace(const Place &place, const char *format, ...) {
    char name[kTraceBuffer] = {};
    char text[kTraceBuffer] = {};
    snprintf(name, sizeof name, "%s():%d", place.function, place.line);
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    sys_trace_add_log(name, text);
}

#pragma GCC diagnostic pop

}  // namespace adp
