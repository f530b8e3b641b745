// Port counters, summed over the members of a group, and traps of LACP and OAM frames.
#include <adp/agg.h>
#include <netlink_api.h>

#include "core/members.h"
#include "core/resolve.h"

using namespace adp;

namespace {

adp_status_t sum_over_members(Intf agg, uint32_t type, uint64_t *out) {
    uint64_t sum = 0;
    const int32_t result = first_failure(agg, Members::kActive, [&](PhyPort port) {
        uint64_t value = 0;
        const int32_t member_result = user_port_packetstat_get(0, 0, number(port), type, &value);
        sum += value;
        return member_result;
    });
    if (result == 0) {
        *out = sum;
    }
    return driver_status(result);
}

}  // namespace

adp_status_t adp_get_port_stat(adp_intf_t intf, uint32_t type, uint64_t *value) {
    return by_kind(
        Intf(intf),
        [=](PhyPort port) { return driver_status(user_port_packetstat_get(0, 0, number(port), type, value)); },
        [=](Intf agg) { return sum_over_members(agg, type, value); });
}

adp_status_t adp_clr_port_stat(adp_intf_t intf) {
    return on_port_or_members(Intf(intf), Members::kActive | Failure::kDriverError,
                              [](PhyPort port) { return user_port_packetstat_clear(0, 0, number(port)); });
}

adp_status_t adp_set_trap_lacp_packet(uint32_t enable, uint32_t, uint32_t, adp_word_t option) {
    return user_trunk_trap_lacp(0, 0, enable, option);
}

adp_status_t adp_set_trap_eoam_packet(uint32_t enable, uint32_t, uint32_t, adp_word_t option) {
    return user_eoam_trap_set(0, 0, enable, option);
}
