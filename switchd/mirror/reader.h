// What the chip has now, read through the library.
#pragma once

#include <stdint.h>

#include <map>

#include "switchd/mirror/plan.h"
#include "switchd/mirror/switch_state.h"

namespace switchd {

/** The chip's spanning-tree groups, of which group 0 always exists. */
struct TreeGroups {
    std::map<uint16_t, int32_t> vlans;    /**< the group of each VLAN id that is in another one than 0 */
    std::map<int32_t, TreeStates> states; /**< of each group that exists */

    int32_t group_of(uint16_t vid) const {
        const auto found = vlans.find(vid);
        return found == vlans.end() ? 0 : found->second;
    }
    const TreeStates &states_of(uint16_t vid) const { return states.at(group_of(vid)); }
};

struct SwitchReading {
    SwitchState state;
    TreeGroups trees;
    uint16_t default_vid = 1; /**< it cannot be destroyed; without members it is not part of the state */
};

/** @p mode is one of enum adp_learn_mode. */
Learning learning_of(uint32_t mode);

SwitchReading read_whole_switch(const Plan &plan);
SwitchState read_switch(const Plan &plan);

}  // namespace switchd
