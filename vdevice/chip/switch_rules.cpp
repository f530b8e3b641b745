// What a frame's tags and port make of it, and what the rules of the field processor do to it on its way.
#include "vdevice/chip/frame/egress_forms.h"
#include "vdevice/chip/frame/remark.h"
#include "vdevice/chip/switch.h"

namespace vdevice::chip {

Classified Switch::classify(int ingress, const Header &header) const {
    const Port &settings = port(ingress);
    return priority_rules_.classify(ingress, settings, header, tag_rules_.classify(ingress, settings, header));
}

// Rules see the DSCP that the frame came in with, and have the last word about the one that it leaves with.
FieldVerdict Switch::apply_rules(Time now, int ingress, const Frame &frame, const Classified &own, Header &header) {
    const FieldVerdict verdict = fields_.judge(now, {ingress, frame.size(), header, own.tci});
    if (verdict.mirror) {
        copy_to_flow_mirror(*verdict.mirror, frame);
    }
    if (const auto dscp = verdict.dscp ? verdict.dscp : own.dscp) {
        header.payload = with_dscp(header, *dscp, remarked_);
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
