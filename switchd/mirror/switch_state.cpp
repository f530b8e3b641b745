// What the chip does with frames that the CPU gets.
#include "switchd/mirror/switch_state.h"

#include <bit>

namespace switchd {
namespace {

/** RFC 1112: the first 25 bits. */
bool is_ipv4_group(const Mac &mac) {
    return mac[0] == 0x01 && mac[1] == 0 && mac[2] == 0x5E && mac[3] < 0x80;
}

/** RFC 2464: the first 16 bits. */
bool is_ipv6_group(const Mac &mac) {
    return mac[0] == 0x33 && mac[1] == 0x33;
}

}  // namespace

bool is_always_flooded(const Mac &mac) {
    constexpr Mac kAllNodes{0x33, 0x33, 0, 0, 0, 1};
    return mac == kAllNodes || (is_ipv4_group(mac) && mac[3] == 0 && mac[4] == 0);
}

bool is_for_cpu_alone(const SwitchState &state, uint16_t vid, const Mac &destination) {
    const auto vlan = state.vlans.find(vid);
    if (vlan == state.vlans.end() || std::popcount(vlan->second.members & ~kCpuAlone) <= 1) {
        return true;
    }
    const bool goes_to_cpu = (is_ipv4_group(destination) && state.unknown_ipv4_groups == ADP_MCAST_MISS_TO_CPU) ||
                             (is_ipv6_group(destination) && state.unknown_ipv6_groups == ADP_MCAST_MISS_TO_CPU);
    return goes_to_cpu && !is_always_flooded(destination) && !state.groups.contains({vid, destination});
}

}  // namespace switchd
