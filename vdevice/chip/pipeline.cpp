// The way of a frame: ingress VLAN, learning, forwarding, egress tag. What is dropped is counted with its reason on
// the port that it came in on.
#include "vdevice/chip/dos_filter.h"
#include "vdevice/chip/egress.h"
#include "vdevice/chip/switch.h"

namespace vdevice::chip {
namespace {

/** How many frames one received frame may bring back by loopback. */
constexpr std::size_t kMaxLooped = 64;

std::size_t cast_index(Bytes frame) {
    const Mac destination = Mac::at(frame, 0);
    const Cast cast = destination.is_broadcast() ? Cast::kBroadcast
                      : destination.is_group()   ? Cast::kMulticast
                                                 : Cast::kUnicast;
    return static_cast<std::size_t>(cast);
}

}  // namespace

void Switch::receive(Time now, int port, Bytes frame) {
    if (!has_port(port)) {
        return;
    }
    send_until(now);
    if (at(port).loopback != 0) {
        drop(port, Drop::kLoopback);
    } else {
        take_in(now, port, frame);
        take_looped(now);
    }
    // What is within its port's rate leaves at once.
    send_until(now);
    announce_departure();
}

void Switch::take_in(Time now, int port, Bytes frame) {
    if (!at(port).is_up()) {
        return drop(port, Drop::kPortDown);
    }
    PortCounters &counters = at(port).counters;
    ++counters.rx_frames;
    counters.rx_octets += frame.size();
    if (frame.size() < kHeaderBytes) {
        return drop(port, Drop::kRunt);
    }
    ++counters.rx_casts[cast_index(frame)];
    if (frame.size() > at(port).longest_frame()) {
        return drop(port, Drop::kOversize);
    }
    mirror_ingress(port, frame);
    if (!passes_policer(now, port, frame.size())) {
        return;
    }
    if (port == kCpuPort) {
        return receive_from_cpu(now, frame);
    }
    forward(now, port, split_frame(frame));
}

// A looped frame may be looped again, by another port and endlessly: the list grows while it is worked off, but only
// up to its limit.
void Switch::take_looped(Time now) {
    std::size_t next = 0;
    while (next < looped_.size()) {
        const Looped looped = std::move(looped_[next++]);
        take_in(now, looped.port, looped.octets);
    }
    looped_.clear();
}

void Switch::loop_back(int port, const Frame &frame) {
    if (looped_.size() >= kMaxLooped) {
        return drop(port, Drop::kLoopback);
    }
    std::vector<std::uint8_t> octets(frame.size());
    frame.copy_to(octets.data());
    looped_.push_back({port, std::move(octets)});
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
    const Port &port = at(ingress);
    std::optional<Header> header = read_header(port.tags, frame);
    if (!header) {
        return drop(ingress, Drop::kRunt);
    }
    if (filters_attacks_ && ingress != kCpuPort) {
        if (const std::optional<Drop> attack = find_attack(*header)) {
            return drop(ingress, *attack);
        }
    }
    const FieldVerdict verdict = apply_rules(now, ingress, frame, classify(ingress, *header), *header);
    if (verdict.drop) {
        return drop(ingress, *verdict.drop);
    }
    EgressForms forms{frame.head, header->payload, verdict.tci, port.tags.tpid};
    // Between neighbours VLANs do not matter, nor does what else a port lets pass.
    if (verdict.to_cpu_only || (ingress != kCpuPort && is_for_cpu_alone(*header))) {
        return trap(ingress, forms);
    }
    switch_in_vlan(now, ingress, *header, forms, verdict);
}

void Switch::switch_in_vlan(Time now, int ingress, const Header &header, EgressForms &forms,
                            const FieldVerdict &verdict) {
    const bool copied = verdict.copy_to_cpu && copy_to_cpu(ingress, forms);
    const Vid vid = verdict.tci & kVidMask;
    const Vlan *vlan = vlans_.find(vid);
    if (vlan == nullptr) {
        return drop(ingress, Drop::kVlanMissing);
    }
    if (!vlan->members.has(ingress)) {
        return drop(ingress, Drop::kNotMember);
    }
    const Flow flow{ingress, vid, *vlan, header, forms, copied};
    if (!let_in(now, flow)) {
        return;
    }
    if (ingress != kCpuPort && is_snooped(snooping_, header)) {
        return hand_over(flow);
    }
    if (verdict.redirect) {
        return redirect(flow, *verdict.redirect);
    }
    const MacEntry *entry = macs_.find(header.destination, vid);
    if (!passes_storm_control(now, flow, entry)) {
        return;
    }
    if (header.destination.is_group()) {
        return forward_group(flow);
    }
    if (entry == nullptr) {
        return flood(flow);
    }
    forward_to_entry(flow, *entry);
}

/** A port that does not forward lets no frame in, but one that is learning takes the frame's source. */
bool Switch::let_in(Time now, const Flow &flow) {
    const StpState state = stp_.state_in_vlan(flow.vid, flow.ingress);
    if (state >= StpState::kLearning && !admit(now, flow)) {
        return false;
    }
    if (state != StpState::kForwarding) {
        drop(flow.ingress, Drop::kStpBlocked);
        return false;
    }
    return true;
}

bool Switch::admit(Time now, const Flow &flow) {
    const LearnMode &mode = at(flow.ingress).learning;
    const Mac source = flow.header.source;
    const int trunk = trunk_of(flow.ingress);
    if (!take_source(now, flow)) {
        return false;
    }
    if (mode.passes_unknown) {
        return true;
    }
    const MacEntry *entry = macs_.find(source, flow.vid);
    if (entry != nullptr && entry->is_behind(flow.ingress, trunk)) {
        return true;
    }
    // A neighbour that is not let in yet must still be able to ask for it.
    if (!mode.tells_cpu && !flow.header.destination.is_reserved()) {
        drop(flow.ingress, Drop::kUnknownSource);
    } else {
        hand_over(flow);
    }
    return false;
}

bool Switch::is_for_cpu_alone(const Header &header) const {
    return reserved_macs_.has(header.destination) || is_trapped(traps_, header);
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

void Switch::forward_to_entry(const Flow &flow, const MacEntry &entry) {
    if (entry.drops_to) {
        return drop(flow.ingress, Drop::kFiltered);
    }
    if (entry.is_behind(flow.ingress, trunk_of(flow.ingress))) {
        return drop(flow.ingress, Drop::kSamePort);
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
    const std::uint32_t hash = flow_hash(flow.header, flow.vid, trunk.layer(), hash_sides_);
    int position = static_cast<int>(hash % static_cast<std::uint32_t>(among.size()));
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

void Switch::send_directed(const TransmitTag &tag, const Frame &frame) {
    if (!tag.names_one_port() && !tag.names_ports()) {
        return drop(kCpuPort, Drop::kBadOpcode);
    }
    const Vlan *vlan = nullptr;
    std::optional<EgressForms> forms;
    const auto header = read_header(frame, kVlanTpid);
    const std::uint32_t priority = header ? priority_of(classify(kCpuPort, *header).tci) : 0;
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
    } else if (tag.destination < static_cast<std::uint32_t>(kPorts)) {
        send_to(static_cast<int>(tag.destination));
    } else {
        drop(kCpuPort, Drop::kDirectedToUnknown);
    }
}

void Switch::send_directed_to(int egress, const Frame &frame, std::uint32_t priority) {
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

void Switch::transmit(int port, const Frame &frame, std::uint32_t priority) {
    put_out(port, frame, {priority, Origin::kSwitched});
}

void Switch::put_out(int port, const Frame &frame, Dispatch dispatch) {
    const std::size_t queue = queue_map_.queue_of(port, dispatch.priority);
    // The chip's own tags may make a frame of full length longer; only the limit without jumbo frames is a port's own.
    if (!at(port).jumbo && frame.size() > kMaxPlainFrameBytes) {
        ++at(port).counters.tx_too_long;
    } else if (queues_.holds(port) && at(port).loopback == 0) {
        queues_.put(now_, port, queue, frame, dispatch);
    } else {
        queues_.pass(port, queue, frame.size());
        leave(port, frame, dispatch);
    }
}

void Switch::leave(int port, const Frame &frame, Dispatch dispatch) {
    PortCounters &counters = at(port).counters;
    ++counters.tx_frames;
    counters.tx_octets += frame.size();
    ++counters.tx_casts[cast_index(frame.head)];
    if (at(port).loopback != 0) {
        loop_back(port, frame);
    } else {
        sink_.transmit(port, frame);
    }
    if (dispatch.origin == Origin::kSwitched) {
        mirror_egress(port, frame, dispatch.priority);
    }
}

void Switch::drop(int port, Drop reason) {
    ++at(port).counters.drops[static_cast<std::size_t>(reason)];
}

}  // namespace vdevice::chip
