// Double tags: entries, modes and tag protocol identifiers of interfaces.
#include <adp/vlan_tag.h>
#include <netlink_api.h>

#include "core/resolve.h"

namespace adp {
namespace {

/** A group outside 1..8 has no manager either, but the read itself refuses it. */
bool lacks_manager(Intf intf) {
    return kind_of(intf) == IntfKind::kAggregation && exists(trunk_of(intf)) && manager_of(intf) == kNoIntf;
}

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t adp_vlan_dtag_add(adp_word_t kind, adp_intf_t intf, adp_word_t action, uint32_t inner_vid,
                               uint32_t outer_vid, adp_word_t priority) {
    return on_port_or_members(Intf(intf), Members::kActive | Failure::kOwnOnPort, [=](PhyPort port) {
        return user_vlan_dtag_add(0, 0, kind, number(port), action, low16(inner_vid), low16(outer_vid), priority);
    });
}

adp_status_t adp_vlan_dtag_delete(adp_word_t kind, adp_intf_t intf, uint32_t inner_vid) {
    return on_port_or_members(Intf(intf), Members::kActive | Failure::kOwnOnPort, [=](PhyPort port) {
        return user_vlan_dtag_delete(0, 0, kind, number(port), low16(inner_vid));
    });
}

adp_status_t adp_vlan_dtag_delete_all() {
    return user_vlan_dtag_delete_all(0, 0);
}

adp_status_t adp_vlan_dtag_get(adp_intf_t intf, uint32_t inner_vid, uint32_t *outer_vid, uint32_t *priority) {
    return on_port_or_manager(Intf(intf), Failure::kDriverError, user_vlan_dtag_get, low16(inner_vid), outer_vid,
                              priority);
}

adp_status_t adp_double_tag_set(adp_intf_t intf, uint32_t mode) {
    return on_port_or_members(Intf(intf), Members::kActive | Failure::kOwnOnPort,
                              [=](PhyPort port) { return user_port_dtag_mode_set(0, 0, number(port), low16(mode)); });
}

adp_status_t adp_double_tag_get(adp_intf_t intf, uint32_t *mode) {
    if (lacks_manager(Intf(intf))) {
        return ADP_OK;  // Contract: nothing is written.
    }
    return on_port_or_manager(Intf(intf), Failure::kDriverError, user_port_dtag_mode_get, mode);
}

adp_status_t adp_double_tag_tipd_set(adp_intf_t intf, uint32_t tpid, adp_word_t option) {
    return on_port_or_members(Intf(intf), Members::kActive | Failure::kOwnOnPort, [=](PhyPort port) {
        return user_port_tpid_set(0, 0, number(port), low16(tpid), option);
    });
}

adp_status_t adp_double_tag_tpid_get(adp_intf_t intf, uint32_t *tpid) {
    return on_port_or_manager(Intf(intf), Failure::kDriverError, user_port_tpid_get, tpid);
}
