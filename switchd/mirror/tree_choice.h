// Which of the chip's few spanning-tree groups each VLAN is to be in.
#pragma once

#include <stdint.h>

#include <map>

#include "switchd/mirror/reader.h"
#include "switchd/mirror/switch_state.h"

namespace switchd {

struct TreeChoice {
    std::map<uint16_t, int32_t> vlans;    /**< the group of every wanted VLAN; 0 also where groups have run out */
    std::map<int32_t, TreeStates> states; /**< of each group that has VLANs, and of group 0 */
};

/**
 * VLANs whose ports all forward are in group 0. VLANs with the same states share another group, as those of a bridge
 * that is aware of VLANs do. A VLAN stays in its group where that can be.
 */
TreeChoice tree_choice_of(const std::map<uint16_t, VlanState> &wanted, const TreeGroups &present);

}  // namespace switchd
