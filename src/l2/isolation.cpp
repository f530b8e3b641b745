// Port isolation: the user ports that a port may send to. On a group it is written to all configured members and read
// from the manager.
#include <adp/l2.h>
#include <netlink_api.h>

#include "core/bitmap.h"
#include "core/members.h"
#include "core/resolve.h"

using namespace adp;

adp_status_t hal_set_port_isolate(adp_intf_t intf, uint32_t word0, uint32_t word1) {
    const adp_ports_t intfs = {word0, word1};
    const adp_port_set_t ports = phy_set_of(intfs);
    return on_port_or_members(Intf(intf), Members::kConfigured | Failure::kDriverError,
                              [&](PhyPort port) { return user_port_egress_set(0, 0, number(port), 0, ports); });
}

adp_status_t hal_get_port_isolate(adp_intf_t intf, uint32_t bitmap[2]) {
    adp_port_set_t ports = {};
    const adp_status_t status =
        on_port_or_manager(Intf(intf), Failure::kDriverError, user_port_egress_get, 0, ports.word);
    if (status != ADP_E_INTF_TYPE) {  // Contract: a failed read is translated too.
        const adp_port_set_t intfs = intf_set_of(ports.word);
        bitmap[0] = intfs.word[0];
        bitmap[1] = intfs.word[1];
    }
    return status;
}

adp_status_t adp_set_port_isolate(adp_intf_t intf, uint32_t word0, uint32_t word1) {
    return hal_set_port_isolate(intf, word0, word1);
}

adp_status_t adp_get_port_isolatestatus(adp_intf_t intf, uint32_t bitmap[2]) {
    return hal_get_port_isolate(intf, bitmap);
}
