// Spanning-tree groups of VLANs, and port states in them.
#include <adp/agg.h>
#include <adp/stg.h>
#include <netlink_api.h>
#include <stdio.h>

#include "core/members.h"
#include "core/messages.h"

int16_t aiVlanStg[ADP_VLANS];

namespace adp {
namespace {

/** The group that cannot be destroyed. */
constexpr int32_t kDefaultGroup = 0;

int32_t set_state(int32_t stg, Intf intf, uint32_t state) {
    return user_stg_stp_set(0, 0, stg, number(phy_of(intf)), state);
}

void release_ports(int32_t stg) {
    for (uint32_t port = 1; port <= ADP_USER_PORTS; ++port) {
        set_state(stg, Intf(port), ADP_STG_STATE_RELEASED);
    }
}

/** Contract: unlike other walks this one skips no empty slot, and it reports the member that failed. */
adp_status_t set_states_of_members(int32_t stg, Intf agg, uint32_t state) {
    MemberList members;
    const adp_status_t listed = list_active(agg, ADP_AGG_ACTIVE_MAX, &members.count, members.slots);
    if (listed != ADP_OK) {
        return listed;
    }
    for (uint32_t i = 0; i < members.count; ++i) {
        const int32_t result = set_state(stg, Intf(members.slots[i]), state);
        if (result != 0) {
            printf("%s set tMstId %d tIntfId %d atMemList[%d] %d fail. \n", "adp_set_port_mstp_state", stg,
                   static_cast<int>(number(agg)), static_cast<int>(i), static_cast<int>(members.slots[i]));
            return result;
        }
    }
    return ADP_OK;
}

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t adp_create_mstp_instance(int32_t stg) {
    return user_stg_create_id(0, 0, stg);
}

adp_status_t adp_delete_mstp_instance(int32_t stg) {
    if (stg == kDefaultGroup) {
        return ADP_OK;
    }
    const int32_t result = user_stg_destroy(0, 0, stg);
    if (result >= 0) {
        adp_del_msti_all_member(stg);
    }
    return result;
}

// Contract: a VLAN that is in the group already is removed and added again, which releases the ports of the group.
adp_status_t adp_add_msti_member(int32_t stg, uint32_t vid) {
    vid = low16(vid);
    if (vid >= ADP_VLANS) {
        return ADP_FAIL;
    }
    const int16_t old = aiVlanStg[vid];
    if (old > kDefaultGroup) {
        adp_del_msti_member(old, vid);
    }
    aiVlanStg[vid] = static_cast<int16_t>(stg);
    return user_stg_vlan_add(0, 0, stg, vid);
}

adp_status_t adp_del_msti_member(int32_t stg, uint32_t vid) {
    vid = low16(vid);
    if (vid >= ADP_VLANS) {
        return ADP_FAIL;
    }
    aiVlanStg[vid] = kDefaultGroup;
    release_ports(stg);
    return user_stg_vlan_remove(0, 0, stg, vid);
}

adp_status_t adp_del_msti_all_member(int32_t stg) {
    for (uint32_t vid = 0; vid < ADP_VLANS; ++vid) {
        if (aiVlanStg[vid] != kDefaultGroup && aiVlanStg[vid] == stg) {
            aiVlanStg[vid] = kDefaultGroup;
            user_stg_vlan_remove(0, 0, stg, vid);
        }
    }
    release_ports(stg);
    return ADP_OK;
}

adp_status_t adp_set_port_mstp_state(int32_t stg, adp_intf_t intf, uint32_t state) {
    switch (kind_of(Intf(intf))) {
        case IntfKind::kUserPort:
            return set_state(stg, Intf(intf), state);
        case IntfKind::kAggregation:
            return set_states_of_members(stg, Intf(intf), state);
        default:
            return ADP_FAIL;
    }
}

adp_status_t adp_stg_stp_get(int32_t stg, adp_intf_t intf, uint32_t *state) {
    static constexpr Message kFailed{{"adp_stg_stp_get", __LINE__},
                                     "%s %d: get max support stg number failed. ret=%d\n"};
    return report_if_negative(kFailed, user_stg_stp_get(0, 0, stg, number(phy_of(Intf(intf))), state));
}
