// Port isolation: the user ports that a port may send to. A group is written through all its configured members, but
// read through its management interface only.
#include <adp/l2.h>
#include <netlink_api.h>

#include "core/bitmap.h"
#include "core/members.h"
#include "core/resolve.h"

using adp::Intf;
using adp::PhyPort;

namespace {

adp_status_t read_isolation(PhyPort port, uint32_t *map) {
    adp_port_set_t ports = {};
    const int32_t result = user_port_egress_get(0, 0, port.value(), 0, ports.word);
    const adp_port_set_t intfs = adp::intf_set_of(ports.word);
    map[0] = intfs.word[0];
    map[1] = intfs.word[1];
    return adp::driver_status(result);
}

}  // namespace

adp_status_t hal_set_port_isolate(adp_intf_t intf, uint32_t word0, uint32_t word1) {
    const adp_ports_t intfs = {word0, word1};
    const adp_port_set_t ports = adp::phy_set_of(intfs);
    const auto write = [&](PhyPort port) {
        return adp::driver_status(user_port_egress_set(0, 0, port.value(), 0, ports));
    };
    return adp::on_port_or_members(Intf(intf), adp::Members::kConfigured, write);
}

adp_status_t hal_get_port_isolate(adp_intf_t intf, uint32_t map[2]) {
    if (Intf(intf).kind() == adp::IntfKind::kAggregation) {
        map[0] = map[1] = 0;  // what a group outside 1..8 leaves
    }
    const adp_status_t refusal = adp::refusal_of(Intf(intf));
    return refusal != ADP_OK ? refusal : read_isolation(PhyPort(adp::standing_port_number_of(Intf(intf))), map);
}

adp_status_t adp_set_port_isolate(adp_intf_t intf, uint32_t word0, uint32_t word1) {
    return hal_set_port_isolate(intf, word0, word1);
}

adp_status_t adp_get_port_isolatestatus(adp_intf_t intf, uint32_t map[2]) {
    return hal_get_port_isolate(intf, map);
}
