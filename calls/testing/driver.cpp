// A driver library of a few calls, for the call trace's test.
#include <cstdarg>
#include <cstdio>

#include "calls/testing/libraries.h"
#include "platform/device_services.h"
#include "platform/netlink_api.h"

namespace {

constexpr uint32_t kReservedVid = 4095;
constexpr int32_t kRefused = -4;
char log_text[80];

}  // namespace

extern "C" {

int32_t user_vlan_create(uint32_t, uint32_t, uint32_t vid) {
    return vid == kReservedVid ? kRefused : 0;
}

int32_t user_port_enable_get(uint32_t, uint32_t, int32_t port, uint32_t *enable) {
    *enable = static_cast<uint32_t>(port);
    return 0;
}

__attribute__((format(printf, 4, 5))) int32_t Log_logging_func(int32_t, int32_t, const char *, const char *format,
                                                               ...) {
    va_list values;
    va_start(values, format);
    std::vsnprintf(log_text, sizeof log_text, format, values);
    va_end(values);
    return 0;
}

const char *last_log_text() {
    return log_text;
}

}  // extern "C"
