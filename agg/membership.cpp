// Members joining and leaving a group.
#include <adp/agg.h>
#include <adp/port.h>

#include "agg/election.h"
#include "agg/trunk.h"
#include "port/bitmap.h"

namespace adp {
namespace {

// A list is refused whole when an interface of it has no row in the port-to-group map, which is written afterwards.
bool has_rows(uint32_t count, const uint32_t *list) {
    for (uint32_t i = 0; i < count; ++i) {
        if (intf_map_trunk == nullptr || Intf(list[i]).index() > adp_max_phy_port_num) {
            return false;
        }
    }
    return true;
}

void map_to(Intf agg, uint32_t count, const uint32_t *list) {
    for (uint32_t i = 0; i < count; ++i) {
        intf_map_trunk[Intf(list[i]).index()] = agg.value();
    }
}

adp_status_t add_members(Intf agg, uint32_t count, const uint32_t *list) {
    const TrunkId trunk(agg);
    if (!trunk.is_valid() || !has_rows(count, list)) {
        return ADP_FAIL;
    }
    const adp_status_t result = hal_add_agg_member_ex(trunk, count, list, Commit::kYes, nullptr);
    if (result == ADP_OK) {
        elect_manage_intf(agg);
        map_to(agg, count, list);
    }
    return result;
}

// What a removal does after the trunk was programmed: the list form with an empty list does not elect, the bitmap does.
enum class EmptyList { kElects, kDoesNotElect };

adp_status_t del_members(Intf agg, uint32_t count, const uint32_t *list, EmptyList empty) {
    const TrunkId trunk(agg);
    if (!trunk.is_valid() || !has_rows(count, list)) {
        return ADP_FAIL;
    }
    const adp_status_t result = hal_del_agg_member_ex(trunk, count, list, Commit::kYes, nullptr);
    if (result == ADP_OK && (count != 0 || empty == EmptyList::kElects)) {
        elect_manage_intf(agg);
        map_to(kNoIntf, count, list);
    }
    return result;
}

/** The interfaces of a bitmap's first word. */
struct BitmapList {
    uint32_t count = 0;
    uint32_t intfs[kBitmapPositions] = {};

    explicit BitmapList(uint32_t word) {
        for (uint32_t n = 0; n < kBitmapPositions; ++n) {
            if (has_bit(&word, n)) {
                intfs[count++] = n;
            }
        }
    }
};

}  // namespace
}  // namespace adp

using adp::BitmapList;
using adp::Intf;

adp_status_t adp_add_agg_member(adp_intf_t agg_intf, uint32_t count, const adp_intf_t *list) {
    return count == 0 ? ADP_OK : adp::add_members(Intf(agg_intf), count, list);
}

adp_status_t adp_add_agg_member_by_map(adp_intf_t agg_intf, uint32_t word0, uint32_t word1) {
    const BitmapList list(word0);
    return word0 == 0 && word1 == 0 ? ADP_OK : adp::add_members(Intf(agg_intf), list.count, list.intfs);
}

adp_status_t adp_del_agg_member(adp_intf_t agg_intf, uint32_t count, const adp_intf_t *list) {
    return adp::del_members(Intf(agg_intf), count, list, adp::EmptyList::kDoesNotElect);
}

adp_status_t adp_del_agg_member_by_map(adp_intf_t agg_intf, uint32_t word0, uint32_t word1) {
    const BitmapList list(word0);
    return word0 == 0 && word1 == 0 ? ADP_OK
                                    : adp::del_members(Intf(agg_intf), list.count, list.intfs, adp::EmptyList::kElects);
}
