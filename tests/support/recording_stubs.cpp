// What the recording driver defines by hand: forward_call(), the variadic logger, the queue word.
#include <cstdarg>
#include <cstdio>

#include "calls/describe.h"
#include "calls/stub.h"
#include "platform/device_services.h"
#include "tests/support/recording_driver.h"

namespace {

constexpr size_t kLogTextSize = 1024;

}  // namespace

int64_t calls::forward_call(CallId id, const void *const *arguments) {
    return recording::driver().answer(id, arguments, [&] { return describe_call(id, arguments); });
}

extern "C" {

uintptr_t erps_event_queue = 0;

__attribute__((format(printf, 4, 5))) int32_t Log_logging_func(int32_t level, int32_t module, const char *word,
                                                               const char *format, ...) {
    char text[kLogTextSize] = "";
    va_list values;
    va_start(values, format);
    std::vsnprintf(text, sizeof text, format, values);
    va_end(values);
    const void *const arguments[] = {&level, &module, &word, &format};
    const int64_t result = recording::driver().answer(calls::CallId::Log_logging_func, arguments, [&] {
        return calls::describe_log(level, module, word, format, text);
    });
    return static_cast<int32_t>(result);
}

}  // extern "C"
