// Member lists: active members from the record of a group, configured members from its bitmap.
#include "core/members.h"

#include "core/bitmap.h"

namespace adp {
namespace {

adp_status_t refuse_group(uint32_t max, uint32_t *count, uint32_t *list) {
    *count = 0;
    for (uint32_t slot = 0; slot < max && slot < ADP_MEMBER_LIST_SLOTS; ++slot) {
        list[slot] = 0;
    }
    return ADP_FAIL;
}

// As the walk over members_of(), but each member is looked up when the walk reaches it: a look-up is a pass over the
// map, and some walks end early.
int32_t first_failure_of_active(const adp_agg_record_t &record, PortStep step) {
    const auto count = static_cast<uint32_t>(record.count);
    for (uint32_t slot = 0; count <= ADP_AGG_ACTIVE_MAX && slot < count; ++slot) {
        const Intf member = intf_of(PhyPort(record.ports[slot]));
        const int32_t result = member == kNoIntf ? 0 : step(phy_of(member));
        if (result != 0) {
            return result;
        }
    }
    return 0;
}

// A template, so that the step for ports is called directly.
template <typename Step>
int32_t walk(const MemberList &members, Step step) {
    for (uint32_t slot = 0; slot < members.counted_slots(); ++slot) {
        const int32_t result = members.slots[slot] == 0 ? 0 : step(Intf(members.slots[slot]));
        if (result != 0) {
            return result;
        }
    }
    return 0;
}

}  // namespace

adp_status_t list_active(Intf agg, uint32_t max, uint32_t *count, uint32_t *list) {
    const TrunkId trunk = trunk_of(agg);
    if (!exists(trunk)) {
        return refuse_group(max, count, list);
    }
    const adp_agg_record_t &record = agg_info[number(trunk)];
    *count = static_cast<uint32_t>(record.count);
    // The tables are exported and writable: the count may be more than a record holds.
    if (max < *count || *count > ADP_AGG_MEMBER_BYTES) {
        return ADP_FAIL;
    }
    for (uint32_t member = 0; member < *count; ++member) {
        list[member] = number(intf_of(PhyPort(record.ports[member])));
    }
    return ADP_OK;
}

adp_status_t list_configured(Intf agg, uint32_t max, uint32_t *count, uint32_t *list) {
    const TrunkId trunk = trunk_of(agg);
    if (!exists(trunk)) {
        return refuse_group(max, count, list);
    }
    // Contract: the count of active members must fit even if the bitmap is read.
    if (max < static_cast<uint32_t>(agg_info[number(trunk)].count)) {
        return ADP_FAIL;
    }
    const uint32_t *configured = agg_standby_members[number(trunk)];
    if (configured[0] == 0 && configured[1] == 0) {
        return list_active(agg, max, count, list);
    }
    uint32_t listed = 0;
    for (uint32_t n = 0; n < kBitmapPositions; ++n) {
        if (has_bit(configured, n)) {
            if (listed >= max) {
                return ADP_FAIL;
            }
            list[listed++] = n;
        }
    }
    *count = listed;
    return ADP_OK;
}

MemberList members_of(Intf agg, Members which) {
    MemberList members;
    if (which == Members::kActive) {
        list_active(agg, ADP_AGG_ACTIVE_MAX, &members.count, members.slots);
    } else {
        list_configured(agg, ADP_MEMBER_LIST_SLOTS, &members.count, members.slots);
    }
    return members;
}

int32_t first_failure(const MemberList &members, MemberStep step) {
    return walk(members, step);
}

int32_t first_failure(Intf agg, Members which, PortStep step) {
    if (which == Members::kActive) {
        return first_failure_of_active(agg_info[number(trunk_of(agg))], step);
    }
    return walk(members_of(agg, which), [=](Intf member) { return step(phy_of(member)); });
}

}  // namespace adp

using namespace adp;

adp_status_t adp_get_agg_group(adp_intf_t agg_intf, uint32_t max, uint32_t *count, adp_intf_t *members) {
    return list_active(Intf(agg_intf), max, count, members);
}

adp_status_t GET_AGG_GROUP(adp_intf_t agg_intf, uint32_t *count, adp_intf_t *members) {
    return list_active(Intf(agg_intf), ADP_AGG_ACTIVE_MAX, count, members);
}

adp_status_t adp_get_agg_config_group(adp_intf_t agg_intf, uint32_t max, uint32_t *count, adp_intf_t *members) {
    return list_configured(Intf(agg_intf), max, count, members);
}

adp_status_t GET_AGG_CONFIG_GROUP(adp_intf_t agg_intf, uint32_t *count, adp_intf_t *members) {
    return list_configured(Intf(agg_intf), ADP_MEMBER_LIST_SLOTS, count, members);
}

adp_status_t adp_get_agg_group_by_map(adp_intf_t agg_intf, uint32_t bitmap[2]) {
    MemberList members;
    const adp_status_t status = list_active(Intf(agg_intf), ADP_AGG_ACTIVE_MAX, &members.count, members.slots);
    if (status != ADP_OK && exists(trunk_of(Intf(agg_intf)))) {
        return status;
    }
    // Contract: all slots are examined, whatever the count.
    uint32_t result[2] = {};
    for (uint32_t slot = 0; slot < ADP_AGG_ACTIVE_MAX; ++slot) {
        if (members.slots[slot] != 0) {
            set_bit_inside(result, members.slots[slot]);
        }
    }
    bitmap[0] = result[0];
    bitmap[1] = result[1];
    return status;
}
