// Checks and counters of the ingress port, the tag from the CPU, VLAN, priority and rules.
#include "vdevice/chip/pipeline/ingress.h"

#include "vdevice/chip/frame/remark.h"
#include "vdevice/chip/pipeline/egress_limits.h"
#include "vdevice/chip/tables/dos_filter.h"

namespace vdevice::chip {

bool Ingress::accept(Passage &p) {
    Port &port = tables_.port(p.ingress);
    if (port.loopback != 0 && !p.is_looped) {
        return p.end(Drop::kLoopback);
    }
    if (!port.is_up()) {
        return p.end(Drop::kPortDown);
    }
    ++port.counters.rx_frames;
    port.counters.rx_octets += p.received.size();
    if (p.received.size() < kHeaderBytes) {
        return p.end(Drop::kRunt);
    }
    ++port.counters.rx_casts[static_cast<size_t>(cast_of(Mac::at(p.received, 0)))];
    if (p.received.size() > port.longest_frame()) {
        return p.end(Drop::kOversize);
    }
    egress_.mirror_ingress(p.ingress, p.received);
    return port.policer.charge(p.received.size() + kCheckSequenceBytes, p.now) ? true : p.end(Drop::kPoliced);
}

bool Ingress::unwrap(Passage &p) {
    if (p.ingress != kCpuPort) {
        p.frame = split_frame(p.received);
        return true;
    }
    const std::optional<TransmitTag> tag = read_transmit_tag(p.received);
    if (!tag) {
        return p.end(Drop::kNoSwitchTag);
    }
    p.frame = split_frame(p.received, kTransmitTagBytes);
    if (tag->opcode == Opcode::kSwitched) {
        return true;
    }
    send_directed(p, *tag);
    return false;
}

bool Ingress::read(Passage &p) {
    const std::optional<Header> header = read_header(tables_.port(p.ingress).tags, p.frame);
    if (!header) {
        return p.end(Drop::kRunt);
    }
    p.header = *header;
    if (tables_.filters_attacks && p.ingress != kCpuPort) {
        if (const std::optional<Drop> attack = find_attack(p.header)) {
            return p.end(*attack);
        }
    }
    return true;
}

// Rules see the DSCP that the frame came in with, and have the last word about the one that it leaves with.
bool Ingress::classify(Passage &p) {
    p.own = class_of(p.ingress, p.header);
    tables_.fields.judge(p.now, {p.ingress, p.frame.size(), p.header, p.own.tci}, p.verdict);
    p.tci = p.verdict.tci;
    p.priority = priority_of(p.tci);
    if (p.verdict.mirror) {
        egress_.copy_to_flow_mirror(*p.verdict.mirror, p.frame);
    }
    if (const auto dscp = p.verdict.dscp ? p.verdict.dscp : p.own.dscp) {
        p.header.payload = with_dscp(p.header, *dscp, remarked_);
    }
    return p.verdict.drop ? p.end(*p.verdict.drop) : true;
}

Classified Ingress::class_of(int port, const Header &header) const {
    const Port &settings = tables_.port(port);
    return tables_.priority_rules.classify(port, settings, header, tables_.tag_rules.classify(port, settings, header));
}

// The frame has its priority from the CPU port's settings, but its tag, if it gets one, is the one that it came with.
void Ingress::send_directed(Passage &p, const TransmitTag &tag) {
    p.way = Way::kDirected;
    if (tag.names_ports()) {
        p.wanted = tag.ports();
    } else if (!tag.names_one_port()) {
        p.end(Drop::kBadOpcode);
    } else if (!is_chip_port(tag.destination)) {
        p.end(Drop::kDirectedToUnknown);
    } else {
        p.wanted.add(static_cast<int>(tag.destination));
    }
    if (const auto header = read_header(p.frame, kVlanTpid)) {
        p.header = *header;
        p.own = class_of(kCpuPort, *header);
        p.priority = priority_of(p.own.tci);
        p.tci = header->tci;
        p.vlan = header->tagged && tag.applies_egress_rule() ? tables_.vlans.find(header->vid()) : nullptr;
    }
    p.wanted.for_each([&](int port) { send_directed_to(p, port); });
}

// Each of several ports that cannot have the frame is counted.
void Ingress::send_directed_to(Passage &p, int port) {
    if (const auto reason = why_not_directed(tables_, port)) {
        tables_.count_drop(kCpuPort, *reason);
    } else {
        p.chosen.add(port);
        if (p.vlan != nullptr) {
            egress_.send(p, port);
        } else {
            egress_.send_as_is(p, port);
        }
    }
}

}  // namespace vdevice::chip
