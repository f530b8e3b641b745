// What the mirror sets in the chip, as plain data: the same form for what is wanted and for what is there.
#pragma once

#include <adp/l2.h>
#include <adp/stg.h>
#include <stdint.h>

#include <compare>
#include <map>
#include <optional>

#include "switchd/kernel/kernel_state.h"

namespace switchd {

constexpr uint16_t kFirstVid = 1;
constexpr uint16_t kLastVid = 4094;

/** Interfaces of the switch: bit 0 for the CPU port, bit n for user port n. */
using IntfSet = uint32_t;

constexpr uint32_t kCpuIntf = 0;
constexpr IntfSet set_of(uint32_t intf) {
    return IntfSet{1} << intf;
}
constexpr IntfSet kCpuAlone = set_of(kCpuIntf);
constexpr bool has(IntfSet set, uint32_t intf) {
    return (set >> intf & 1) != 0;
}
/** The CPU port and the user ports up to @p last. */
constexpr IntfSet all_up_to(uint32_t last) {
    return (IntfSet{2} << last) - 1;
}
template <typename Visit>
void for_each(IntfSet set, Visit visit) {
    for (uint32_t intf = 0; set != 0; ++intf, set >>= 1) {
        if ((set & 1) != 0) {
            visit(intf);
        }
    }
}

/** The spanning-tree states of the user ports that do not forward. */
using TreeStates = std::map<uint32_t, adp_stg_state>;

inline adp_stg_state state_of(const TreeStates &states, uint32_t port) {
    const auto found = states.find(port);
    return found == states.end() ? ADP_STG_STATE_FORWARDING : found->second;
}

struct VlanState {
    IntfSet members = 0;
    IntfSet untagged = 0;
    TreeStates not_forwarding; /**< also of ports that are no members */

    bool operator==(const VlanState &) const = default;
};

/** What becomes of addresses that a port does not know. */
enum class Learning : uint8_t {
    kOn,
    kOff,   /**< they pass and are not learned */
    kClosed /**< they do not pass; a static address does */
};

struct PortSettings {
    uint16_t pvid = 0;
    Learning learning = Learning::kOn;
    IntfSet may_send_to = 0;

    bool operator==(const PortSettings &) const = default;
};

struct VlanMac {
    uint16_t vid = 0;
    Mac mac{};

    auto operator<=>(const VlanMac &) const = default;
};

struct SwitchState {
    std::map<uint16_t, VlanState> vlans;
    std::map<uint32_t, PortSettings> ports; /**< of each user port */
    std::map<VlanMac, uint32_t> addresses;  /**< static ones: the interface that each is behind */
    std::map<VlanMac, IntfSet> groups;
    uint32_t ageing_seconds = 300;
    bool igmp_to_cpu = false;
    bool mld_to_cpu = false;
    std::optional<adp_mcast_miss> unknown_ipv4_groups; /**< nothing if it is not known: the chip cannot be asked */
    std::optional<adp_mcast_miss> unknown_ipv6_groups;

    bool operator==(const SwitchState &) const = default;
};

}  // namespace switchd
