// A line of the trace: its place and its text, each in a buffer of the trace's size.
#include "fp/log.h"

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
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    sys_trace_add_log(place, text);
}

}  // namespace adp
