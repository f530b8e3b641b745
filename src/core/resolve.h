// From an interface number to the ports that a driver call is made on. Each exported call states its own policy for an
// aggregation interface: which members, which of them answers, and what a failure becomes.
#pragma once

#include <type_traits>

#include "core/group_tables.h"
#include "core/members.h"
#include "core/port_map.h"

namespace adp {

/** What the caller gets when the driver fails. */
enum class Failure : uint32_t {
    kOwnOnPort = 0,    // the driver's own result on a user port, ADP_E_DRIVER in a group
    kDriverError = 2,  // ADP_E_DRIVER
    kOwnResult = 4,    // the driver's own result
};

/** The policy of a call: on which members of a group it is made, and what a failure becomes. */
enum class Fan : uint32_t {};

constexpr Fan operator|(Members which, Failure failure) {
    return static_cast<Fan>(static_cast<uint32_t>(which) | static_cast<uint32_t>(failure));
}
constexpr bool operator&(Fan fan, Failure failure) {
    return (static_cast<uint32_t>(fan) & static_cast<uint32_t>(failure)) != 0;
}
constexpr Members members_of(Fan fan) {
    return static_cast<Members>(static_cast<uint32_t>(fan) & 1);
}

/** Of a group its manager, kNoIntf without one; any other interface itself. */
Intf representative_of(Intf intf);

/** The member that answers a read on a group: its manager, else its lowest configured member; kNoIntf without both. */
Intf answering_member_of(Intf agg);

/** ADP_OK for a user port and a group 1..8, ADP_FAIL for another group, ADP_E_INTF_TYPE for another type. */
adp_status_t check_interface(Intf intf);

/** ADP_OK for a user port, ADP_E_DRIVER for every aggregation interface, ADP_E_INTF_TYPE for another type. */
constexpr adp_status_t check_user_port(Intf intf) {
    if (kind_of(intf) == IntfKind::kUserPort) {
        return ADP_OK;
    }
    return kind_of(intf) == IntfKind::kAggregation ? ADP_E_DRIVER : ADP_E_INTF_TYPE;
}

/** on_port(physical port) for a user port, on_group(agg) for a group 1..8; for calls that none of the four below fits.
 */
template <typename OnPort, typename OnGroup>
adp_status_t by_kind(Intf intf, OnPort on_port, OnGroup on_group) {
    switch (kind_of(intf)) {
        case IntfKind::kUserPort:
            return on_port(phy_of(intf));
        case IntfKind::kAggregation:
            return exists(trunk_of(intf)) ? on_group(intf) : ADP_FAIL;
        default:
            return ADP_E_INTF_TYPE;
    }
}

// The four ways of a driver call on an interface. The templates must not be inlined: one copy serves all driver calls
// with the same arguments.

/** A driver call on a port of unit 0. */
template <typename... Values>
using PortCall = int32_t (*)(uint32_t, uint32_t, int32_t, Values...);

/** What the caller gets for a result on a user port, and on members. */
constexpr adp_status_t port_answer(int32_t result, Fan fan) {
    return fan & Failure::kDriverError ? driver_status(result) : result;
}
constexpr adp_status_t group_answer(int32_t result, Fan fan) {
    return fan & Failure::kOwnResult ? result : driver_status(result);
}

/** The step on a user port, or on a group's members until one fails. */
adp_status_t on_port_or_members(Intf intf, Fan fan, PortStep step);

/** The call on a user port or on a group's manager; without a manager that is interface 0, the CPU port. */
template <typename... Values>
[[gnu::noinline]] adp_status_t on_port_or_manager(Intf intf, Failure failure, PortCall<Values...> call,
                                                  std::type_identity_t<Values>... values) {
    const adp_status_t refusal = check_interface(intf);
    if (refusal != ADP_OK) {
        return refusal;
    }
    const int32_t result = call(0, 0, number(phy_of(representative_of(intf))), values...);
    return failure == Failure::kOwnResult ? result : driver_status(result);
}

/** The call on a user port or on a group's answering member; ADP_E_NO_MEMBER without one, ADP_E_DRIVER on failure. */
template <typename... Values>
[[gnu::noinline]] adp_status_t on_port_or_answering_member(Intf intf, PortCall<Values...> call,
                                                           std::type_identity_t<Values>... values) {
    Intf asked = intf;
    if (kind_of(intf) != IntfKind::kUserPort) {
        asked = kind_of(intf) == IntfKind::kAggregation ? answering_member_of(intf) : kNoIntf;
        if (asked == kNoIntf) {
            const adp_status_t refusal = check_interface(intf);
            return refusal != ADP_OK ? refusal : ADP_E_NO_MEMBER;
        }
    }
    return driver_status(call(0, 0, number(phy_of(asked)), values...));
}

/** The call on a user port alone; ADP_E_DRIVER on failure and for every aggregation interface. */
template <typename... Values>
[[gnu::noinline]] adp_status_t on_port_only(Intf intf, PortCall<Values...> call,
                                            std::type_identity_t<Values>... values) {
    const adp_status_t refusal = check_user_port(intf);
    return refusal != ADP_OK ? refusal : driver_status(call(0, 0, number(phy_of(intf)), values...));
}

}  // namespace adp
