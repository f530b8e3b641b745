// Writes tags behind the addresses of a frame.
#include "vdevice/chip/frame/tagged_head.h"

#include <algorithm>

namespace vdevice::chip {
namespace {

void write_vlan_tag(uint8_t *to, uint16_t tpid, uint16_t tci) {
    write16(to, tpid);
    write16(to + kTypeBytes, tci);
}

}  // namespace

Frame TaggedHead::with_vlan_tag(const Frame &untagged, uint16_t tpid, uint16_t tci) {
    write_vlan_tag(std::copy(untagged.head.begin(), untagged.head.end(), octets_.data()), tpid, tci);
    return {Bytes{octets_}.first(kAddressBytes + kVlanTagBytes), untagged.body};
}

Frame TaggedHead::with_receive_tag(const Frame &untagged, int ingress_port, uint16_t tpid, uint16_t tci) {
    uint8_t *to = std::copy(untagged.head.begin(), untagged.head.end(), octets_.data());
    write16(to, kSwitchTagType);
    write32(to + kTypeBytes, kIngressPort.put(static_cast<uint32_t>(ingress_port)));
    write_vlan_tag(to + kReceiveTagBytes, tpid, tci);
    return {octets_, untagged.body};
}

}  // namespace vdevice::chip
