// Mirror sessions, passed to the driver with ports and session numbers translated.
#include <adp/mirror.h>
#include <netlink_api.h>

#include "core/port_map.h"

namespace adp {
namespace {

constexpr uint32_t kDirections = ADP_MIRROR_INGRESS | ADP_MIRROR_EGRESS;
constexpr uint32_t kModeOff = 0;

/** The driver's mode has the flags one bit higher. */
constexpr uint32_t mode_of(uint32_t directions) {
    return (directions & kDirections) << 1;
}

static_assert(mode_of(ADP_MIRROR_INGRESS) == 2 && mode_of(ADP_MIRROR_EGRESS) == 4 && mode_of(kDirections) == 6);

/** Callers number sessions from 1, the driver from 0. */
constexpr uint32_t driver_session(uint32_t session) {
    return session - 1;
}

[[gnu::noinline]] adp_status_t set_port_mirror(adp_intf_t source, adp_intf_t destination, uint32_t session,
                                               uint32_t mode) {
    return user_mirror_port_set(0, 0, number(phy_of(Intf(source))), driver_session(session),
                                number(phy_of(Intf(destination))), mode);
}

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t adp_add_port_mirror(adp_intf_t source, adp_intf_t destination, uint32_t directions, uint32_t session) {
    const uint32_t mode = mode_of(directions);
    return mode == kModeOff ? ADP_OK : set_port_mirror(source, destination, session, mode);
}

adp_status_t adp_del_port_mirror(adp_intf_t source, adp_intf_t destination, uint32_t, uint32_t session) {
    return set_port_mirror(source, destination, session, kModeOff);
}

adp_status_t adp_set_flow_mirror(adp_intf_t intf, uint32_t session) {
    return user_set_flow_mirror(0, 0, driver_session(session), number(phy_of(Intf(intf))));
}

adp_status_t adp_set_mirror_disable(uint32_t session, uint32_t, uint32_t, adp_word_t disable) {
    return user_set_mirror_disable(0, 0, driver_session(session), disable);
}

adp_status_t adp_check_set_mirror_disable(uint32_t session, uint32_t, uint32_t, adp_word_t disable) {
    return user_check_set_mirror_disable(0, 0, driver_session(session), disable);
}
