// Members joining and leaving a group.
#include <adp/agg.h>
#include <adp/port.h>

#include "agg/election.h"
#include "agg/trunk.h"
#include "core/bitmap.h"

namespace adp {
namespace {

// A list with an interface outside the port-to-group map is refused, since the map is written afterwards.
bool has_rows(uint32_t count, const uint32_t *list) {
    for (uint32_t i = 0; i < count; ++i) {
        if (intf_map_trunk == nullptr || index_of(Intf(list[i])) > adp_max_phy_port_num) {
            return false;
        }
    }
    return true;
}

void map_to(Intf agg, uint32_t count, const uint32_t *list) {
    for (uint32_t i = 0; i < count; ++i) {
        intf_map_trunk[index_of(Intf(list[i]))] = number(agg);
    }
}

using Worker = decltype(&hal_add_agg_member_ex);

// Contract: the removal of an empty list elects no manager, everything else does.
enum class EmptyList { kElects, kDoesNotElect };

/** @p mapped_to is the group that the listed interfaces have afterwards, or none. */
adp_status_t change_members(Worker worker, Intf agg, uint32_t count, const uint32_t *list, Intf mapped_to,
                            EmptyList empty = EmptyList::kElects) {
    const TrunkId trunk = trunk_of(agg);
    if (!exists(trunk) || !has_rows(count, list)) {
        return ADP_FAIL;
    }
    const adp_status_t result = worker(trunk, count, list, Commit::kYes, nullptr);
    if (result == ADP_OK && (count != 0 || empty == EmptyList::kElects)) {
        elect_manage_intf(agg);
        map_to(mapped_to, count, list);
    }
    return result;
}

/** The same with the interfaces of a bitmap's first word. */
adp_status_t change_members_by_map(Worker worker, Intf agg, uint32_t word0, uint32_t word1, Intf mapped_to) {
    if (word0 == 0 && word1 == 0) {
        return ADP_OK;
    }
    uint32_t count = 0;
    uint32_t intfs[kBitmapPositions] = {};
    for (uint32_t n = 0; n < kBitmapPositions; ++n) {
        if ((word0 >> n & 1) != 0) {
            intfs[count++] = n;
        }
    }
    return change_members(worker, agg, count, intfs, mapped_to);
}

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t adp_add_agg_member(adp_intf_t agg_intf, uint32_t count, const adp_intf_t *members) {
    return count == 0 ? ADP_OK : change_members(hal_add_agg_member_ex, Intf(agg_intf), count, members, Intf(agg_intf));
}

adp_status_t adp_add_agg_member_by_map(adp_intf_t agg_intf, uint32_t word0, uint32_t word1) {
    return change_members_by_map(hal_add_agg_member_ex, Intf(agg_intf), word0, word1, Intf(agg_intf));
}

adp_status_t adp_del_agg_member(adp_intf_t agg_intf, uint32_t count, const adp_intf_t *members) {
    return change_members(hal_del_agg_member_ex, Intf(agg_intf), count, members, kNoIntf, EmptyList::kDoesNotElect);
}

adp_status_t adp_del_agg_member_by_map(adp_intf_t agg_intf, uint32_t word0, uint32_t word1) {
    return change_members_by_map(hal_del_agg_member_ex, Intf(agg_intf), word0, word1, kNoIntf);
}
