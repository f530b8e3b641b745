// What the frame path counts for each port.
#pragma once

#include <adp/types.h>
#include <stddef.h>
#include <stdint.h>
#include <array>
#include <string_view>

namespace switchd {

/** Why a frame goes nowhere. */
enum class Drop : uint8_t {
    // from the chip
    kUnknownPort, /**< the chip port that it came in on is no user port */
    kMalformed,   /**< too short for its header; also from the kernel */
    kClosed,      /**< 802.1X has not opened the port; also from the kernel */
    kLooped,      /**< the switch itself has sent it */
    kFloodLimit,
    kTrapLimit,
    kNoInterface,
    kNotTaken, /**< the interface is down, or full */
    // from the kernel
    kForwarded, /**< the chip has sent it to the other ports already */
    kTooLong,
    kNotSent, /**< the CPU's interface did not take it, or the group has no port */
};
inline constexpr size_t kDrops = static_cast<size_t>(Drop::kNotSent) + 1;

/** As status shows it: "flood_limit". */
std::string_view name_of(Drop reason);

struct PathCounters {
    uint64_t to_kernel = 0;
    uint64_t to_lacp = 0;
    uint64_t from_kernel = 0;
    std::array<uint64_t, kDrops> drops{};

    uint64_t &of(Drop reason) { return drops[static_cast<size_t>(reason)]; }
    uint64_t of(Drop reason) const { return drops[static_cast<size_t>(reason)]; }
};

/** User ports, then groups; what is neither shares slot 0. */
inline constexpr size_t kPathSlots = 1 + ADP_USER_PORTS + ADP_AGG_GROUPS;
size_t path_slot_of(uint32_t intf);

}  // namespace switchd
