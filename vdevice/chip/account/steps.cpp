// Reads the steps out of the passage, in the order of Pipeline::process(), up to the one that ended the frame's way.
#include <algorithm>

#include "vdevice/chip/account/account.h"
#include "vdevice/chip/frame/ip_header.h"
#include "vdevice/chip/frame/ip_packet.h"
#include "vdevice/chip/frame/remark.h"

namespace vdevice::chip {
namespace {

std::array<uint8_t, 16> address_of(Bytes octets) {
    std::array<uint8_t, 16> address{};
    std::copy(octets.begin(), octets.end(), address.begin());
    return address;
}

std::optional<PacketRead> packet_of(const Header &header) {
    const std::optional<IpPacket> packet = read_ip_packet(header);
    if (!packet) {
        return std::nullopt;
    }
    PacketRead read{packet->is_version6(),
                    address_of(packet->source),
                    address_of(packet->destination),
                    packet->protocol,
                    dscp_of(header),
                    {}};
    const bool has_ports = packet->protocol == kTcp || packet->protocol == kUdp || packet->protocol == kSctp;
    if (has_ports && packet->fragment_offset == 0 && packet->payload.size() >= 2 * kPortBytes) {
        read.ports = {read16(packet->payload, 0), read16(packet->payload, kPortBytes)};
    }
    return read;
}

class Steps {
  public:
    Steps(const Tables &tables, const Passage &p) : tables_{tables}, p_{p} {
        [[maybe_unused]] const bool is_forwarded = came_in() && unwrapped() && read() && classified() &&
                                                   passed_traps() && entered_vlan() && admitted() && snooped() &&
                                                   looked_up() && forwarded();
        if (p.drop) {
            add(Dropped{*p.drop});
        }
    }

    std::vector<Step> take() { return std::move(steps_); }

  private:
    template <typename Kind>
    void add(Kind step) {
        steps_.emplace_back(std::move(step));
    }

    const Port &ingress() const { return tables_.port(p_.ingress); }
    bool is_dropped_for(Drop reason) const { return p_.drop == reason; }
    bool is_for_cpu_alone(CpuReason reason) const { return p_.cpu_reason == reason; }

    bool came_in() {
        add(CameIn{p_.ingress, p_.received.size(), p_.is_looped});
        const bool is_policed = is_dropped_for(Drop::kPoliced);
        const bool is_taken = !p_.frame.head.empty();
        if (ingress().policer.limit().rate != 0 && (is_taken || is_policed)) {
            add(IngressLimited{!is_policed});
        }
        return is_taken || is_dropped_for(Drop::kNoSwitchTag);
    }

    bool unwrapped() {
        if (p_.ingress != kCpuPort) {
            return true;
        }
        const std::optional<TransmitTag> tag = read_transmit_tag(p_.received);
        if (!tag) {
            return false;
        }
        const bool is_directed = p_.way == Way::kDirected;
        add(CpuTagRead{tag->opcode, is_directed ? p_.wanted : PortSet{}});
        if (is_directed) {
            add_header(read_header(p_.frame, kVlanTpid));
            add_way();
            for (const Drop drop : directed_drops(tables_, p_)) {
                add(Dropped{drop});
            }
        }
        return !is_directed;
    }

    // The passage has the DSCP that the frame leaves with; the frame as it came in has its own.
    bool read() {
        add_header(read_header(ingress().tags, p_.frame));
        const bool is_read = !p_.header.payload.empty();
        const bool is_attack = p_.drop >= Drop::kDosSameMac && p_.drop <= Drop::kDosFragment;
        if (is_read && !is_attack && tables_.filters_attacks && p_.ingress != kCpuPort) {
            add(AttackFilterPassed{});
        }
        return is_read && !is_attack;
    }

    void add_header(const std::optional<Header> &header) {
        if (header) {
            add(HeaderRead{header->destination, header->source,
                           header->tagged ? std::optional{header->tci} : std::nullopt, read16(header->payload, 0),
                           packet_of(*header)});
        }
    }

    bool classified() {
        add(VlanChosen{static_cast<Vid>(p_.own.tci & kVidMask), p_.own.vlan_by});
        add(PriorityChosen{priority_of(p_.own.tci), p_.own.priority_by, p_.own.dscp});
        for (const uint32_t entry : p_.verdict.rules.list()) {
            add_rule(entry);
        }
        const MissAction action = tables_.fields.miss_action(p_.ingress);
        if (p_.verdict.rules.list().empty() && (tables_.fields.table().has_rules() || action != MissAction::kNone)) {
            add(NoRuleMatched{action});
        }
        if (p_.tci != p_.own.tci || p_.verdict.dscp) {
            add(ChangedByRules{p_.vid(), priority_of(p_.tci), p_.verdict.dscp});
        }
        return !p_.verdict.drop;
    }

