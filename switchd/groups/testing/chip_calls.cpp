// The stubs of libadp's imported calls end here.
#include "switchd/groups/testing/chip_calls.h"

#include <utility>

#include "calls/stub.h"
#include "platform/device_services.h"

namespace {

vdevice::driver::Driver *current_driver = nullptr;
std::function<void()> call_watcher;

}  // namespace

void switchd::test::use_driver(vdevice::driver::Driver *driver) {
    current_driver = driver;
}

void switchd::test::watch_calls(std::function<void()> watcher) {
    call_watcher = std::move(watcher);
}

int64_t calls::forward_call(CallId id, const void *const *arguments) {
    const int64_t result = current_driver == nullptr ? -1 : vdevice::dispatch(*current_driver, id, arguments);
    if (call_watcher) {
        call_watcher();
    }
    return result;
}

extern "C" {

uintptr_t erps_event_queue = 0;

int32_t Log_logging_func(int32_t /*level*/, int32_t /*module*/, const char * /*word*/, const char * /*format*/, ...) {
    return 0;
}

}  // extern "C"
