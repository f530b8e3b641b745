// The two workers that program the hardware trunk of a group. Contract: they differ. Adding puts all members into the
// trunk, linked or not, and sends the event each time; removing keeps linked members only, and sends it on a change.
#pragma once

#include <adp/agg.h>

#include "core/number.h"

namespace adp {

/** Whether the member list becomes the record of the group. Link changes alter the hardware trunk only. */
enum class Commit { kNo, kYes };

/**
 * Programs the trunk with the members and the listed interfaces.
 *
 * @param changed  set to 1 when the group went up; may be null
 * @return the driver's result; ADP_FAIL before any driver call when the record has no room
 */
adp_status_t hal_add_agg_member_ex(TrunkId trunk, uint32_t count, const uint32_t *list, Commit commit,
                                   uint32_t *changed);

/**
 * Programs the trunk with those linked members that are not listed.
 *
 * @param changed  set to 1 when the group went down; may be null
 * @return the driver's result
 */
adp_status_t hal_del_agg_member_ex(TrunkId trunk, uint32_t count, const uint32_t *list, Commit commit,
                                   uint32_t *changed);

}  // namespace adp
