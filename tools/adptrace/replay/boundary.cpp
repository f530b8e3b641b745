// The stubs of all imported calls.
#include "tools/adptrace/replay/boundary.h"

#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <utility>

#include "calls/stub.h"
#include "platform/device_services.h"

// The stubs are part of this object, so that the linker takes all of them, whatever the order of the libraries.
#include "generated/device_services_stubs.cpp"  // NOLINT(bugprone-suspicious-include)
#include "generated/netlink_api_stubs.cpp"      // NOLINT(bugprone-suspicious-include)

namespace adptrace::replay {

namespace {

constexpr int64_t kNoAnswer = -1;
constexpr size_t kLogTextSize = 4096;

thread_local Boundary *t_boundary = nullptr;
std::atomic<Driver *> everyones_driver = nullptr;

int32_t report_to_boundary(const exported::Callback & /*callback*/, const void *const * /*arguments*/) {
    Boundary *const boundary = t_boundary;
    const At driver(nullptr);
    return boundary == nullptr ? 0 : boundary->callback();
}

}  // namespace

int64_t no_answer(calls::CallId id) {
    return calls::call(id).result == calls::Result::kText ? 0 : kNoAnswer;
}

At::At(Boundary *boundary) : before_(std::exchange(t_boundary, boundary)) {}

At::~At() {
    t_boundary = before_;
}

Boundary *boundary_of_thread() {
    return t_boundary;
}

void set_driver(Driver *driver) {
    everyones_driver = driver;
    exported::receive_events(report_to_boundary);
}

void set_event_queue(uintptr_t queue) {
    erps_event_queue = queue;
}

}  // namespace adptrace::replay

int64_t calls::forward_call(CallId id, const void *const *arguments) {
    using namespace adptrace::replay;
    Boundary *const boundary = boundary_of_thread();
    const At driver(nullptr);
    if (boundary != nullptr) {
        return boundary->imported_call(id, arguments);
    }
    Driver *const elsewhere = everyones_driver;
    return elsewhere == nullptr ? no_answer(id) : elsewhere->ask(id, arguments);
}

extern "C" {

// The services have one, too. Weak, since the address sanitizer takes two definitions of a number for a mistake.
__attribute__((weak)) uintptr_t erps_event_queue = 0;

__attribute__((format(printf, 4, 5))) int32_t Log_logging_func(int32_t level, int32_t module, const char *word,
                                                               const char *format, ...) {
    char buffer[adptrace::replay::kLogTextSize] = "";
    va_list values;
    va_start(values, format);
    std::vsnprintf(buffer, sizeof buffer, format, values);
    va_end(values);
    const char *text = buffer;
    const void *const arguments[] = {&level, &module, &word, &format, &text};
    return static_cast<int32_t>(calls::forward_call(CallId::Log_logging_func, arguments));
}

}  // extern "C"
