// A line of the trace: its place and its text, each in a buffer of the trace's size.
#include "core/trace.h"

#include <device_services.h>
#include <stdarg.h>
#include <stdio.h>

namespace adp {
namespace {

constexpr uint32_t kTraceBuffer = 256;

}  // namespace

void add_trace(const char *function, int32_t line, const char *format, ...) {
    char place[kTraceBuffer] = {};
    char text[kTraceBuffer] = {};
    snprintf(place, sizeof place, "%s():%d", function, line);
    va_list arguments;
    va_start(arguments, format);
    // The formats are constants; as members of a table they are no literals to the compiler.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    vsnprintf(text, sizeof text, format, arguments);
#pragma GCC diagnostic pop
    va_end(arguments);
    sys_trace_add_log(place, text);
}

}  // namespace adp
