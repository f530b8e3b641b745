// Which priority of a frame a port trusts.
#pragma once

#include <stdint.h>
#include <array>

#include "vdevice/chip/frame/frame.h"

namespace vdevice::chip {

/** Where a frame's priority comes from; the numbers are those of the driver calls. */
enum class Trust : uint8_t {
    kPort,  /**< from the port, whatever the frame says */
    kDot1p, /**< from the VLAN tag; without one from the port */
    kDscp,  /**< from an IP packet's DSCP; of other frames the default */
    kBoth,  /**< from an IP packet's DSCP; of other frames as with kDot1p */
};

constexpr uint32_t kTrustModes = 4;

/** Replaces the priority in the tag of a received frame, before anything else reads it. */
struct PriorityRemap {
    std::array<uint8_t, kPriorities> to{0, 1, 2, 3, 4, 5, 6, 7};

    uint16_t apply(uint16_t tci) const {
        return with_bits(tci, kPcpMask, static_cast<uint32_t>(to[priority_of(tci)]) << kPcpShift);
    }
};

}  // namespace vdevice::chip
