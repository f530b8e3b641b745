// Membership of interfaces in VLANs, asked of the device's VLAN service.
#include "pkt/vlan_members.h"

#include <adp/pkt.h>
#include <device_services.h>
#include <string.h>

namespace adp {
namespace {

constexpr uint32_t kRecordLength = 64;
// The bitmap stands in the record as two words in the machine's byte order, the more significant first.
constexpr uint32_t kMembersOffset = 8;

}  // namespace

bool VlanMembers::fetch(uint32_t vid) {
    alignas(uint32_t) uint8_t record[kRecordLength] = {};
    if (get_vlan_info(vid, record) != 0) {
        return false;
    }
    memcpy(&words_[1], record + kMembersOffset, sizeof words_[1]);
    memcpy(&words_[0], record + kMembersOffset + sizeof words_[1], sizeof words_[0]);
    return true;
}

}  // namespace adp

adp_status_t check_port_vlan_ability(adp_intf_t intf, int32_t vid) {
    adp::VlanMembers vlan;
    const adp::Intf member(intf);
    const bool is_member = vlan.fetch(static_cast<uint32_t>(vid)) && member.has_known_kind() && vlan.has(member);
    return is_member ? ADP_OK : ADP_FAIL;
}
