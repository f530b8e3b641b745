// Port counters, of a group summed over its members, and the traps of LACP and OAM frames.
#include <adp/agg.h>
#include <netlink_api.h>

#include "core/members.h"
#include "core/resolve.h"

using adp::Intf;
using adp::PhyPort;

namespace {

adp_status_t sum_over_members(Intf agg, uint32_t type, uint64_t *out) {
    uint64_t sum = 0;
    const adp_status_t status = adp::until_first_failure(agg, adp::Members::kActive, [&](PhyPort port) {
        uint64_t value = 0;
        const int32_t result = user_port_packetstat_get(0, 0, port.value(), type, &value);
        sum += value;
        return result;
    });
    if (status == ADP_OK) {
        *out = sum;
    }
    return status;
}

}  // namespace

adp_status_t adp_get_port_stat(adp_intf_t intf, uint32_t type, uint64_t *out) {
    return adp::by_kind(
        Intf(intf),
        [=](PhyPort port) { return adp::driver_status(user_port_packetstat_get(0, 0, port.value(), type, out)); },
        [=](Intf agg) { return sum_over_members(agg, type, out); });
}

adp_status_t adp_clr_port_stat(adp_intf_t intf) {
    return adp::on_port_or_members(Intf(intf), adp::Members::kActive, [](PhyPort port) {
        return adp::driver_status(user_port_packetstat_clear(0, 0, port.value()));
    });
}

adp_status_t adp_set_trap_lacp_packet(uint32_t value, uint32_t, uint32_t, adp_word_t option) {
    return user_trunk_trap_lacp(0, 0, value, option);
}

adp_status_t adp_set_trap_eoam_packet(uint32_t value, uint32_t, uint32_t, adp_word_t option) {
    return user_eoam_trap_set(0, 0, value, option);
}
