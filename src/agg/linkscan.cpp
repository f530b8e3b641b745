// Link changes of members: the trunk is programmed anew, the record stays.
#include <adp/agg.h>

#include "agg/election.h"
#include "agg/trunk.h"
#include "core/group_tables.h"
#include "core/port_map.h"

namespace adp {
namespace {

// The first group whose record has the port; kNoIntf if none has.
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

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t adp_agg_linkscan_handle(adp_intf_t intf, uint32_t is_up, uint32_t *changed) {
    const Intf agg = find_group_with(phy_of(Intf(intf)));
    if (agg == kNoIntf) {
        return ADP_OK;
    }
    const auto worker = is_up != 0 ? hal_add_agg_member_ex : hal_del_agg_member_ex;
    const adp_status_t result = worker(trunk_of(agg), 1, &intf, Commit::kNo, changed);
    const Intf manager = manager_of(agg);
    if (is_up == 0) {
        if (manager == Intf(intf)) {
            elect_manage_intf(agg);
        }
    } else if (intf < number(manager)) {
        // Contract: without a manager (0) no interface is lower, so a link-up does not elect one.
        SET_AGG_MANAGE_INTF(number(agg), intf);
    }
    return result;
}
