// The call trace: stubs in the executable that forward each call to the library that defines it.
#include "calls/call_trace.h"

#include <dlfcn.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <utility>

#include "calls/call_table.h"
#include "calls/describe.h"
#include "calls/invoke.h"
#include "calls/stub.h"
#include "platform/device_services.h"

// The stubs are part of this object, so that the linker takes all of them, whatever the order of the libraries.
#include "generated/device_services_stubs.cpp"  // NOLINT(bugprone-suspicious-include)
#include "generated/netlink_api_stubs.cpp"      // NOLINT(bugprone-suspicious-include)

namespace call_trace {

bool enabled = false;
std::string_view (*name_of)(int64_t result) = nullptr;

namespace {

constexpr size_t kLogTextSize = 4096;
constexpr int32_t kNoSuchFunction = -1;

std::mutex mutex;
std::vector<std::string> lines;
std::optional<Failure> last_failure;

void add(std::string line) {
    const std::lock_guard guard(mutex);
    lines.push_back(std::move(line));
}

/** The next definition after the executable's own, or null. */
void *real_function(CallId id) {
    static std::array<void *, calls::kCallCount> functions{};
    const std::lock_guard guard(mutex);
    void *&function = functions[static_cast<size_t>(id)];
    if (function == nullptr) {
        function = dlsym(RTLD_NEXT, calls::call(id).name);
        if (function == nullptr) {
            std::fprintf(stderr, "call trace: no library defines %s, so it fails.\n", calls::call(id).name);
        }
    }
    return function;
}

int64_t hand_on(CallId id, const void *const *arguments) {
    void *function = real_function(id);
    if (function == nullptr) {
        return calls::call(id).result == calls::Result::kText ? 0 : kNoSuchFunction;
    }
    return calls::call_function(function, id, arguments);
}

void remember_failure(CallId id, const void *const *arguments, int64_t result) {
    const calls::Call &call = calls::call(id);
    Failure failure{call.name, std::nullopt, result};
    if (const auto port = calls::find_param(call, "port"); port && !call.params[*port].is_pointer()) {
        failure.port = calls::load(call.params[*port].element.kind, arguments[*port]);
    }
    const std::lock_guard guard(mutex);
    last_failure = failure;
}

int64_t make_call(CallId id, const void *const *arguments) {
    const int64_t result = hand_on(id, arguments);
    if (result != 0 && calls::call(id).result == calls::Result::kI32) {
        remember_failure(id, arguments, result);
    }
    return result;
}

std::string_view known_name(CallId id, int64_t result) {
    return name_of == nullptr || calls::call(id).result != calls::Result::kI32 ? std::string_view() : name_of(result);
}

}  // namespace

std::vector<std::string> take() {
    const std::lock_guard guard(mutex);
    return std::exchange(lines, {});
}

std::optional<Failure> take_failure() {
    const std::lock_guard guard(mutex);
    return std::exchange(last_failure, std::nullopt);
}

}  // namespace call_trace

int64_t calls::forward_call(CallId id, const void *const *arguments) {
    if (!call_trace::enabled) {
        return call_trace::make_call(id, arguments);
    }
    // The arguments are described before the call, which may overwrite them.
    std::string line = describe_call(id, arguments);
    const int64_t result = call_trace::make_call(id, arguments);
    call_trace::add(std::move(line) + " -> " +
                    describe_result(id, arguments, result, call_trace::known_name(id, result)));
    return result;
}

extern "C" __attribute__((format(printf, 4, 5))) int32_t Log_logging_func(int32_t level, int32_t module,
                                                                          const char *word, const char *format, ...) {
    char text[call_trace::kLogTextSize] = "";
    va_list values;
    va_start(values, format);
    std::vsnprintf(text, sizeof text, format, values);
    va_end(values);
    void *function = call_trace::real_function(CallId::Log_logging_func);
    const int32_t result =
        function == nullptr ? call_trace::kNoSuchFunction
                            : reinterpret_cast<decltype(&Log_logging_func)>(function)(level, module, word, "%s", text);
    if (call_trace::enabled) {
        call_trace::add(calls::describe_log(level, module, word, format, text) + " -> " + std::to_string(result));
    }
    return result;
}
