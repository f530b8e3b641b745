// The aggregation groups' tables, one row per trunk id.
#pragma once

#include <adp/agg.h>

#include "core/number.h"

namespace adp {

/**
 * The last state announced for each group, indexed by group number 1..8: 0 down, 1 up. Neither creating nor deleting a
 * group resets it, so a re-created group starts from what was last announced.
 */
extern int8_t agg_link_status[ADP_AGG_GROUPS + 1];

// As in port/map.h the look-ups give plain numbers, and only their types are put right here.
uint32_t manager_number_of(Intf agg);
uint32_t lowest_configured_number_of(Intf agg);

/** A group's management interface; kNoIntf when there is none or the group does not exist. */
[[gnu::always_inline]] inline Intf manage_intf_of(Intf agg) {
    return Intf(manager_number_of(agg));
}

/** A group's lowest configured member; kNoIntf when there is none or the group does not exist. */
[[gnu::always_inline]] inline Intf lowest_configured_of(Intf agg) {
    return Intf(lowest_configured_number_of(agg));
}

/** The aggregation interface of a user port; kNoIntf when it is in no group or beyond the map. */
[[gnu::always_inline]] inline Intf agg_of(Intf intf) {
    return Intf(GET_INTF_MAPPING_AGGINTF(intf.value()));
}

}  // namespace adp
