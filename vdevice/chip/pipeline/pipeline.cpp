// The way of a frame into the chip, until it is known where it goes. What is dropped is counted with its reason on the
// port that it came in on.
#include "vdevice/chip/frame/egress_forms.h"
#include "vdevice/chip/switch.h"
#include "vdevice/chip/tables/dos_filter.h"

namespace vdevice::chip {
namespace {

/** How many frames one received frame may bring back by loopback. */
constexpr size_t kMaxLooped = 64;

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
    ++counters.rx_casts[static_cast<size_t>(cast_of(Mac::at(frame, 0)))];
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
    size_t next = 0;
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
    std::vector<uint8_t> octets(frame.size());
    frame.copy_to(octets.data());
    looped_.push_back({port, std::move(octets)});
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

void Switch::drop(int port, Drop reason) {
    ++at(port).counters.drops[static_cast<size_t>(reason)];
}

}  // namespace vdevice::chip
