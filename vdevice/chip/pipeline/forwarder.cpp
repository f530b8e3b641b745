// Traps, VLAN, spanning tree, learning, snooping, storm limits, and the choice of ports.
#include "vdevice/chip/pipeline/forwarder.h"

#include "vdevice/chip/pipeline/egress_limits.h"

namespace vdevice::chip {
namespace {

/** On the wire, without preamble and gap. */
size_t octets_of(const Header &header) {
    const size_t tag = header.tagged ? kVlanTagBytes : 0;
    return kAddressBytes + tag + header.payload.size() + kCheckSequenceBytes;
}

/** Nothing for a frame to a station that is known. */
std::optional<StormType> storm_type_of(Mac destination, const MacEntry *entry) {
    if (destination.is_broadcast()) {
        return StormType::kBroadcast;
    }
    if (destination.is_group()) {
        return StormType::kMulticast;
    }
    return entry == nullptr ? std::optional{StormType::kUnknownUnicast} : std::nullopt;
}

}  // namespace

// Between neighbours VLANs do not matter, nor does what else a port lets pass.
bool Forwarder::pass_traps(Passage &p) {
    if (const CpuReason reason = reason_for_cpu_alone(p); reason != CpuReason::kNone) {
        return trap(p, reason);
    }
    if (p.verdict.copy_to_cpu && p.ingress != kCpuPort && tables_.up.has(kCpuPort)) {
        send(p, kCpuPort);
    }
    return true;
}

CpuReason Forwarder::reason_for_cpu_alone(const Passage &p) const {
    if (p.verdict.to_cpu_only) {
        return CpuReason::kRule;
    }
    if (p.ingress == kCpuPort) {
        return CpuReason::kNone;
    }
    if (tables_.reserved_macs.has(p.header.destination)) {
        return CpuReason::kReservedMac;
    }
    return is_trapped(tables_.traps, p.header) ? CpuReason::kTrap : CpuReason::kNone;
}

bool Forwarder::enter_vlan(Passage &p) {
    p.vlan = tables_.vlans.find(p.vid());
    if (p.vlan == nullptr) {
        return p.end(Drop::kVlanMissing);
    }
    return p.vlan->members.has(p.ingress) ? true : p.end(Drop::kNotMember);
}

// A port that does not forward lets no frame in, but one that is learning takes the frame's source.
bool Forwarder::admit(Passage &p) {
    const StpState state = tables_.stp.state_in_vlan(p.vid(), p.ingress);
    if (state >= StpState::kLearning && !(learn(p) && let_source_in(p))) {
        return false;
    }
    return state == StpState::kForwarding ? true : p.end(Drop::kStpBlocked);
}

/** Learns the frame's source, if the port learns. False if the frame is dropped for its source. */
bool Forwarder::learn(Passage &p) {
    const Mac source = p.header.source;
    if (source.is_group()) {
        return true;
    }
    const MacEntry *known = tables_.macs.find(source, p.vid());
    if (known != nullptr && known->drops_from) {
        return p.end(Drop::kFiltered);
    }
    Port &port = tables_.port(p.ingress);
    if (!port.learning.learns) {
        return true;
    }
    const Place place = tables_.place_of(p.ingress);
    if (known != nullptr && tables_.macs.refresh(*known, place, p.now)) {
        p.learned = Learned::kKnown;
        return true;
    }
    // The device's own software must not be shut out by what its ports have learned.
    if (p.ingress != kCpuPort && !may_learn(known, p, place)) {
        port.violations.remember(source, p.vid());
        p.learned = Learned::kOverLimit;
        return p.end(Drop::kLearnLimit);
    }
    p.learned = tables_.macs.learn(source, p.vid(), p.ingress, p.now, place.trunk);
    return true;
}

bool Forwarder::may_learn(const MacEntry *known, const Passage &p, const Place &place) const {
    if (known == nullptr) {
        return tables_.limits.allow_new(tables_.macs.counts(), p.vid(), place);
    }
    return known->is_static || known->place() == place || tables_.limits.allow_move(tables_.macs.counts(), place);
}

/** Whether the port lets the frame pass that comes from this source. */
bool Forwarder::let_source_in(Passage &p) {
    const LearnMode &mode = tables_.port(p.ingress).learning;
    if (mode.passes_unknown) {
        return true;
    }
    const MacEntry *source = tables_.macs.find(p.header.source, p.vid());
    if (source != nullptr && source->is_behind(p.ingress, tables_.trunk_of(p.ingress))) {
        return true;
    }
    // A neighbour that is not let in yet must still be able to ask for it.
    const bool is_told = mode.tells_cpu || p.header.destination.is_reserved();
    return is_told ? trap(p, CpuReason::kUnknownSource) : p.end(Drop::kUnknownSource);
}

bool Forwarder::snoop(Passage &p) {
    return p.ingress != kCpuPort && is_snooped(tables_.snooping, p.header) ? trap(p, CpuReason::kSnooped) : true;
}

// What a rule has redirected is not limited, and its destination does not matter.
bool Forwarder::limit_storm(Passage &p) {
    if (p.verdict.redirect) {
        return true;
    }
    p.entry = tables_.macs.find(p.header.destination, p.vid());
    p.storm = storm_type_of(p.header.destination, p.entry);
    return !p.storm || tables_.port(p.ingress).storm.admit(*p.storm, octets_of(p.header), p.now) ? true
                                                                                                 : p.end(Drop::kStorm);
}

bool Forwarder::forward(Passage &p) {
    if (p.verdict.redirect) {
        return redirect(p);
    }
    if (p.header.destination.is_group()) {
        return forward_group(p);
    }
    return p.entry == nullptr ? flood(p) : forward_to_entry(p);
}

/** The CPU alone gets the frame, unless it has a rule's copy already. */
bool Forwarder::trap(Passage &p, CpuReason reason) {
    p.way = Way::kToCpu;
    p.cpu_reason = reason;
    p.wanted = PortSet::of(kCpuPort);
    if (egress_limits(tables_, p).left_of(p.wanted).empty()) {
        return end_at_limit(p);
    }
    send(p, kCpuPort);
    return false;
}

/** Drops a frame that the limits on it leave no port. */
bool Forwarder::end_at_limit(Passage &p) const {
    return p.end(egress_limits(tables_, p).first_without(p.wanted).drop);
}

bool Forwarder::redirect(Passage &p) {
    p.way = Way::kRedirected;
    p.wanted = *p.verdict.redirect;
    return send_each(p, egress_limits(tables_, p).left_of(p.wanted));
}

bool Forwarder::forward_group(Passage &p) {
    if (is_always_flooded(p.header.destination) || !tables_.port(p.ingress).groups.uses_entries) {
        return flood(p);
    }
    if (p.entry != nullptr) {
        return send_to(p, Way::kGroup, with_whole_trunks(tables_.macs.ports_of(*p.entry)));
    }
    switch (miss_of(p)) {
        case GroupMiss::kDrop:
            return p.end(Drop::kUnknownGroup);
        case GroupMiss::kToCpu:
            return trap(p, CpuReason::kUnknownGroup);
        case GroupMiss::kFlood:
            break;
    }
    return flood(p);
}

GroupMiss Forwarder::miss_of(const Passage &p) const {
    const PortGroupRules &rules = tables_.port(p.ingress).groups;
    if (is_ipv4_group(p.header.destination) && tables_.group_rules.knows_ipv4 && rules.knows_ipv4) {
        return rules.ipv4_miss;
    }
    if (is_ipv6_group(p.header.destination) && tables_.group_rules.knows_ipv6) {
        return rules.ipv6_miss;
    }
    return GroupMiss::kFlood;
}

/** A group that has one port of a trunk has stations behind the trunk, and they are there by its other ports too. */
PortSet Forwarder::with_whole_trunks(PortSet ports) const {
    for (int number = 0; number < TrunkTable::kTrunks; ++number) {
        const Trunk *trunk = tables_.trunks.find(number);
        if (trunk != nullptr && !(trunk->ports() & ports).empty()) {
            ports |= trunk->member_set;
        }
    }
    return ports;
}

bool Forwarder::forward_to_entry(Passage &p) {
    const MacEntry &entry = *p.entry;
    if (entry.drops_to) {
        return p.end(Drop::kFiltered);
    }
    p.way = Way::kEntry;
    if (entry.place().is_trunk()) {
        return forward_to_trunk(p);
    }
    p.wanted.add(entry.port);
    return may_leave(tables_, p, entry.port) ? send(p, entry.port) : end_at_limit(p);
}

/** A trunk that is gone has no members. */
bool Forwarder::forward_to_trunk(Passage &p) {
    const Trunk *trunk = tables_.trunks.find(p.entry->trunk);
    if (trunk != nullptr) {
        p.wanted = trunk->member_set;
    }
    PortSet ports;
    p.wanted.for_each([&](int port) { ports.put(port, may_leave(tables_, p, port)); });
    return ports.empty() ? end_at_limit(p) : send(p, choose_member(p, *trunk, ports));
}

bool Forwarder::flood(Passage &p) {
    return send_to(p, Way::kFlooded, kAllPorts);
}

bool Forwarder::send_to(Passage &p, Way way, const PortSet &wanted) {
    p.way = way;
    p.wanted = wanted;
    PortSet ports = egress_limits(tables_, p).left_of(wanted);
    if (is_copied_to_cpu(tables_.snooping, p.header) && p.ingress != kCpuPort && tables_.up.has(kCpuPort)) {
        ports.add(kCpuPort);
    }
    return send_each(p, with_one_member_each(p, ports));
}

/** The neighbour at a trunk's other end gets one copy. */
PortSet Forwarder::with_one_member_each(const Passage &p, PortSet ports) const {
    for (int number = 0; number < TrunkTable::kTrunks; ++number) {
        const Trunk *trunk = tables_.trunks.find(number);
        if (trunk == nullptr) {
            continue;
        }
        const PortSet candidates = ports & trunk->member_set;
        if (!candidates.empty()) {
            ports -= candidates;
            ports.add(choose_member(p, *trunk, candidates));
        }
    }
    return ports;
}

/** @p among holds one member at least. */
int Forwarder::choose_member(const Passage &p, const Trunk &trunk, const PortSet &among) const {
    const uint32_t hash = flow_hash(p.header, p.vid(), trunk.layer(), tables_.hash_sides);
    int position = static_cast<int>(hash % static_cast<uint32_t>(among.size()));
    for (const int member : trunk.members) {
        if (among.has(member) && position-- == 0) {
            return member;
        }
    }
    return trunk.members.front();
}

/** The CPU may have a rule's copy already, and gets no other. */
bool Forwarder::send(Passage &p, int port) {
    if (!p.chosen.has(port)) {
        p.chosen.add(port);
        egress_.send(p, port);
    }
    return true;
}

bool Forwarder::send_each(Passage &p, const PortSet &ports) {
    if (ports.empty()) {
        return p.end(Drop::kNoDestination);
    }
    const PortSet missing = ports - p.chosen;
    p.chosen |= ports;
    missing.for_each([&](int port) { egress_.send(p, port); });
    return true;
}

}  // namespace vdevice::chip
