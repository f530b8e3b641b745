// The one place that tells a user port from an aggregation interface and sends a call the right way.
#ifndef AGG_RESOLVE_H
#define AGG_RESOLVE_H

#include "agg/members.h"
#include "agg/tables.h"
#include "port/map.h"

namespace adp {

/**
 * Answers on_port(physical port) for a user port and on_group(aggregation interface) for a group that exists;
 * ADP_FAIL for a group outside 1..8, ADP_E_INTF_TYPE for any other type.
 */
template <typename OnPort, typename OnGroup>
adp_status_t by_kind(Intf intf, OnPort on_port, OnGroup on_group) {
    switch (intf.kind()) {
        case IntfKind::kUserPort:
            return on_port(phy_of(intf));
        case IntfKind::kAggregation:
            return TrunkId(intf).is_valid() ? on_group(intf) : ADP_FAIL;
        default:
            return ADP_E_INTF_TYPE;
    }
}

/** The member that answers a read on a group: its management interface, else its lowest configured member. */
inline Intf answering_member_of(Intf agg) {
    const Intf manager = manage_intf_of(agg);
    return manager == kNoIntf ? lowest_configured_of(agg) : manager;
}

/**
 * Answers call(physical port) for a user port, and for a group that of its management interface; without one that is
 * interface 0, the CPU port. Other interfaces as in by_kind().
 */
template <typename Call>
adp_status_t on_port_or_manager(Intf intf, Call call) {
    return by_kind(intf, call, [&](Intf agg) { return call(phy_of(manage_intf_of(agg))); });
}

/**
 * Answers call(physical port) with its own result for a user port; for a group the call is made for the active members
 * until one fails, which gives ADP_E_DRIVER. Other interfaces as in by_kind().
 */
template <typename Call>
adp_status_t on_port_or_active_members(Intf intf, Call call) {
    return by_kind(intf, call, [&](Intf agg) {
        return until_first_failure(active_members(agg), [&](Intf member) { return call(phy_of(member)); });
    });
}

/** The status of calls that report any driver failure as ADP_E_DRIVER. */
constexpr adp_status_t driver_status(int32_t result) {
    return result == 0 ? ADP_OK : ADP_E_DRIVER;
}

/** Calls that do not fan out: the port's driver call, ADP_E_DRIVER for a failure and for every aggregation interface.
 */
template <typename Call>
adp_status_t on_port_only(Intf intf, Call call) {
    switch (intf.kind()) {
        case IntfKind::kUserPort:
            return driver_status(call(phy_of(intf)));
        case IntfKind::kAggregation:
            return ADP_E_DRIVER;
        default:
            return ADP_E_INTF_TYPE;
    }
}

}  // namespace adp

#endif
