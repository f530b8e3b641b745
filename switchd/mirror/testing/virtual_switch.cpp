// For tests: the virtual chip in the test's own process, behind the library's driver calls.
#include "switchd/mirror/testing/virtual_switch.h"

#include <adp/adp.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include "calls/call_table.h"
#include "calls/describe.h"
#include "calls/stub.h"
#include "platform/device_services.h"

namespace {

/** The answer of a driver call that never reached its chip. */
constexpr int32_t kLost = -1;

switchd::test::VirtualSwitch *present = nullptr;

}  // namespace

int64_t calls::forward_call(CallId id, const void *const *arguments) {
    if (present == nullptr) {
        throw std::logic_error("a driver call without a virtual switch");
    }
    return present->call(id, arguments);
}

extern "C" {

uintptr_t erps_event_queue = 0;

__attribute__((format(printf, 4, 5))) int32_t Log_logging_func(int32_t, int32_t, const char *, const char *, ...) {
    return 0;
}

}  // extern "C"

namespace switchd::test {

VirtualSwitch::VirtualSwitch()
    : before_{std::exchange(present, this)}, driver_{chip_, vdevice::driver::Board{}, [] {
                                                         return vdevice::chip::Time{};
                                                     }} {
    begin_new_process();
}

VirtualSwitch::~VirtualSwitch() {
    present = before_;
}

void VirtualSwitch::learn(uint64_t mac, uint16_t vid, uint32_t user_port) {
    const int port = chip_port_of(user_port);
    chip_.macs().learn(vdevice::chip::Mac{mac}, vid, port, {}, chip_.trunk_of(port));
}

int64_t VirtualSwitch::call(calls::CallId id, const void *const *arguments) {
    const bool fails = failing_ == count_ || failing_name_ == calls::call(id).name;
    ++count_;
    if (recording_) {
        trace_.push_back(calls::describe_call(id, arguments));
    }
    const int64_t result = fails ? kLost : vdevice::dispatch(driver_, id, arguments);
    if (watcher_) {
        watcher_();
    }
    return result;
}

void begin_new_process() {
    constexpr uint32_t kFirstPort = 4;
    std::fill_n(aiVlanStg, ADP_VLANS, int16_t{0});
    std::free(intf_to_phy_port);
    std::free(intf_map_trunk);
    adp_set_max_phy_port_num(ADP_USER_PORTS);
    adp_add_cpu_port(0, 0, 0, 0, 0);
    for (uint32_t port = 1; port <= ADP_USER_PORTS; ++port) {
        adp_add_phy_port(port, 0, 0, port + kFirstPort - 1, 0);
    }
    for (uint32_t group = 0; group < ADP_AGG_GROUPS; ++group) {
        agg_info[group] = {};
        agg_manage_intf[group] = 0;
        agg_standby_members[group][0] = agg_standby_members[group][1] = 0;
    }
}

}  // namespace switchd::test
