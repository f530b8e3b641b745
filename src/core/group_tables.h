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

/** A group's management interface; kNoIntf when there is none or the group does not exist. */
Intf manager_of(Intf agg);

/** A group's lowest configured member; kNoIntf when there is none or the group does not exist. */
Intf lowest_configured_of(Intf agg);

/** The aggregation interface of a user port; kNoIntf when it is in no group or beyond the map. */
inline Intf agg_of(Intf intf) {
    return Intf(GET_INTF_MAPPING_AGGINTF(number(intf)));
}

}  // namespace adp
