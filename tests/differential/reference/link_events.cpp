// Link events, and when a port last changed.
#include <pthread.h>

#include <cstdio>
#include <ctime>

#include "platform/device_services.h"
#include "tests/differential/reference/tables.h"

namespace reference {

adp_status_t adp_set_port_last_change(adp_intf_t intf) {
    const auto stamp = [](uint32_t port) {
        if (port >= 1 && port < tables.last_change.size()) {
            tables.last_change[port] = static_cast<uint32_t>(time(nullptr));
        }
    };
    if (refusal_of(intf) != 0) {
        return refusal_of(intf);
    }
    if (is_user_port(intf)) {
        stamp(intf);
        return 0;
    }
    const Members members = configured_members(intf);
    for (uint32_t n = 0; n < members.count; ++n) {
        stamp(members.slots[n]);
    }
    return 0;
}

adp_status_t adp_get_port_last_change(int32_t intf, uint32_t *out) {
    *out = 0;
    auto port = static_cast<uint32_t>(intf);
    if (refusal_of(port) != 0) {
        return refusal_of(port);
    }
    if (is_agg(port)) {
        port = answering_member_of(port);
        if (port == 0) {
            return 203;
        }
    }
    *out = port < tables.last_change.size() ? tables.last_change[port] : 0;
    return 0;
}

int32_t adp_link_event_handle_cb(uint32_t unit, uint32_t port, int32_t status) {
    const auto intf = static_cast<uint32_t>(adp_phy_2_intf_id_ex(unit, port));
    uint32_t state = 0;
    adp_get_phy_port_attr(intf, 3, &state);
    if ((intf == 25 || intf == 26) && state == 0) {
        return 0;
    }
    return ::link_event_handle_cb(intf, status);
}

int32_t adp_link_event_fast_send_unicast_msg(uint32_t unit, uint32_t port, int32_t status) {
    const int32_t intf = adp_phy_2_intf_id_ex(unit, port);
    if (intf < 0 || intf > 26) {
        return -1;
    }
    adp_link_data_t &data = tables.link_data[static_cast<size_t>(intf)];
    data = {static_cast<uint16_t>(unit), static_cast<uint16_t>(port), static_cast<uint16_t>(intf),
            static_cast<uint16_t>(status)};
    const uintptr_t message[8] = {1, static_cast<uintptr_t>(pthread_self()), 1, 0, 0, 0,
                                  0, reinterpret_cast<uintptr_t>(&data)};
    const int32_t result = equeue_send_ucast(erps_event_queue, message, -1);
    if (result > 0) {
        return result;
    }
    return fprintf(stderr, "[%s:%d]Send link event message to ERPS FAILED!\n", "adp_link_event_fast_send_unicast_msg",
                   113);
}

int32_t adp_link_event_fast_send_unicast_msg_ex(int32_t intf, int32_t status) {
    const int32_t port = adp_intf_2_phy_id(static_cast<uint32_t>(intf));
    return adp_link_event_fast_send_unicast_msg(0, static_cast<uint32_t>(port), status);
}

}  // namespace reference
