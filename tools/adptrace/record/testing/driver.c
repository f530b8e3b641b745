// The driver and the services of the test program: it remembers modes, calls back, and breaks down when asked to.
#include "tools/adptrace/record/testing/driver.h"

#include <adp/pkt.h>
#include <errno.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <unistd.h>

#include "platform/device_services.h"
#include "platform/netlink_api.h"

enum { kPorts = 64 };

static uint32_t modes[kPorts];

int32_t user_port_dtag_mode_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t mode) {
    (void)zero;
    const uint32_t info[4] = {0, 0, 0, 1};
    switch (mode) {
        case DRIVER_CRASHES:
            return raise(SIGSEGV);
        case DRIVER_WAITS:
            return pause();
        case DRIVER_CALLS_BACK:
            return linkscan_handle_cb(unit, (uint32_t)port, info);
        case DRIVER_SETS_ERRNO:
            errno = DRIVER_ERRNO;
            return -1;
        default:
            modes[port % kPorts] = mode;
            return 0;
    }
}

int32_t user_port_dtag_mode_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *mode) {
    (void)unit;
    (void)zero;
    *mode = modes[port % kPorts];
    return 0;
}

static char logged[256];

__attribute__((format(printf, 4, 5))) int32_t Log_logging_func(int32_t level, int32_t module, const char *word,
                                                               const char *format, ...) {
    (void)word;
    va_list values;
    va_start(values, format);
    vsnprintf(logged, sizeof logged, format, values);
    va_end(values);
    return level + module;
}

const char *driver_logged(void) {
    return logged;
}
