// A VLAN's ports as sets of interface numbers.
#include <adp/vlan.h>
#include <netlink_api.h>
#include <string.h>

#include "core/bitmap.h"
#include "core/number.h"

using namespace adp;

namespace {

void to_intfs(uint32_t *ports) {
    const adp_port_set_t intfs = intf_set_of(ports);
    memcpy(ports, intfs.word, sizeof intfs.word);
}

}  // namespace

adp_status_t adp_vlan_port_set(uint32_t vid, const adp_ports_t members, const adp_ports_t untagged) {
    const adp_port_set_t member_ports = phy_set_of(members);
    const adp_port_set_t untagged_ports = phy_set_of(untagged);
    return user_vlan_port_set(0, 0, low16(vid), member_ports.word, untagged_ports.word);
}

adp_status_t adp_vlan_port_get(uint32_t vid, adp_ports_t members, adp_ports_t untagged) {
    const int32_t result = user_vlan_port_get(0, 0, low16(vid), members, untagged);
    // Contract: the sets are translated after a failure too.
    to_intfs(members);
    to_intfs(untagged);
    return result;
}
