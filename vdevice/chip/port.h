// One port of the chip: its state, its VLAN settings and its counters.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "vdevice/chip/frame.h"

namespace vdevice::chip {

/** Why a frame was not forwarded. Counted on the port that it came in on. */
enum class Drop : std::uint8_t {
    kPortDown,          /**< came in on a port that is disabled or has no link */
    kRunt,              /**< no whole Ethernet header */
    kOversize,          /**< longer than the chip's buffers */
    kVlanMissing,       /**< its VLAN does not exist */
    kNotMember,         /**< the ingress port is not a member of its VLAN */
    kSamePort,          /**< its destination is behind the port it came in on */
    kEgressNotMember,   /**< its destination's port is not a member of its VLAN */
    kEgressDown,        /**< its destination's port is disabled or has no link */
    kNoDestination,     /**< flooded, but no other member port is up */
    kNoSwitchTag,       /**< from the CPU without a whole switch tag */
    kBadOpcode,         /**< from the CPU with an opcode that means nothing */
    kDirectedToCpu,     /**< from the CPU, directed to the CPU port itself */
    kDirectedToUnknown, /**< from the CPU, directed to a port that the chip does not have */
    kCount,
};

constexpr std::size_t kDropReasons = static_cast<std::size_t>(Drop::kCount);

/** The reason as a short word for tables and logs. */
const char *name(Drop reason);

/** Frames and octets as they stand on the wire, without the frame check sequence. */
struct PortCounters {
    std::uint64_t rx_frames = 0;
    std::uint64_t rx_octets = 0;
    std::uint64_t tx_frames = 0;
    std::uint64_t tx_octets = 0;
    std::array<std::uint64_t, kDropReasons> drops{};

    std::uint64_t dropped(Drop reason) const { return drops[static_cast<std::size_t>(reason)]; }
};

struct Port {
    bool enabled = true; /**< administrative state */
    bool link = false;   /**< the cable's state, whatever the administrative state */
    Vid pvid = kMinVid;  /**< VLAN of untagged and priority-tagged frames */
    PortCounters counters;

    bool is_up() const { return enabled && link; }
};

}  // namespace vdevice::chip
