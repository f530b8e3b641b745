// A library that imports calls, for the call trace's test.
#include "calls/testing/libraries.h"
#include "platform/device_services.h"
#include "platform/netlink_api.h"

extern "C" {

int32_t library_makes_calls() {
    uint32_t enable = 0;
    user_vlan_create(0, 0, 100);
    user_vlan_create(0, 0, 4095);
    user_port_enable_get(0, 0, 5, &enable);
    return static_cast<int32_t>(enable);
}

int32_t library_logs(const char *text, int32_t number) {
    return Log_logging_func(5, 5, "UPDOWN", "interface %s %d, 100%%", text, number);
}

int32_t library_calls_what_is_missing() {
    return user_vlan_destroy(0, 0, 100);
}

}  // extern "C"
