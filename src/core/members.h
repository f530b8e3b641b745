// Member lists of an aggregation interface and the walks over them, each named after its policy.
#pragma once

#include <adp/agg.h>

#include "core/number.h"
#include "core/port_map.h"
#include "core/step.h"

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

/** Which of a group's members are meant. */
enum class Members { kActive, kConfigured };

/**
 * A group's members; the status of the reader is dropped, so nine active members and more are as many empty slots, and
 * a bitmap of 27 configured members counts none.
 */
MemberList members_of(Intf agg, Members which);

/** Applies the step to the members in the slots that are visited, empty ones left out, until one fails: its result. */
int32_t first_failure(const MemberList &members, MemberStep step);

/** The same for the members of a group that exists, as physical ports. */
int32_t first_failure(Intf agg, Members which, PortStep step);

/** The status of calls that report any driver failure as ADP_E_DRIVER. */
constexpr adp_status_t driver_status(int32_t result) {
    return result == 0 ? ADP_OK : ADP_E_DRIVER;
}

}  // namespace adp
