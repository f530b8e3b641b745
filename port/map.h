// Look-ups in the port map, both ways.
#ifndef PORT_MAP_H
#define PORT_MAP_H

#include <adp/port.h>

#include "port/number.h"

namespace adp {

/** The map row of an interface; null when the number, taken whole, exceeds the map or there is no map. */
inline adp_port_row_t *find_row(Intf intf) {
    if (intf.value() > adp_max_phy_port_num || intf_to_phy_port == nullptr) {
        return nullptr;
    }
    return &intf_to_phy_port[intf.value()];
}

/** The physical port of a user port or of the CPU port's row 0; kPhyNotMapped for everything else. */
inline PhyPort phy_of(Intf intf) {
    if (intf.kind() != IntfKind::kUserPort) {
        return kPhyNotMapped;
    }
    const adp_port_row_t *row = find_row(intf);
    return row == nullptr ? kPhyNotMapped : PhyPort(static_cast<int32_t>(row->phy));
}

/** The lowest row with this physical port; kIntfNotFound when there is none. */
Intf intf_of(PhyPort port);

}  // namespace adp

#endif
