// The aggregation groups' tables, one row per trunk id.
#pragma once

#include <adp/agg.h>

#include "core/number.h"

namespace adp {

/**
 * The state last announced for each group, by group number 1..8: 0 down, 1 up. Contract: neither creation nor deletion
 * of a group resets it.
 */
extern int8_t agg_link_status[ADP_AGG_GROUPS + 1];

/** The manager of a group; kNoIntf if there is none. */
Intf manager_of(Intf agg);

/** The lowest configured member of a group; kNoIntf if there is none. */
Intf lowest_configured_of(Intf agg);

/** The group that a user port is in; kNoIntf if it is in none. */
inline Intf agg_of(Intf intf) {
    return Intf(GET_INTF_MAPPING_AGGINTF(number(intf)));
}

}  // namespace adp
