// The device's services. Calls that work on the device go to the daemon; calls that need only their arguments are
// carried out here.
#include <stdint.h>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "calls/stub.h"
#include "platform/device_services.h"
#include "vdevice/remote/library.h"

const char *vdevice_library_name() {
    return "libdevice_services";
}

namespace {

constexpr size_t kLogTextSize = 4096;
constexpr uintptr_t kRingProtectionQueue = 1;

/** The address as aa:bb:cc:dd:ee:ff, in a buffer of the calling thread. */
const char *mac_text(const uint8_t *mac) {
    static thread_local char text[sizeof "aa:bb:cc:dd:ee:ff"];
    if (mac == nullptr) {
        return nullptr;
    }
    std::snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1], mac[2], mac[3], mac[4], mac[5]);
    return text;
}

}  // namespace

int64_t calls::forward_call(CallId id, const void *const *arguments) {
    if (id == CallId::onu_mac2str) {
        return static_cast<int64_t>(
            reinterpret_cast<intptr_t>(mac_text(*static_cast<const uint8_t *const *>(arguments[0]))));
    }
    return vdevice::remote::library_client().call(id, arguments);
}

extern "C" {

uintptr_t erps_event_queue = kRingProtectionQueue;

__attribute__((format(printf, 4, 5))) int32_t Log_logging_func(int32_t level, int32_t module, const char *word,
                                                               const char *format, ...) {
    char buffer[kLogTextSize] = "";
    va_list values;
    va_start(values, format);
    std::vsnprintf(buffer, sizeof buffer, format, values);
    va_end(values);
    if (secure_getenv("VDEVICE_LOG_STDERR") != nullptr) {
        std::fprintf(stderr, "%d %s: %s\n", level, word == nullptr ? "" : word, buffer);
    }
    const char *text = buffer;
    const void *const arguments[] = {&level, &module, &word, &text};
    return vdevice::remote::library_client().call(calls::CallId::Log_logging_func, arguments);
}

}  // extern "C"
