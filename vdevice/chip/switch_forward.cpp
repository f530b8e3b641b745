// Where a frame goes within its VLAN, and in which form.
#include "vdevice/chip/frame/egress_forms.h"
#include "vdevice/chip/switch.h"

namespace vdevice::chip {

/** Nothing keeps the frame from the port. */
bool Switch::may_leave(int egress, const Flow &flow) const {
    return flow.vlan.members.has(egress) && up_.has(egress) && !standby_.has(egress) &&
           stp_.forwarding_in_vlan(flow.vid).has(egress) && port(flow.ingress).egress.has(egress);
}

void Switch::forward_to_entry(const Flow &flow, const MacEntry &entry) {
    if (entry.drops_to) {
        return drop(flow.ingress, Drop::kFiltered);
    }
    if (entry.is_behind(flow.ingress, trunk_of(flow.ingress))) {
        return drop(flow.ingress, Drop::kSamePort);
    }
    if (!entry.place().is_trunk() && may_leave(entry.port, flow)) {
        return send_in_vlan(entry.port, flow);
    }
    const Trunk *trunk = trunks_.find(entry.trunk);
    PortSet ports = trunk != nullptr ? trunk->member_set() : PortSet{};
    if (!entry.place().is_trunk()) {
        ports.add(entry.port);
    }
    const PortSet usable = up_ - standby_;
    const struct {
        const PortSet &set;
        Drop reason;
    } limits[] = {{flow.vlan.members, Drop::kEgressNotMember},
                  {usable, Drop::kEgressDown},
                  {stp_.forwarding_in_vlan(flow.vid), Drop::kStpEgress},
                  {at(flow.ingress).egress, Drop::kIsolated}};
    for (const auto &limit : limits) {
        ports &= limit.set;
        if (ports.empty()) {
            return drop(flow.ingress, limit.reason);
        }
    }
    send_in_vlan(trunk == nullptr ? entry.port : choose_member(flow, *trunk, ports), flow);
}

void Switch::flood(const Flow &flow) {
    send_to(flow, all_ports());
}

/** Sends the frame to those of the ports that may have it. */
void Switch::send_to(const Flow &flow, const PortSet &wanted) {
    PortSet ports = (wanted & flow.vlan.members & up_ & at(flow.ingress).egress) - standby_;
    ports &= stp_.forwarding_in_vlan(flow.vid);
    if (is_copied_to_cpu(snooping_, flow.header)) {
        ports |= PortSet::of(kCpuPort) & up_;
    }
    ports.remove(flow.ingress);
    for (int number = 0; number < TrunkTable::kTrunks; ++number) {
        const Trunk *trunk = trunks_.find(number);
        if (trunk == nullptr || trunk->members.empty()) {
            continue;
        }
        // One copy for the neighbour at the trunk's other end, none for the one that the frame came from.
        const PortSet members = trunk->member_set();
        const PortSet candidates = ports & members;
        ports -= members;
        if (number != trunk_of(flow.ingress) && !candidates.empty()) {
            ports.add(choose_member(flow, *trunk, candidates));
        }
    }
    if (ports.empty()) {
        return drop(flow.ingress, Drop::kNoDestination);
    }
    ports.for_each([&](int egress) { send_in_vlan(egress, flow); });
}

/** @p among holds one member at least. */
int Switch::choose_member(const Flow &flow, const Trunk &trunk, const PortSet &among) const {
    const uint32_t hash = flow_hash(flow.header, flow.vid, trunk.layer(), hash_sides_);
    int position = static_cast<int>(hash % static_cast<uint32_t>(among.size()));
    for (const int member : trunk.members) {
        if (among.has(member) && position-- == 0) {
            return member;
        }
    }
    return trunk.members.front();
}

void Switch::send_in_vlan(int egress, const Flow &flow) {
    if (egress == kCpuPort) {
        if (!flow.cpu_has_copy) {
            transmit(egress, flow.forms.for_cpu(flow.ingress), flow.forms.priority());
        }
        return;
    }
    transmit(egress, form_for(egress, flow.vlan, flow.forms), flow.forms.priority());
}

/** The frame as the port sends it. A service's tag never reaches a customer. */
Frame Switch::form_for(int egress, const Vlan &vlan, EgressForms &forms) const {
    const PortTags &tags = port(egress).tags;
    if (vlan.untagged.has(egress) || tags.mode == DoubleTag::kExternal) {
        return forms.untagged();
    }
    return forms.tagged(tags.tpid, tag_rules_.on_egress(egress, forms.tci()));
}

}  // namespace vdevice::chip
