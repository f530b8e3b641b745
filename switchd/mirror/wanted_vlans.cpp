// Of the wanted state: the VLANs, their members and spanning-tree states, and the ports' own VLANs.
#include "switchd/mirror/draft.h"

namespace switchd {
namespace {

/** How a port of a bridge is in one of its VLANs. */
struct Membership {
    uint16_t vid = 0;        /**< in the chip */
    uint16_t kernel_vid = 0; /**< in the kernel's tables */
    bool untagged = false;
    bool pvid = false;
};

/**
 * The spanning-tree state that a port of a bridge gets; nothing if it is to be out of the VLAN. A port without carrier
 * is disabled. Where a spanning tree runs it is blocked then, so that it is when the cable comes. Elsewhere it may
 * forward, as the kernel lets it at once.
 */
std::optional<adp_stg_state> tree_state_of(const Link &port, const Link &bridge) {
    if (!port.up || !bridge.up) {
        return std::nullopt;
    }
    switch (port.port.value_or(BridgePort{}).state) {
        case PortState::kForwarding:
            return ADP_STG_STATE_FORWARDING;
        case PortState::kLearning:
            return ADP_STG_STATE_LEARNING;
        case PortState::kListening:
            return ADP_STG_STATE_LISTENING;
        case PortState::kDisabled:
            if (!bridge.bridge->stp) {
                return port.carrier ? std::nullopt : std::optional{ADP_STG_STATE_FORWARDING};
            }
            break;
        case PortState::kBlocking:
            break;
    }
    return ADP_STG_STATE_BLOCKING;
}

class Vlans {
  public:
    explicit Vlans(Draft &draft) : draft_{draft}, state_{draft.wanted.state} {}

    void add() {
        add_internal();
        for (const auto &[vid, bridge] : draft_.owners) {
            state_.vlans[vid].members = kCpuAlone;
        }
        for (const Member &member : draft_.members) {
            add_to_bridge(member);
        }
        for (const Member &member : draft_.members) {
            add_standalone(member);
        }
        set_aside_standalone();
    }

  private:
    /** They exist always: their presence tells a chip that was set up before. */
    void add_internal() {
        for (uint32_t port = 1; port <= draft_.plan.user_ports; ++port) {
            const uint16_t vid = draft_.plan.internal_vid_of(port);
            state_.vlans[vid].members = kCpuAlone;
            state_.ports[port] = {.pvid = vid, .learning = Learning::kOn, .may_send_to = draft_.plan.all()};
        }
    }

    void add_to_bridge(const Member &member) {
        if (member.bridge == 0) {
            return;
        }
        if (draft_.link(member.bridge).bridge->vlan_filtering) {
            return add_to_aware(member);
        }
        const auto bridge = draft_.wanted.bridges.find(member.bridge);
        if (bridge == draft_.wanted.bridges.end()) {
            return;
        }
        const bool is_tagged = member.port.vid != 0;
        if (is_tagged && member.port.vid != bridge->second) {
            return draft_.remark(member.link->name, "is left to the kernel: " + draft_.link(member.bridge).name +
                                                        " stands for VLAN " + std::to_string(bridge->second));
        }
        join(member, {bridge->second, 0, !is_tagged, !is_tagged});
        hold(member, bridge->second);
    }

    void add_to_aware(const Member &member) {
        if (member.port.vid != 0) {
            return draft_.remark(member.link->name,
                                 "is left to the kernel: its bridge is aware of VLANs, and looks at tags itself");
        }
        for (const BridgeVlan &vlan : member.link->vlans) {
            if (draft_.chip_vid_of(member.bridge, vlan.vid)) {
                join(member, {vlan.vid, vlan.vid, vlan.untagged, vlan.pvid});
            }
        }
        bridged_ |= member.ports;
        draft_.served[member.interface] = &member;
        // A port has one state in all of the bridge's VLANs, and so they can share a group of the chip.
        for (const auto &[vid, owner] : draft_.owners) {
            if (owner == member.bridge) {
                hold(member, vid);
            }
        }
    }

    void join(const Member &member, const Membership &how) {
        if ((joined_[how.vid] & member.ports) != 0) {
            return;  // what is said of the VLAN of a tagged interface is said of this one, too
        }
        joined_[how.vid] |= member.ports;
        draft_.served[member.interface] = &member;
        const auto state = tree_state_of(*member.link, draft_.link(member.bridge));
        draft_.wanted.places[{how.vid, member.port.intf}] = {member.interface, member.bridge, how.kernel_vid,
                                                             state == ADP_STG_STATE_FORWARDING};
        if (member.port.vid == 0) {
            bridged_ |= member.ports;
        }
        if (how.pvid) {
            for_each(member.ports, [&](uint32_t port) { state_.ports[port].pvid = how.vid; });
        }
        if (state) {
            state_.vlans[how.vid].members |= member.ports;
            state_.vlans[how.vid].untagged |= how.untagged ? member.ports : 0;
        }
    }

    void hold(const Member &member, uint16_t vid) {
        const auto state = tree_state_of(*member.link, draft_.link(member.bridge));
        if (state.value_or(ADP_STG_STATE_FORWARDING) == ADP_STG_STATE_FORWARDING ||
            !draft_.served.contains(member.interface)) {
            return;
        }
        for_each(member.ports, [&](uint32_t port) { state_.vlans[vid].not_forwarding[port] = *state; });
    }

    /** Frames with a tag, of an interface that the chip bridges with no other. */
    void add_standalone(const Member &member) {
        if (member.port.vid == 0 || !member.link->up || draft_.served.contains(member.interface)) {
            return;
        }
        const std::string taken = draft_.why_taken(member.port.vid);
        if (taken.empty()) {
            draft_.owners[member.port.vid] = member.interface;
            state_.vlans[member.port.vid].members = kCpuAlone | member.ports;
        } else if (member.link->up) {  // nobody misses its frames before
            draft_.remark(member.link->name, "gets no frames: " + taken);
        }
    }

    /** The ports of a group are one place to the frames' way to its interface, so they have one VLAN. */
    void set_aside_standalone() {
        IntfSet alone = draft_.plan.all() & ~kCpuAlone & ~bridged_;
        for (const auto &[intf, ports] : draft_.plan.groups) {
            set_aside(intf, ports & alone);
            alone &= ~ports;
        }
        for_each(alone, [&](uint32_t port) { set_aside(port, set_of(port)); });
    }

    void set_aside(uint32_t intf, IntfSet ports) {
        const uint16_t vid = draft_.plan.internal_vid_of(intf);
        state_.vlans[vid] = {kCpuAlone | ports, ports, {}};
        for_each(ports, [&](uint32_t port) { state_.ports[port].pvid = vid; });
    }

    Draft &draft_;
    SwitchState &state_;
    std::map<uint16_t, IntfSet> joined_; /**< also ports that are down */
    IntfSet bridged_ = 0;                /**< ports whose untagged frames are a bridge's */
};

}  // namespace

void add_vlans(Draft &draft) {
    Vlans{draft}.add();
}

}  // namespace switchd
