// A member's link change: the trunk is programmed again, the record stays.
#include <adp/agg.h>

#include "agg/election.h"
#include "agg/tables.h"
#include "agg/trunk.h"
#include "port/map.h"

namespace adp {
namespace {

// The first group whose record holds the port; a group that does not exist when there is none.
Intf find_group_with(PhyPort port) {
    for (uint32_t group = 1; group <= ADP_AGG_GROUPS; ++group) {
        const adp_agg_record_t &record = agg_info[group - 1];
        for (int32_t i = 0; i < record.count && i < ADP_AGG_MEMBER_BYTES; ++i) {
            if (port == PhyPort(record.ports[i])) {
                return Intf(ADP_AGG_INTF(group));
            }
        }
    }
    return kNoIntf;
}

adp_status_t link_up(Intf agg, Intf intf, uint32_t *changed) {
    const uint32_t list[] = {intf.value()};
    const adp_status_t result = hal_add_agg_member_ex(TrunkId(agg), 1, list, Commit::kNo, changed);
    // No interface is below an empty slot's 0: a link-up never fills it.
    if (intf.value() < manage_intf_of(agg).value()) {
        SET_AGG_MANAGE_INTF(agg.value(), intf.value());
    }
    return result;
}

adp_status_t link_down(Intf agg, Intf intf, uint32_t *changed) {
    const uint32_t list[] = {intf.value()};
    const adp_status_t result = hal_del_agg_member_ex(TrunkId(agg), 1, list, Commit::kNo, changed);
    if (intf == manage_intf_of(agg)) {
        elect_manage_intf(agg);
    }
    return result;
}

}  // namespace
}  // namespace adp

adp_status_t adp_agg_linkscan_handle(adp_intf_t intf, uint32_t is_up, uint32_t *changed) {
    const adp::Intf member(intf);
    const adp::Intf agg = adp::find_group_with(adp::phy_of(member));
    if (agg == adp::kNoIntf) {
        return ADP_OK;
    }
    return is_up != 0 ? adp::link_up(agg, member, changed) : adp::link_down(agg, member, changed);
}
