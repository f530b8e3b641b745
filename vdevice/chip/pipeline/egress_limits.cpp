// Which limits hold on which way of a frame.
#include "vdevice/chip/pipeline/egress_limits.h"

namespace vdevice::chip {
namespace {

/** A frame does not return to where it came from: to its port, and within a VLAN to any port of its trunk. */
void add_origin(EgressLimits &limits, const Tables &tables, const Passage &p) {
    const Place origin = tables.place_of(p.ingress);
    if (p.way == Way::kEntry) {
        if (p.entry->place() == origin) {
            limits.add(PortSet{}, origin.is_trunk() ? Unsent::kSameTrunk : Unsent::kIngress, Drop::kSamePort);
        }
        return;
    }
    limits.add(kAllPorts - PortSet::of(p.ingress), Unsent::kIngress, Drop::kSamePort);
    if (const Trunk *trunk = tables.trunks.find(origin.trunk); trunk != nullptr && p.way != Way::kRedirected) {
        limits.add(kAllPorts - trunk->member_set, Unsent::kSameTrunk, Drop::kSamePort);
    }
}

}  // namespace

// A rule's redirection does not ask for the VLAN's members nor for isolation, but a loop that spanning tree has cut
// must not be closed again by it.
EgressLimits egress_limits(const Tables &tables, const Passage &p) {
    const bool is_switched = p.way == Way::kEntry || p.way == Way::kGroup || p.way == Way::kFlooded;
    EgressLimits limits;
    add_origin(limits, tables, p);
    if (is_switched) {
        limits.add(p.vlan->members, Unsent::kNotMember, Drop::kEgressNotMember);
    }
    limits.add(tables.up, Unsent::kDown, Drop::kEgressDown);
    if (is_switched) {
        limits.add(kAllPorts - tables.standby, Unsent::kStandby, Drop::kEgressDown);
    }
    if (is_switched || p.way == Way::kRedirected) {
        limits.add(tables.stp.forwarding_in_vlan(p.vid()), Unsent::kStpBlocked, Drop::kStpEgress);
    }
    if (is_switched) {
        limits.add(tables.port(p.ingress).egress, Unsent::kIsolated, Drop::kIsolated);
    }
    return limits;
}

std::optional<Drop> why_not_directed(const Tables &tables, int port) {
    if (port == kCpuPort) {
        return Drop::kDirectedToCpu;
    }
    if (!is_chip_port(port)) {
        return Drop::kDirectedToUnknown;
    }
    return tables.up.has(port) ? std::nullopt : std::optional{Drop::kEgressDown};
}

std::optional<Unsent> why_unsent(const Tables &tables, const Passage &p, int port) {
    if (p.chosen.has(port)) {
        return std::nullopt;
    }
    if (!p.wanted.has(port)) {
        return Unsent::kNotWanted;
    }
    const EgressLimits limits = egress_limits(tables, p);
    for (const EgressLimit &limit : limits.list()) {
        if (!limit.ports.has(port)) {
            return limit.reason;
        }
    }
    return Unsent::kOtherMember;
}

}  // namespace vdevice::chip
