// What the daemon knows besides the kernel: its configuration, and what each interface stands for.
#pragma once

#include <adp/types.h>
#include <stdint.h>

#include <map>
#include <set>
#include <string>

#include "switchd/mirror/switch_state.h"
#include "switchd/ports/port_name.h"

namespace switchd {

struct Plan {
    uint32_t user_ports = ADP_USER_PORTS;
    uint16_t first_internal_vid = 4000;          /**< see internal_vid_of() */
    std::map<std::string, uint16_t> bridge_vids; /**< as configured, by the bridge's name */
    std::map<int, PortName> interfaces;          /**< by the kernel's index; its VLAN devices on these need no row */
    std::map<uint32_t, IntfSet> groups;          /**< the user ports of each aggregation interface */
    std::set<int> new_queriers;                  /**< bridges that began to query less than their response time ago */
    uint32_t ageing_seconds = 300;

    IntfSet all() const { return all_up_to(user_ports); }
    /** The VLAN of a port that is in no bridge: first_internal_vid + n for user port n; those of groups follow. */
    uint16_t internal_vid_of(uint32_t intf) const {
        const bool is_group = intf >> ADP_INTF_TYPE_SHIFT == ADP_INTF_TYPE_AGG;
        return static_cast<uint16_t>(first_internal_vid + (is_group ? user_ports : 0) + (intf & ADP_INTF_INDEX_MASK));
    }
    /** Whose VLAN this is; 0 for nobody's. */
    uint32_t owner_of_internal(uint16_t vid) const {
        const uint32_t number = vid - uint32_t{first_internal_vid};
        if (number - 1 < user_ports) {
            return number;
        }
        return number - user_ports - 1 < ADP_AGG_GROUPS ? ADP_AGG_INTF(number - user_ports) : 0;
    }
    /** Internal VLANs from here on are for bridges. */
    uint32_t first_free_internal_vid() const { return first_internal_vid + user_ports + ADP_AGG_GROUPS + 1; }
};

}  // namespace switchd
