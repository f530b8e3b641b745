// Link changes, sent to the device's handler and, without waiting, to the ring-protection process.
#include <adp/port.h>
#include <device_services.h>
#include <pthread.h>

#include "core/messages.h"
#include "core/port_map.h"
#include "port/attributes.h"

using namespace adp;

adp_link_data_t g_intf_link_data[ADP_USER_PORTS + 1];

namespace {

// Changes of the two 10-gigabit ports are not reported while they are disabled.
constexpr Intf kFirstUplink{25};
constexpr Intf kSecondUplink{26};

constexpr Message kSendFailed{{"adp_link_event_fast_send_unicast_msg", 113},
                              "[%s:%d]Send link event message to ERPS FAILED!\n"};

Intf intf_of_port(uint32_t port) {
    return intf_of(PhyPort(static_cast<int32_t>(port)));
}

bool post(const adp_link_data_t *data, int32_t *result) {
    const uintptr_t message[8] = {1, static_cast<uintptr_t>(pthread_self()), 1, 0, 0, 0,
                                  0, reinterpret_cast<uintptr_t>(data)};
    *result = equeue_send_ucast(erps_event_queue, message, DEVICE_WAIT_FOREVER);
    return *result > 0;
}

}  // namespace

int32_t adp_link_event_handle_cb(uint32_t, uint32_t port, int32_t status) {
    const Intf intf = intf_of_port(port);
    // A state that cannot be read counts as disabled.
    const bool is_enabled = attribute_or_zero(intf, ADP_ATTR_ADMIN_STATE) != 0;
    if (!is_enabled && (intf == kFirstUplink || intf == kSecondUplink)) {
        return 0;
    }
    return link_event_handle_cb(number(intf), status);
}

int32_t adp_link_event_fast_send_unicast_msg(uint32_t unit, uint32_t port, int32_t status) {
    const Intf intf = intf_of_port(port);
    if (number(intf) > ADP_USER_PORTS) {
        return ADP_FAIL;
    }
    adp_link_data_t &data = g_intf_link_data[number(intf)];
    data = {static_cast<uint16_t>(unit), static_cast<uint16_t>(port), static_cast<uint16_t>(number(intf)),
            static_cast<uint16_t>(status)};
    int32_t result = 0;
    if (post(&data, &result)) {
        return result;
    }
    return complain(kSendFailed);
}

int32_t adp_link_event_fast_send_unicast_msg_ex(int32_t intf, int32_t status) {
    const auto number = static_cast<uint32_t>(intf);
    return adp_link_event_fast_send_unicast_msg(static_cast<uint32_t>(adp_intf_2_slot_id(number)),
                                                static_cast<uint32_t>(adp_intf_2_phy_id(number)), status);
}