    void add_rule(uint32_t entry) {
        RuleMatched rule{entry, {}};
        tables_.fields.table().for_each_action(entry, [&](const Action &action) { rule.actions.push_back(action); });
        add(rule);
        for (const Action &action : rule.actions) {
            // A rule that drops asks no meter; of several meters the first one counts.
            if (action.kind == ActionKind::kMeter && !is_dropped_for(Drop::kRule) && !is_metered_) {
                is_metered_ = true;
                add(Metered{action.value, !is_dropped_for(Drop::kMeter)});
            }
        }
    }

    bool passed_traps() {
        const bool is_trapped = is_for_cpu_alone(CpuReason::kRule) || is_for_cpu_alone(CpuReason::kReservedMac) ||
                                is_for_cpu_alone(CpuReason::kTrap);
        return is_trapped ? for_cpu_alone() : true;
    }

    bool for_cpu_alone() {
        add(ForCpuAlone{p_.cpu_reason});
        return false;
    }

    bool entered_vlan() {
        if (p_.vlan == nullptr || is_dropped_for(Drop::kNotMember)) {
            return false;
        }
        add(VlanEntered{p_.vid()});
        return true;
    }

    bool admitted() {
        const StpState state = tables_.stp.state_in_vlan(p_.vid(), p_.ingress);
        add(SpanningTreeAsked{state});
        const bool is_filtered = is_dropped_for(Drop::kFiltered) && p_.entry == nullptr;
        if (state >= StpState::kLearning && !is_filtered) {
            add(SourceLearned{p_.learned, why_not_learned()});
        }
        if (is_for_cpu_alone(CpuReason::kUnknownSource)) {
            return for_cpu_alone();
        }
        return state == StpState::kForwarding && !is_filtered && !is_dropped_for(Drop::kLearnLimit) &&
               !is_dropped_for(Drop::kUnknownSource);
    }

    std::optional<NotLearned> why_not_learned() const {
        if (p_.learned == Learned::kNot) {
            return p_.header.source.is_group() ? NotLearned::kGroupSource : NotLearned::kPort;
        }
        return p_.learned == Learned::kOverLimit ? std::optional{limit_reached()} : std::nullopt;
    }

    NotLearned limit_reached() const {
        const LearnCounts &counts = tables_.macs.counts();
        const Place place = tables_.place_of(p_.ingress);
        if (!tables_.limits.allow_move(counts, place)) {
            return place.is_trunk() ? NotLearned::kTrunkLimit : NotLearned::kPortLimit;
        }
        return counts.in_vlan(p_.vid()) >= tables_.limits.of_vlan(p_.vid()) ? NotLearned::kVlanLimit
                                                                            : NotLearned::kDeviceLimit;
    }

    bool snooped() { return is_for_cpu_alone(CpuReason::kSnooped) ? for_cpu_alone() : true; }

    bool looked_up() {
        if (p_.verdict.redirect) {
            return true;
        }
        add(found());
        if (p_.storm && is_storm_limited(*p_.storm)) {
            add(StormLimited{*p_.storm, !is_dropped_for(Drop::kStorm)});
        }
        return !is_dropped_for(Drop::kStorm);
    }

    DestinationLookedUp found() const {
        if (p_.entry == nullptr) {
            return {Found::kNothing, 0, false};
        }
        const MacEntry &entry = *p_.entry;
        if (entry.is_group()) {
            return {Found::kGroup, 0, entry.is_static};
        }
        if (entry.drops_to) {
            return {Found::kFilter, 0, entry.is_static};
        }
        const Place place = entry.place();
        return place.is_trunk() ? DestinationLookedUp{Found::kTrunk, place.trunk, entry.is_static}
                                : DestinationLookedUp{Found::kPort, place.port, entry.is_static};
    }

    bool is_storm_limited(StormType type) const {
        const PortStorm &storm = ingress().storm;
        const auto holds = [&](StormType of) { return storm.of(of).enabled && storm.of(of).limiter.limit().rate != 0; };
        return holds(type) || (storm.is_in_joint(type) && holds(StormType::kJoint));
    }

    bool forwarded() {
        if (is_for_cpu_alone(CpuReason::kUnknownGroup)) {
            return for_cpu_alone();
        }
        add_way();
        return true;
    }

    void add_way() {
        if (p_.way != Way::kNone) {
            add(WayChosen{p_.way});
        }
    }

    const Tables &tables_;
    const Passage &p_;
    std::vector<Step> steps_;
    bool is_metered_ = false;
};

}  // namespace

std::vector<Drop> directed_drops(const Tables &tables, const Passage &p) {
    std::vector<Drop> drops;
    if (p.way == Way::kDirected) {
        (p.wanted - p.chosen).for_each([&](int port) {
            if (const auto drop = why_not_directed(tables, port)) {
                drops.push_back(*drop);
            }
        });
    }
    return drops;
}

std::vector<Step> steps_of(const Tables &tables, const Passage &p) {
    return Steps{tables, p}.take();
}

}  // namespace vdevice::chip
