// The way of a frame: ingress VLAN, learning, forwarding, egress tag. What is dropped is counted with its reason on
// the port that it came in on.
#include "vdevice/chip/egress.h"
#include "vdevice/chip/switch.h"

namespace vdevice::chip {

void Switch::receive(Time now, int port, Bytes frame) {
    if (!has_port(port)) {
        return;
    }
    if (!at(port).is_up()) {
        return drop(port, Drop::kPortDown);
    }
    PortCounters &counters = at(port).counters;
    ++counters.rx_frames;
    counters.rx_octets += frame.size();
    if (frame.size() > kMaxFrameBytes) {
        return drop(port, Drop::kOversize);
    }
    if (frame.size() < kHeaderBytes) {
        return drop(port, Drop::kRunt);
    }
    if (port == kCpuPort) {
        return receive_from_cpu(now, frame);
    }
    forward(now, port, split_frame(frame));
}

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

void Switch::forward(Time now, int ingress, const Frame &frame) {
    const std::optional<Header> header = read_header(frame, kVlanTpid);
    if (!header) {
        return drop(ingress, Drop::kRunt);
    }
    // A tag with VID 0 gives the frame a priority but no VLAN (IEEE 802.1Q, priority-tagged frames).
    const Vid vid = header->vid() != 0 ? header->vid() : at(ingress).pvid;
    const Vlan *vlan = vlans_.find(vid);
    if (vlan == nullptr) {
        return drop(ingress, Drop::kVlanMissing);
    }
    if (!vlan->members.has(ingress)) {
        return drop(ingress, Drop::kNotMember);
    }
    if (!header->source.is_group()) {
        macs_.learn(header->source, vid, ingress, now);
    }
    EgressForms forms{frame.head, header->payload, static_cast<std::uint16_t>(header->priority() | vid)};
    const MacEntry *entry = header->destination.is_group() ? nullptr : macs_.find(header->destination, vid);
    if (entry == nullptr) {
        return flood(ingress, *vlan, forms);
    }
    forward_to_entry(ingress, *vlan, *entry, forms);
}

void Switch::forward_to_entry(int ingress, const Vlan &vlan, const MacEntry &entry, EgressForms &forms) {
    if (entry.port == ingress) {
        return drop(ingress, Drop::kSamePort);
    }
    if (!vlan.members.has(entry.port)) {
        return drop(ingress, Drop::kEgressNotMember);
    }
    if (!up_.has(entry.port)) {
        return drop(ingress, Drop::kEgressDown);
    }
    send_in_vlan(entry.port, ingress, vlan, forms);
}

void Switch::flood(int ingress, const Vlan &vlan, EgressForms &forms) {
    PortSet ports = vlan.members & up_;
    ports.remove(ingress);
    if (ports.empty()) {
        return drop(ingress, Drop::kNoDestination);
    }
    ports.for_each([&](int egress) { send_in_vlan(egress, ingress, vlan, forms); });
}

void Switch::send_in_vlan(int egress, int ingress, const Vlan &vlan, EgressForms &forms) {
    if (egress == kCpuPort) {
        return transmit(egress, forms.for_cpu(ingress));
    }
    transmit(egress, vlan.untagged.has(egress) ? forms.untagged() : forms.tagged());
}

void Switch::send_directed(const TransmitTag &tag, const Frame &frame) {
    if (!tag.names_one_port() && !tag.names_ports()) {
        return drop(kCpuPort, Drop::kBadOpcode);
    }
    const Vlan *vlan = nullptr;
    Frame untagged = frame;
    if (const auto header = read_header(frame, kVlanTpid); header && header->tagged && tag.applies_egress_rule()) {
        vlan = vlans_.find(header->vid());
        untagged.body = header->payload;
    }
    const auto send_to = [&](int egress) {
        const bool strip = vlan != nullptr && vlan->untagged.has(egress);
        send_directed_to(egress, strip ? untagged : frame);
    };
    if (tag.names_ports()) {
        tag.ports().for_each(send_to);
    } else if (tag.destination < static_cast<std::uint32_t>(kPorts)) {
        send_to(static_cast<int>(tag.destination));
    } else {
        drop(kCpuPort, Drop::kDirectedToUnknown);
    }
}

void Switch::send_directed_to(int egress, const Frame &frame) {
    if (egress == kCpuPort) {
        return drop(kCpuPort, Drop::kDirectedToCpu);
    }
    if (!has_port(egress)) {
        return drop(kCpuPort, Drop::kDirectedToUnknown);
    }
    if (!up_.has(egress)) {
        return drop(kCpuPort, Drop::kEgressDown);
    }
    transmit(egress, frame);
}

void Switch::transmit(int port, const Frame &frame) {
    PortCounters &counters = at(port).counters;
    ++counters.tx_frames;
    counters.tx_octets += frame.size();
    sink_.transmit(port, frame);
}

void Switch::drop(int port, Drop reason) {
    ++at(port).counters.drops[static_cast<std::size_t>(reason)];
}

}  // namespace vdevice::chip
