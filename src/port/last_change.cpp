// When each user port's link changed last.
#include <adp/port.h>
#include <time.h>

#include "core/members.h"
#include "core/resolve.h"

using namespace adp;

namespace {

uint32_t last_change[ADP_USER_PORTS];  // user port i at i - 1, seconds since the epoch

constexpr bool has_entry(Intf intf) {
    return number(intf) - 1 < ADP_USER_PORTS;
}

[[gnu::noinline]] adp_status_t stamp(Intf intf) {
    if (has_entry(intf)) {
        last_change[number(intf) - 1] = static_cast<uint32_t>(time(nullptr));
    }
    return ADP_OK;
}

[[gnu::noinline]] uint32_t stamp_of(Intf intf) {
    return has_entry(intf) ? last_change[number(intf) - 1] : 0;
}

}  // namespace

adp_status_t adp_set_port_last_change(adp_intf_t intf) {
    return by_kind(
        Intf(intf), [&](PhyPort) { return stamp(Intf(intf)); },
        [](Intf agg) {
            return first_failure(members_of(agg, Members::kConfigured), [](Intf member) { return stamp(member); });
        });
}

adp_status_t adp_get_port_last_change(int32_t intf, uint32_t *seconds) {
    const Intf asked{static_cast<uint32_t>(intf)};
    *seconds = 0;
    return by_kind(
        asked,
        [&](PhyPort) -> adp_status_t {
            *seconds = stamp_of(asked);
            return ADP_OK;
        },
        [&](Intf agg) -> adp_status_t {
            const Intf member = answering_member_of(agg);
            *seconds = stamp_of(member);
            return member == kNoIntf ? ADP_E_NO_MEMBER : ADP_OK;
        });
}
