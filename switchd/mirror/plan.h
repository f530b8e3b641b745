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
    uint16_t first_internal_vid = 4000; /**< user port n that is in no bridge has the VLAN first_internal_vid + n */
    std::map<std::string, uint16_t> bridge_vids; /**< as configured, by the bridge's name */
    std::map<int, PortName> interfaces;          /**< by the kernel's index; its VLAN devices on these need no row */
    std::map<uint32_t, IntfSet> groups;          /**< the user ports of each aggregation interface */
    std::set<int> new_queriers;                  /**< bridges that began to query less than their response time ago */
    uint32_t ageing_seconds = 300;

    IntfSet all() const { return all_up_to(user_ports); }
    uint16_t internal_vid_of(uint32_t port) const { return static_cast<uint16_t>(first_internal_vid + port); }
};

}  // namespace switchd
