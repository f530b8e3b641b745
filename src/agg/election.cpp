// Election of a group's management interface.
#include "agg/election.h"

#include <adp/port.h>

#include "core/group_tables.h"
#include "core/members.h"
#include "port/attributes.h"

namespace adp {
namespace {

MemberList candidates(Intf agg) {
    const bool has_active = agg_info[number(trunk_of(agg))].count != 0;
    return members_of(agg, has_active ? Members::kActive : Members::kConfigured);
}

}  // namespace

void elect_manage_intf(Intf agg) {
    const MemberList members = candidates(agg);
    uint32_t largest = 0;
    uint32_t smallest_linked = 0;  // 0: none yet
    // Contract: empty slots are candidates too, and the status of the read is ignored.
    for (uint32_t slot = 0; slot < members.counted_slots(); ++slot) {
        const uint32_t intf = members.slots[slot];
        const bool is_linked = attribute_or_zero(Intf(intf), ADP_ATTR_FIBRE_LINK) != 0;
        if (intf > largest) {
            largest = intf;
        }
        if (is_linked && (smallest_linked == 0 || intf < smallest_linked)) {
            smallest_linked = intf;
        }
    }
    SET_AGG_MANAGE_INTF(number(agg), smallest_linked != 0 ? smallest_linked : largest);
}

}  // namespace adp

using namespace adp;

adp_status_t ANEW_SELECT_MANAGE_INTF(adp_intf_t agg_intf) {
    const Intf agg{agg_intf};
    if (!exists(trunk_of(agg))) {
        return ADP_FAIL;
    }
    elect_manage_intf(agg);
    return ADP_OK;
}
