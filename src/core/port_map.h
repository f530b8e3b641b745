// Look-ups in the port map, both ways.
#pragma once

#include <adp/port.h>

#include "core/number.h"

namespace adp {

/** The physical port of a user port or of the CPU port's row 0; kPhyNotMapped for everything else. */
inline PhyPort phy_of(Intf intf) {
    return PhyPort(adp_intf_2_phy_id(number(intf)));
}

/** The lowest row with this physical port; kIntfNotFound when there is none. */
inline Intf intf_of(PhyPort port) {
    return Intf(static_cast<uint32_t>(adp_phy_2_intf_id(static_cast<uint32_t>(number(port)))));
}

}  // namespace adp
