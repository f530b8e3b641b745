// Each interface's port VLAN id (PVID, IEEE 802.1Q).
#include <adp/vlan.h>
#include <netlink_api.h>

#include "core/members.h"
#include "core/resolve.h"

using namespace adp;

adp_status_t adp_intf_pivd_set(adp_intf_t intf, uint32_t vid) {
    // Contract: for each member the group's own translation is set, which is none, not the member's.
    return on_port_or_members(Intf(intf), Members::kActive | Failure::kOwnOnPort, [=](PhyPort) {
        return user_port_untagged_vlan_set(0, 0, number(phy_of(Intf(intf))), low16(vid));
    });
}

adp_status_t adp_intf_pivd_get(adp_intf_t intf, uint32_t *vid) {
    return on_port_or_answering_member(Intf(intf), user_port_untagged_vlan_get, vid);
}
