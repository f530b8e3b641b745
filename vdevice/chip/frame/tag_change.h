// A change of a tag by translation and other tables: another VLAN and, optionally, another priority.
#pragma once

#include <stdint.h>

#include "vdevice/chip/frame/frame.h"
#include "vdevice/chip/frame/status.h"

namespace vdevice::chip {

struct TagChange {
    static constexpr uint32_t kKeepPriority = 0xFFFFFFFF;

    uint32_t vid = 0;
    uint32_t priority = kKeepPriority;

    Status check() const {
        if (!is_vid(vid)) {
            return Status::kVlanRange;
        }
        return priority < kPriorities || priority == kKeepPriority ? Status::kOk : Status::kBadArgument;
    }

    bool has_priority() const { return priority != kKeepPriority; }

    /** The tag's control information after the change; the drop-eligible bit is kept. */
    uint16_t apply(uint16_t tci) const {
        constexpr uint32_t kDropEligible = 0x1000;
        const uint32_t kept = has_priority() ? (tci & kDropEligible) | priority << kPcpShift : tci & kPriorityMask;
        return static_cast<uint16_t>(kept | vid);
    }
};

}  // namespace vdevice::chip
