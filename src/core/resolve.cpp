// The ways of a call from an interface to its ports.
#include "core/resolve.h"

namespace adp {

uint32_t answering_number_of(Intf agg) {
    const Intf manager = manage_intf_of(agg);
    return (manager == kNoIntf ? lowest_configured_of(agg) : manager).value();
}

adp_status_t on_port_or_members(Intf intf, Members which, PortStep step) {
    const adp_status_t refusal = refusal_of(intf);
    if (refusal != ADP_OK) {
        return refusal;
    }
    return intf.kind() == IntfKind::kUserPort ? step(phy_of(intf)) : until_first_failure(intf, which, step);
}

adp_status_t refusal_of(Intf intf) {
    if (!intf.has_known_kind()) {
        return ADP_E_INTF_TYPE;
    }
    return intf.kind() == IntfKind::kUserPort || TrunkId(intf).is_valid() ? ADP_OK : ADP_FAIL;
}

int32_t standing_port_number_of(Intf intf) {
    return phy_of(intf.kind() == IntfKind::kUserPort ? intf : manage_intf_of(intf)).value();
}

}  // namespace adp
