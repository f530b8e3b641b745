// Authorisation of ports and MAC addresses.
#include <adp/dot1x.h>
#include <adp/port.h>
#include <device_services.h>

#include "core/members.h"
#include "core/number.h"

namespace adp {
namespace {

// Numbers of the MAC-table service.
constexpr uint32_t kFlushScope = 7;
constexpr uint32_t kFlushKind = 3;
constexpr uint32_t kTableFlag = 1;

adp_status_t set_learning(adp_intf_t intf, int32_t mode) {
    return adp_intf_learn_set(intf, mode) == 0 ? ADP_OK : ADP_E_DOT1X_LEARN;
}

adp_status_t close_port(adp_intf_t intf, int32_t learning_mode) {
    const adp_status_t status = set_learning(intf, learning_mode);
    if (status != ADP_OK) {
        return status;
    }
    return set_mac_tbl_clear_by_port(intf, kFlushScope, kFlushKind) == 0 ? ADP_OK : ADP_E_DOT1X_FLUSH;
}

/** The lowest active member. Contract: an empty first slot counts as the lowest. */
uint32_t smallest_member(Intf agg) {
    const MemberList members = members_of(agg, Members::kActive);
    uint32_t smallest = members.slots[0];
    for (uint32_t slot = 1; slot < members.counted_slots(); ++slot) {
        if (members.slots[slot] != 0 && members.slots[slot] < smallest) {
            smallest = members.slots[slot];
        }
    }
    return smallest;
}

/** The interface of an address on this port: in a group the lowest active member. */
adp_intf_t entry_interface(adp_intf_t intf) {
    uint32_t group = 0;
    get_group_by_interface(intf, &group);
    const uint32_t member = group == 0 ? 0 : smallest_member(Intf(group));
    return member == 0 ? intf : member;
}

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t adp_set_port_dot1x_mode(int32_t intf, uint32_t mode, uint32_t, uint32_t learn) {
    const auto number = static_cast<adp_intf_t>(intf);
    switch (low8(mode)) {
        case ADP_DOT1X_AUTHORIZED:
            return set_learning(number, learn != 0 ? ADP_LEARN_PENDING : ADP_LEARN_OPEN);
        case ADP_DOT1X_UNAUTHORIZED:
            return close_port(number, ADP_LEARN_PENDING);
        case ADP_DOT1X_BLOCKED:
            return close_port(number, ADP_LEARN_CLOSED);
        default:
            return ADP_E_DOT1X_MODE;
    }
}

adp_status_t adp_set_port_dot1x_authorized_state(int32_t intf, uint32_t state, uint32_t learn) {
    const uint32_t mode = low8(state) == 1 ? ADP_DOT1X_AUTHORIZED : ADP_DOT1X_UNAUTHORIZED;
    return adp_set_port_dot1x_mode(intf, mode, 0, learn);
}

adp_status_t adp_set_mac_dot1x_authorized_state(adp_intf_t intf, uint32_t vid, const uint8_t mac[6],
                                                uint32_t authorised) {
    const char *text = onu_mac2str(mac);
    if (text == nullptr) {
        return ADP_E_DOT1X_MODE;
    }
    del_mac_addr(text, low16(vid), kTableFlag);
    if (low8(authorised) == 0) {
        return ADP_OK;
    }
    const adp_intf_t target = entry_interface(intf);
    return add_mac_static_addr(text, target, low16(vid), kTableFlag) == 0 ? ADP_OK : ADP_E_DOT1X_STATIC;
}
