// Each interface's port VLAN id (PVID, IEEE 802.1Q).
#include <adp/vlan.h>
#include <netlink_api.h>

#include "core/members.h"
#include "core/resolve.h"

using adp::Intf;
using adp::PhyPort;

namespace {

int32_t set_pvid(PhyPort port, uint32_t vlan) {
    return user_port_untagged_vlan_set(0, 0, port.value(), adp::low16(vlan));
}

adp_status_t get_pvid(PhyPort port, uint32_t *vlan) {
    return adp::driver_status(user_port_untagged_vlan_get(0, 0, port.value(), vlan));
}

}  // namespace

adp_status_t adp_intf_pivd_set(adp_intf_t intf, uint32_t vlan) {
    // Each member's turn names the aggregation interface's own translation, which is none, not the member's.
    return adp::on_port_or_members(Intf(intf), adp::Members::kActive,
                                   [=](PhyPort) { return set_pvid(adp::phy_of(Intf(intf)), vlan); });
}

adp_status_t adp_intf_pivd_get(adp_intf_t intf, uint32_t *vlan) {
    return adp::by_kind(
        Intf(intf), [&](PhyPort port) { return get_pvid(port, vlan); },
        [&](Intf agg) -> adp_status_t {
            const Intf member = adp::answering_member_of(agg);
            return member == adp::kNoIntf ? ADP_E_NO_MEMBER : get_pvid(adp::phy_of(member), vlan);
        });
}
