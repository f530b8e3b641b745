// Log lines of the field processor.
#include "fp/log.h"

#include <device_services.h>

#include "core/trace.h"

namespace adp {
namespace {

constexpr int32_t kLogLevel = 7;
constexpr int32_t kLogModule = 18;
constexpr char kLogWord[] = "ACL";

}  // namespace

void log_numbers(const LogPoint &point, int32_t a, int32_t b, int32_t c, int32_t d, int32_t e) {
    if (sys_trace_get() != 0) {
        add_trace(point.function, point.line, point.format, point.function, point.line, a, b, c, d, e);
    }
    Log_logging_func(kLogLevel, kLogModule, kLogWord, point.format, point.function, point.line, a, b, c, d, e);
}

void log_numbers(const LogPoint &point, int32_t a, int32_t b, int32_t c) {
    log_numbers(point, a, b, c, 0, 0);
}

}  // namespace adp
