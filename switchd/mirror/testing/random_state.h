// For tests: random states of the switch, few enough VLANs and ports that they meet often.
#pragma once

#include <stdint.h>

#include <random>
#include <vector>

#include "switchd/mirror/switch_state.h"
#include "switchd/mirror/wanted.h"

namespace switchd::test {

/** The VLANs that random states may have besides those of ports that are alone. */
inline const std::vector<uint16_t> kRandomVids = {1, 10, 20, 30, 40, 50, 60, 4094};

class RandomState {
  public:
    /** What closes a port is known only to the process that did it. */
    explicit RandomState(uint32_t seed, bool may_close = true) : random_{seed}, may_close_{may_close} {}

    SwitchState operator()() {
        SwitchState state = wanted_of({}, {}).state;
        std::vector<TreeStates> trees(3);
        for (size_t i = 1; i < trees.size(); ++i) {
            for_each(some_ports(), [&](uint32_t port) { trees[i][port] = static_cast<adp_stg_state>(below(4)); });
        }
        for (const uint16_t vid : kRandomVids) {
            if (below(4) != 0) {
                const IntfSet members = some_ports() | kCpuAlone;
                state.vlans[vid] = {members, members & some_ports(), trees[below(trees.size())]};
            }
        }
        for (uint32_t port = 1; port <= kPorts; ++port) {
            state.ports[port] = {some_vid(state), static_cast<Learning>(below(may_close_ ? 3 : 2)),
                                 some_ports() | kCpuAlone};
        }
        for (uint32_t i = below(8); i > 0; --i) {
            state.addresses[{some_vid(state), {0x02, 0, 0, 0, 0, static_cast<uint8_t>(below(8))}}] = below(kPorts + 1);
            state.groups[{some_vid(state), {0x01, 0, 0x5E, 1, 1, static_cast<uint8_t>(below(8))}}] = some_ports();
        }
        state.ageing_seconds = 1 + below(3);
        state.igmp_to_cpu = below(2) != 0;
        state.mld_to_cpu = below(2) != 0;
        state.unknown_ipv4_groups = below(2) != 0 ? ADP_MCAST_MISS_TO_CPU : ADP_MCAST_MISS_FLOOD;
        state.unknown_ipv6_groups = below(2) != 0 ? ADP_MCAST_MISS_TO_CPU : ADP_MCAST_MISS_FLOOD;
        return state;
    }

  private:
    static constexpr uint32_t kPorts = 6;

    uint32_t below(size_t limit) { return static_cast<uint32_t>(random_() % limit); }
    IntfSet some_ports() { return below(IntfSet{1} << (kPorts + 1)) & ~kCpuAlone; }
    uint16_t some_vid(const SwitchState &state) {
        return std::next(state.vlans.begin(), static_cast<ptrdiff_t>(below(state.vlans.size())))->first;
    }

    std::mt19937 random_;
    bool may_close_;
};

}  // namespace switchd::test
