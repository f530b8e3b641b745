// The one place that tells a user port from an aggregation interface and sends a call the right way.
#pragma once

#include <type_traits>

#include "core/group_tables.h"
#include "core/members.h"
#include "core/port_map.h"

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

uint32_t answering_number_of(Intf agg);

/** The member that answers a read on a group: its management interface, else its lowest configured member. */
[[gnu::always_inline]] inline Intf answering_member_of(Intf agg) {
    return Intf(answering_number_of(agg));
}

/**
 * Answers step(physical port) with its own result for a user port; for a group the step is made for the members until
 * one fails, which gives ADP_E_DRIVER. Other interfaces as in by_kind().
 */
adp_status_t on_port_or_members(Intf intf, Members which, PortStep step);

/**
 * The answer of by_kind() to what has no port: ADP_OK for a user port and a group that exists. by_kind() decides by
 * itself, since asking here first costs each of its callers some 25 instructions on the target, and more bytes.
 */
adp_status_t refusal_of(Intf intf);

/** The physical port of a user port, of a group that of its management interface. */
int32_t standing_port_number_of(Intf intf);

/** The answer of calls that do not fan out to what is no user port: ADP_OK for a user port. */
constexpr adp_status_t refusal_but_of_ports(Intf intf) {
    if (intf.kind() == IntfKind::kUserPort) {
        return ADP_OK;
    }
    return intf.kind() == IntfKind::kAggregation ? ADP_E_DRIVER : ADP_E_INTF_TYPE;
}

// The calls that need nothing but one port are handed over as they are, with what follows the port. One copy of each of
// these serves all driver calls that take the same: that is why they must not be inlined.

/** A driver call on a port of unit 0. */
template <typename... Values>
using PortCall = int32_t (*)(uint32_t, uint32_t, int32_t, Values...);

/** Calls that do not fan out: the port's driver call, ADP_E_DRIVER for a failure and for every aggregation interface.
 */
template <typename... Values>
[[gnu::noinline]] adp_status_t on_port_only(Intf intf, PortCall<Values...> call,
                                            std::type_identity_t<Values>... values) {
    const adp_status_t refusal = refusal_but_of_ports(intf);
    return refusal != ADP_OK ? refusal : driver_status(call(0, 0, phy_of(intf).value(), values...));
}

/**
 * The driver call on a user port, and for a group on its management interface; without one that is interface 0, the CPU
 * port. The answer is the driver's own result, for other interfaces as in by_kind().
 */
template <typename... Values>
[[gnu::noinline]] adp_status_t call_port_or_manager(Intf intf, PortCall<Values...> call,
                                                    std::type_identity_t<Values>... values) {
    const adp_status_t refusal = refusal_of(intf);
    return refusal != ADP_OK ? refusal : call(0, 0, standing_port_number_of(intf), values...);
}

/** The same for calls that answer any failure of the driver's with ADP_E_DRIVER. */
template <typename... Values>
[[gnu::noinline]] adp_status_t read_port_or_manager(Intf intf, PortCall<Values...> call,
                                                    std::type_identity_t<Values>... values) {
    const adp_status_t refusal = refusal_of(intf);
    return refusal != ADP_OK ? refusal : driver_status(call(0, 0, standing_port_number_of(intf), values...));
}

}  // namespace adp
