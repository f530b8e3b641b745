// Double tags: entries, modes and tag protocol identifiers of interfaces.
#include <adp/vlan_tag.h>
#include <netlink_api.h>

#include "core/resolve.h"

namespace adp {
namespace {

/** Only for a group; a group that there is not has none either, but is refused by the read itself. */
bool lacks_manager(Intf intf) {
    return intf.kind() == IntfKind::kAggregation && TrunkId(intf).is_valid() && manage_intf_of(intf) == kNoIntf;
}

}  // namespace
}  // namespace adp

using adp::Intf;
using adp::low16;
using adp::PhyPort;

adp_status_t adp_vlan_dtag_add(adp_word_t a, adp_intf_t intf, adp_word_t b, uint32_t c, uint32_t d, adp_word_t e) {
    return adp::on_port_or_members(Intf(intf), adp::Members::kActive, [=](PhyPort port) {
        return user_vlan_dtag_add(0, 0, a, port.value(), b, low16(c), low16(d), e);
    });
}

adp_status_t adp_vlan_dtag_delete(adp_word_t a, adp_intf_t intf, uint32_t c) {
    return adp::on_port_or_members(Intf(intf), adp::Members::kActive, [=](PhyPort port) {
        return user_vlan_dtag_delete(0, 0, a, port.value(), low16(c));
    });
}

adp_status_t adp_vlan_dtag_delete_all() {
    return user_vlan_dtag_delete_all(0, 0);
}

adp_status_t adp_vlan_dtag_get(adp_intf_t intf, uint32_t vlan, uint32_t *c, uint32_t *d) {
    return adp::read_port_or_manager(Intf(intf), user_vlan_dtag_get, low16(vlan), c, d);
}

adp_status_t adp_double_tag_set(adp_intf_t intf, uint32_t mode) {
    return adp::on_port_or_members(Intf(intf), adp::Members::kActive, [=](PhyPort port) {
        return user_port_dtag_mode_set(0, 0, port.value(), low16(mode));
    });
}

adp_status_t adp_double_tag_get(adp_intf_t intf, uint32_t *mode) {
    if (adp::lacks_manager(Intf(intf))) {
        return ADP_OK;
    }
    return adp::read_port_or_manager(Intf(intf), user_port_dtag_mode_get, mode);
}

adp_status_t adp_double_tag_tipd_set(adp_intf_t intf, uint32_t tpid, adp_word_t c) {
    return adp::on_port_or_members(Intf(intf), adp::Members::kActive, [=](PhyPort port) {
        return user_port_tpid_set(0, 0, port.value(), low16(tpid), c);
    });
}

adp_status_t adp_double_tag_tpid_get(adp_intf_t intf, uint32_t *tpid) {
    return adp::read_port_or_manager(Intf(intf), user_port_tpid_get, tpid);
}
