// Settings for frames to groups of stations, with and without an entry of the group.
#pragma once

#include <stdint.h>
#include <optional>

#include "vdevice/chip/frame/frame.h"

namespace vdevice::chip {

/** What happens to an IP multicast frame whose group has no entry. The numbers are the driver's. */
enum class GroupMiss : uint32_t { kFlood = 0, kDrop = 1, kToCpu = 2 };

constexpr std::optional<GroupMiss> find_group_miss(uint32_t number) {
    if (number > static_cast<uint32_t>(GroupMiss::kToCpu)) {
        return std::nullopt;
    }
    return static_cast<GroupMiss>(number);
}

/** A port's settings for the frames that come in on it. */
struct PortGroupRules {
    bool uses_entries = true; /**< frames follow their group's entry; otherwise they are flooded */
    bool knows_ipv4 = true;   /**< ipv4_miss applies */
    GroupMiss ipv4_miss = GroupMiss::kFlood;
    GroupMiss ipv6_miss = GroupMiss::kFlood;
};

/** The whole chip's settings. */
struct GroupRules {
    bool knows_ipv4 = true;
    bool knows_ipv6 = true;
};

/** The address of an IPv4 group (RFC 1112). */
inline bool is_ipv4_group(Mac mac) {
    constexpr uint64_t kPrefix = 0x01005E000000 >> 23;
    return mac.value() >> 23 == kPrefix;
}

/** The address of an IPv6 group (RFC 2464). */
inline bool is_ipv6_group(Mac mac) {
    constexpr uint64_t kPrefix = 0x3333;
    return mac.value() >> 32 == kPrefix;
}

/**
 * Groups that hosts do not, or need not, ask for: their frames are flooded, whether there is an entry or not (RFC
 * 4541): all stations, the protocols between neighbours, 224.0.0.0/24 and ff02::1.
 */
inline bool is_always_flooded(Mac mac) {
    constexpr Mac kAllNodes{0x333300000001};
    constexpr uint64_t kLocalControl = 0x01005E0000;
    return mac.is_broadcast() || mac.is_reserved() || mac.value() >> 8 == kLocalControl || mac == kAllNodes;
}

}  // namespace vdevice::chip
