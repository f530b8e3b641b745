// Ring ports: blocked and released through their state in the default group.
#include <adp/stg.h>
#include <netlink_api.h>

#include "core/resolve.h"
#include "stg/report.h"

namespace adp {
namespace {

constexpr int32_t kRingGroup = 0;

}  // namespace
}  // namespace adp

adp_status_t adp_set_port_erps_state(adp_intf_t intf, uint32_t state) {
    return adp::on_port_or_members(adp::Intf(intf), adp::Members::kActive, [=](adp::PhyPort port) {
        return user_stg_stp_set(0, 0, adp::kRingGroup, port.value(), state);
    });
}

adp_status_t adp_get_port_erps_state(adp_intf_t intf, uint32_t *state) {
    static constexpr adp::FailurePoint kFailed{"adp_get_port_erps_state", __LINE__,
                                               "%s %d: get max support stg number failed. ret=%d\n"};
    return adp::report_if_negative(
        kFailed, user_stg_stp_get(0, 0, adp::kRingGroup, adp::phy_of(adp::Intf(intf)).value(), state));
}
