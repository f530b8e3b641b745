// Ring ports: blocked and released through their state in the default group.
#include <adp/stg.h>
#include <netlink_api.h>

#include "core/messages.h"
#include "core/resolve.h"

namespace adp {
namespace {

constexpr int32_t kRingGroup = 0;

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t adp_set_port_erps_state(adp_intf_t intf, uint32_t state) {
    return on_port_or_members(Intf(intf), Members::kActive | Failure::kOwnOnPort,
                              [=](PhyPort port) { return user_stg_stp_set(0, 0, kRingGroup, number(port), state); });
}

adp_status_t adp_get_port_erps_state(adp_intf_t intf, uint32_t *state) {
    static constexpr Message kFailed{{"adp_get_port_erps_state", __LINE__},
                                     "%s %d: get max support stg number failed. ret=%d\n"};
    return report_if_negative(kFailed, user_stg_stp_get(0, 0, kRingGroup, number(phy_of(Intf(intf))), state));
}
