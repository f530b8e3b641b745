// Frames from the CPU, with the transmit tag, and those that are handed to it.
#include "vdevice/chip/frame/egress_forms.h"
#include "vdevice/chip/switch.h"

namespace vdevice::chip {

void Switch::receive_from_cpu(Time now, Bytes frame) {
    const std::optional<TransmitTag> tag = read_transmit_tag(frame);
    if (!tag) {
        return drop(kCpuPort, Drop::kNoSwitchTag);
    }
    const Frame inner = split_frame(frame, kTransmitTagBytes);
    if (tag->opcode == Opcode::kSwitched) {
        return forward(now, kCpuPort, inner);
    }
    send_directed(*tag, inner);
}

void Switch::hand_over(const Flow &flow) {
    if (!flow.cpu_has_copy) {
        trap(flow.ingress, flow.forms);
    }
}

void Switch::trap(int ingress, EgressForms &forms) {
    if (ingress == kCpuPort) {
        return drop(ingress, Drop::kSamePort);
    }
    if (!up_.has(kCpuPort)) {
        return drop(ingress, Drop::kEgressDown);
    }
    transmit(kCpuPort, forms.for_cpu(ingress), forms.priority());
}

void Switch::send_directed(const TransmitTag &tag, const Frame &frame) {
    if (!tag.names_one_port() && !tag.names_ports()) {
        return drop(kCpuPort, Drop::kBadOpcode);
    }
    const Vlan *vlan = nullptr;
    std::optional<EgressForms> forms;
    const auto header = read_header(frame, kVlanTpid);
    const uint32_t priority = header ? priority_of(classify(kCpuPort, *header).tci) : 0;
    if (header && header->tagged && tag.applies_egress_rule()) {
        vlan = vlans_.find(header->vid());
        forms.emplace(frame.head, header->payload, header->tci);
    }
    const auto send_to = [&](int egress) {
        const bool formed = vlan != nullptr && has_port(egress);
        send_directed_to(egress, formed ? form_for(egress, *vlan, *forms) : frame, priority);
    };
    if (tag.names_ports()) {
        tag.ports().for_each(send_to);
    } else if (tag.destination < static_cast<uint32_t>(kPorts)) {
        send_to(static_cast<int>(tag.destination));
    } else {
        drop(kCpuPort, Drop::kDirectedToUnknown);
    }
}

void Switch::send_directed_to(int egress, const Frame &frame, uint32_t priority) {
    if (egress == kCpuPort) {
        return drop(kCpuPort, Drop::kDirectedToCpu);
    }
    if (!has_port(egress)) {
        return drop(kCpuPort, Drop::kDirectedToUnknown);
    }
    if (!up_.has(egress)) {
        return drop(kCpuPort, Drop::kEgressDown);
    }
    transmit(egress, frame, priority);
}

}  // namespace vdevice::chip
