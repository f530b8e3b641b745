// The aggregation groups' tables, one row per trunk id.
#ifndef AGG_TABLES_H
#define AGG_TABLES_H

#include <adp/agg.h>

#include "port/number.h"

namespace adp {

/**
 * The last state announced for each group, indexed by group number 1..8: 0 down, 1 up. Neither creating nor deleting a
 * group resets it, so a re-created group starts from what was last announced.
 */
extern int8_t agg_link_status[ADP_AGG_GROUPS + 1];

/** A group's management interface; kNoIntf when there is none or the group does not exist. */
inline Intf manage_intf_of(Intf agg) {
    const TrunkId trunk(agg);
    return trunk.is_valid() ? Intf(agg_manage_intf[trunk.value()]) : kNoIntf;
}

/** A group's lowest configured member; kNoIntf when there is none or the group does not exist. */
Intf lowest_configured_of(Intf agg);

/** The aggregation interface of a user port; kNoIntf when it is in no group or beyond the map. */
Intf agg_of(Intf intf);

}  // namespace adp

#endif
