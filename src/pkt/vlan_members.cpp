// Membership of interfaces in VLANs, read from the device's VLAN service.
#include "pkt/vlan_members.h"

#include <adp/pkt.h>
#include <device_services.h>

namespace adp {
namespace {

// The bitmap is two words of the record in host byte order, the more significant first.
constexpr uint32_t kRecordWords = DEVICE_VLAN_RECORD_BYTES / sizeof(uint32_t);
constexpr uint32_t kMembersWord = DEVICE_VLAN_MEMBERS_OFFSET / sizeof(uint32_t);

}  // namespace

bool VlanMembers::fetch(uint32_t vid) {
    uint32_t record[kRecordWords] = {};
    if (get_vlan_info(vid, reinterpret_cast<uint8_t *>(record)) != 0) {
        return false;
    }
    words_[1] = record[kMembersWord];
    words_[0] = record[kMembersWord + 1];
    return true;
}

}  // namespace adp

using namespace adp;

adp_status_t check_port_vlan_ability(adp_intf_t intf, int32_t vid) {
    VlanMembers vlan;
    const Intf member{intf};
    const bool is_member = vlan.fetch(static_cast<uint32_t>(vid)) && has_known_kind(member) && vlan.has(member);
    return is_member ? ADP_OK : ADP_FAIL;
}
