// Member lists of a group, and the walk over them.
#pragma once

#include <adp/agg.h>

#include "core/number.h"
#include "core/port_map.h"
#include "core/step.h"

namespace adp {

/**
 * Members of a group: their count, and slots, 0 for an empty one. The slots start at zero because a reader that finds
 * too many members reports the count and leaves the slots alone.
 */
struct MemberList {
    uint32_t count = 0;
    uint32_t slots[ADP_MEMBER_LIST_SLOTS] = {};

    /** The slots that a walk visits. */
    uint32_t counted_slots() const { return count < ADP_MEMBER_LIST_SLOTS ? count : ADP_MEMBER_LIST_SLOTS; }
};

/** The readers behind adp_get_agg_group() and adp_get_agg_config_group(). */
adp_status_t list_active(Intf agg, uint32_t max, uint32_t *count, uint32_t *list);
adp_status_t list_configured(Intf agg, uint32_t max, uint32_t *count, uint32_t *list);

/** Which members of a group: those in its record, or those in its bitmap. */
enum class Members { kActive, kConfigured };

/**
 * The members of a group. Contract: the status of the reader is ignored, so nine active members or more are as many
 * empty slots, and a bitmap of 27 members counts none.
 */
MemberList members_of(Intf agg, Members which);

/** The result of the first step that fails, else 0. Empty slots are skipped. */
int32_t first_failure(const MemberList &members, MemberStep step);

/** The same for the members of an existing group, as physical ports. */
int32_t first_failure(Intf agg, Members which, PortStep step);

/** The status of calls that report any driver failure as ADP_E_DRIVER. */
constexpr adp_status_t driver_status(int32_t result) {
    return result == 0 ? ADP_OK : ADP_E_DRIVER;
}

}  // namespace adp
