// Spanning-tree groups (IEEE 802.1Q, multiple spanning trees): each VLAN id is in one of them, and each port has a
// state in each of them. The CPU port is not part of any tree and always forwards.
#pragma once

#include <stdint.h>
#include <array>
#include <vector>

#include "vdevice/chip/frame/chip_ports.h"
#include "vdevice/chip/frame/frame.h"

namespace vdevice::chip {

/** Ordered by what they let pass; the numbers are those of the driver calls. */
enum class StpState : uint8_t {
    kDisabled,
    kBlocking,
    kListening,
    kLearning,   /**< sources are learned, but nothing passes */
    kForwarding, /**< the only state in which frames come in and leave */
};

constexpr uint32_t kStpStates = 5;

class StpGroups {
  public:
    static constexpr int kGroups = 16;
    static constexpr int kDefault = 0; /**< always there; holds every VLAN that is in no other group */

    explicit StpGroups(const ChipPorts &ports);

    /** Removes all groups but the default one, and lets all ports forward. */
    void reset();
    /** A new group has no VLANs, and all ports forward in it. */
    Status create(int64_t group);
    /** Its VLANs return to the default group. */
    Status destroy(int64_t group);
    /** Takes the VLAN from the group that it is in. The id is enough: the VLAN may be created later. */
    Status add_vlan(int64_t group, uint32_t vid);
    /** Returns the VLAN, which must be in the group, to the default group. */
    Status remove_vlan(int64_t group, uint32_t vid);
    Status set_state(int64_t group, int64_t port, uint32_t state);
    /** kOk, or why there is no such group. */
    Status check(int64_t group) const;
    const ChipPorts &ports() const { return ports_; }

    std::vector<int> list() const;
    /** The ids of the group's VLANs, ascending. */
    std::vector<Vid> vlans(int group) const;
    int group_of(Vid vid) const { return group_of_[vid & kVidMask]; }
    /** Group and port must exist. */
    StpState state(int group, int port) const { return at(group).states[static_cast<size_t>(port)]; }
    /** The ports that forward in a group that exists. */
    const PortSet &forwarding(int group) const { return at(group).forwarding; }

    StpState state_in_vlan(Vid vid, int port) const { return state(group_of(vid), port); }
    const PortSet &forwarding_in_vlan(Vid vid) const { return forwarding(group_of(vid)); }

  private:
    struct Group {
        bool exists = false;
        std::array<StpState, PortSet::kSize> states{};
        PortSet forwarding; /**< the ports whose state is kForwarding */
    };

    const Group &at(int group) const { return groups_[static_cast<size_t>(group)]; }
    Group &at(int64_t group) { return groups_[static_cast<size_t>(group)]; }
    Group new_group() const;

    ChipPorts ports_;
    std::array<Group, kGroups> groups_;
    std::array<uint8_t, kVidMask + 1U> group_of_{};
};

}  // namespace vdevice::chip
