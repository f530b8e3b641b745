// What the rules of the field processor do to a frame on its way.
#include "vdevice/chip/egress.h"
#include "vdevice/chip/remark.h"
#include "vdevice/chip/switch.h"

namespace vdevice::chip {

FieldVerdict Switch::apply_rules(Time now, int ingress, const Frame &frame, std::uint16_t tci, Header &header) {
    const FieldVerdict verdict = fields_.judge(now, {ingress, frame.size(), header, tci});
    if (verdict.mirror) {
        copy_to_flow_mirror(*verdict.mirror, frame);
    }
    if (verdict.dscp) {
        header.payload = with_dscp(header, *verdict.dscp, remarked_);
    }
    return verdict;
}

bool Switch::copy_to_cpu(int ingress, EgressForms &forms) {
    if (ingress == kCpuPort || !up_.has(kCpuPort)) {
        return false;
    }
    transmit(kCpuPort, forms.for_cpu(ingress), forms.priority());
    return true;
}

void Switch::redirect(const Flow &flow, const PortSet &ports) {
    // A loop that spanning tree has cut must not be closed again by a rule.
    PortSet usable = ports & up_ & stp_.forwarding_in_vlan(flow.vid);
    usable.remove(flow.ingress);
    if (usable.empty()) {
        return drop(flow.ingress, Drop::kNoDestination);
    }
    usable.for_each([&](int egress) { send_in_vlan(egress, flow); });
}

}  // namespace vdevice::chip
