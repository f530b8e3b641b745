#include "vdevice/chip/frame/egress_forms.h"

#include <algorithm>

namespace vdevice::chip {
namespace {

void write_vlan_tag(uint8_t *to, uint16_t tpid, uint16_t tci) {
    write16(to, tpid);
    write16(to + kTypeBytes, tci);
}

}  // namespace

Frame EgressForms::tagged(uint16_t tpid, uint16_t tci) {
    write_vlan_tag(std::copy(addresses_.begin(), addresses_.end(), tagged_head_.data()), tpid, tci);
    return Frame{tagged_head_, payload_};
}

Frame EgressForms::for_cpu(int ingress_port) {
    uint8_t *to = std::copy(addresses_.begin(), addresses_.end(), cpu_head_.data());
    write16(to, kSwitchTagType);
    write32(to + kTypeBytes, kIngressPort.put(static_cast<uint32_t>(ingress_port)));
    write_vlan_tag(to + kReceiveTagBytes, cpu_tpid_, tci_);
    return Frame{cpu_head_, payload_};
}

}  // namespace vdevice::chip
