// Frame counters, and frames that are trapped to the CPU.
#include "platform/netlink_api.h"
#include "tests/differential/reference/tables.h"

namespace reference {

adp_status_t adp_get_port_stat(adp_intf_t intf, uint32_t type, uint64_t *out) {
    if (is_user_port(intf)) {
        return or_102(user_port_packetstat_get(0, 0, adp_intf_2_phy_id(intf), type, out));
    }
    if (!is_agg(intf)) {
        return 201;
    }
    if (!is_group(intf)) {
        return -1;
    }
    uint64_t sum = 0;
    const adp_status_t status = each_member(active_members(intf), [&](int32_t port) {
        uint64_t one = 0;
        const int32_t result = user_port_packetstat_get(0, 0, port, type, &one);
        sum += one;
        return result;
    });
    if (status == 0) {
        *out = sum;
    }
    return status;
}

adp_status_t adp_clr_port_stat(adp_intf_t intf) {
    const auto clear = [](int32_t port) { return or_102(user_port_packetstat_clear(0, 0, port)); };
    if (is_user_port(intf)) {
        return clear(adp_intf_2_phy_id(intf));
    }
    if (!is_agg(intf)) {
        return 201;
    }
    return is_group(intf) ? each_member(active_members(intf), clear) : -1;
}

adp_status_t adp_set_trap_lacp_packet(uint32_t value, uint32_t /*unused*/, uint32_t /*unused2*/, adp_word_t option) {
    return user_trunk_trap_lacp(0, 0, value, option);
}

adp_status_t adp_set_trap_eoam_packet(uint32_t value, uint32_t /*unused*/, uint32_t /*unused2*/, adp_word_t option) {
    return user_eoam_trap_set(0, 0, value, option);
}

}  // namespace reference
