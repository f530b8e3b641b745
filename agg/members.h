// Member lists of an aggregation interface and the walks over them, each named after its policy.
#ifndef AGG_MEMBERS_H
#define AGG_MEMBERS_H

#include <adp/agg.h>

#include "port/map.h"
#include "port/number.h"

namespace adp {

/**
 * A list of members: count of them as reported, and the slots, 0 for empty ones. It starts zeroed because a reader
 * that finds too many members reports their number and leaves the slots alone.
 */
struct MemberList {
    uint32_t count = 0;
    uint32_t slots[ADP_MEMBER_LIST_SLOTS] = {};

    /** Slots that a walk bounded by the count visits. */
    uint32_t counted_slots() const { return count < ADP_MEMBER_LIST_SLOTS ? count : ADP_MEMBER_LIST_SLOTS; }
};

/** The readers behind adp_get_agg_group() and adp_get_agg_config_group(). */
adp_status_t list_active(Intf agg, uint32_t max, uint32_t *count, uint32_t *list);
adp_status_t list_configured(Intf agg, uint32_t max, uint32_t *count, uint32_t *list);

/** The active members; the status is dropped, so nine members and more are as many empty slots. */
inline MemberList active_members(Intf agg) {
    MemberList members;
    list_active(agg, ADP_AGG_ACTIVE_MAX, &members.count, members.slots);
    return members;
}

/** The configured members; the status is dropped, so a bitmap of 27 members counts none. */
inline MemberList configured_members(Intf agg) {
    MemberList members;
    list_configured(agg, ADP_MEMBER_LIST_SLOTS, &members.count, members.slots);
    return members;
}

/** Applies step(member) to the non-empty ones of the first @p slots slots and stops at the first failure, its result.
 */
template <typename Step>
int32_t until_first_failure_in_slots(const MemberList &members, uint32_t slots, Step step) {
    for (uint32_t slot = 0; slot < slots; ++slot) {
        if (members.slots[slot] == 0) {
            continue;
        }
        const int32_t result = step(Intf(members.slots[slot]));
        if (result != 0) {
            return result;
        }
    }
    return 0;
}

/**
 * Applies step(member) to the non-empty ones of the first count slots, empty ones counted, and stops at the first
 * failure with the step's own result.
 */
template <typename Step>
int32_t until_first_failure_own_result(const MemberList &members, Step step) {
    return until_first_failure_in_slots(members, members.counted_slots(), step);
}

/** The same walk, which answers a failure with ADP_E_DRIVER. */
template <typename Step>
adp_status_t until_first_failure(const MemberList &members, Step step) {
    return until_first_failure_own_result(members, step) == 0 ? ADP_OK : ADP_E_DRIVER;
}

/**
 * Applies step(member) to all non-empty ones of the first count slots, whatever they answer; gives the last one's
 * result, and @p none when there is none.
 */
template <typename Step>
int32_t every_member_last_result(const MemberList &members, int32_t none, Step step) {
    int32_t last = none;
    until_first_failure_own_result(members, [&](Intf member) {
        last = step(member);
        return 0;
    });
    return last;
}

}  // namespace adp

#endif
