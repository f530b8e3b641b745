// Whether an interface is free, held down by a protocol, or disabled by the administrator.
#pragma once

#include "core/number.h"

namespace adp {

enum class HoldState : uint8_t { kFree = 0, kHeld = 1, kDisabled = 2 };

/** One state per combined interface index 1..34; that of a group is independent of its members'. */
inline constexpr uint32_t kHoldStates = ADP_USER_PORTS + ADP_AGG_GROUPS;
extern HoldState port_hold_state[kHoldStates];

/** kFree for an interface without a state. */
inline HoldState hold_state_of(Intf intf) {
    const uint32_t row = combined_index(intf) - 1;
    return row < kHoldStates ? port_hold_state[row] : HoldState::kFree;
}

/** Does nothing for an interface without a state. */
inline void set_hold_state(Intf intf, HoldState state) {
    const uint32_t row = combined_index(intf) - 1;
    if (row < kHoldStates) {
        port_hold_state[row] = state;
    }
}

}  // namespace adp
