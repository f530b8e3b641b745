// 802.1X: ports and stations that are authorised.
#include "platform/device_services.h"
#include "tests/differential/reference/l2.h"

namespace reference {

adp_status_t adp_set_port_dot1x_mode(int32_t intf, uint32_t mode, uint32_t /*unused*/, uint32_t learn) {
    const auto port = static_cast<uint32_t>(intf);
    mode = low8(mode);
    if (mode > 2) {
        return 403;
    }
    const int32_t learning = mode == 0 ? 8 : mode == 2 ? 0 : learn != 0 ? 8 : 5;
    if (adp_intf_learn_set(port, learning) != 0) {
        return 401;
    }
    return mode != 1 && set_mac_tbl_clear_by_port(port, 7, 3) != 0 ? 402 : 0;
}

adp_status_t adp_set_port_dot1x_authorized_state(int32_t intf, uint32_t state, uint32_t learn) {
    return adp_set_port_dot1x_mode(intf, low8(state) == 1 ? 1 : 0, 0, learn);
}

adp_status_t adp_set_mac_dot1x_authorized_state(adp_intf_t intf, uint32_t vid, const uint8_t *mac,
                                                uint32_t authorised) {
    const char *text = onu_mac2str(mac);
    if (text == nullptr) {
        return 403;
    }
    del_mac_addr(text, low16(vid), 1);
    if (low8(authorised) == 0) {
        return 0;
    }
    uint32_t target = intf;
    uint32_t group = 0;
    get_group_by_interface(intf, &group);
    if (group != 0) {
        const Members members = active_members(group);
        uint32_t smallest = members.slots[0];
        for (const uint32_t member : members.slots) {
            if (member != 0 && member < smallest) {
                smallest = member;
            }
        }
        target = smallest != 0 ? smallest : target;
    }
    return add_mac_static_addr(text, target, low16(vid), 1) == 0 ? 0 : 405;
}

}  // namespace reference
