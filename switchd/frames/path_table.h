// What the frame path is told about the ports.
#pragma once

#include <stdint.h>
#include <map>
#include <set>
#include <utility>

#include "switchd/kernel/kernel_state.h"
#include "switchd/ports/port_name.h"

namespace switchd {

struct PathPort {
    uint16_t untagged_vid = 0; /**< the VLAN whose frames have no tag on the port; 0 for none */
    uint32_t group = 0;        /**< of a user port: the aggregation interface that it is in, 0 for none */
    bool runs_lacp = false;    /**< of a user port: LACPDUs and markers are for the daemon's own LACP */
    bool is_closed = false;    /**< of a user port, by 802.1X: only EAPOL passes, and frames of its stations */
    std::set<Mac> stations;    /**< that 802.1X has admitted one by one */
};

struct PathTable {
    /** By interface number, user ports and groups. A member of a group has the group's untagged VLAN. */
    std::map<uint32_t, PathPort> ports;
    std::set<PortName> interfaces; /**< those there are, with and without a tag */
    std::set<Mac> own_addresses;   /**< of the switch: of its ports' interfaces and of its bridges */
    /** Multicast frames for a group that the chip does not have come to the CPU alone. */
    bool has_unknown_ipv4 = false;
    bool has_unknown_ipv6 = false;
    std::set<std::pair<uint16_t, Mac>> groups; /**< those that the chip has, by VLAN */
};

}  // namespace switchd
