// Which priority the chip gives a frame that comes in. The priority chooses the frame's egress queues and stands in the
// tag that it leaves with.
#pragma once

#include <stdint.h>
#include <optional>

#include "vdevice/chip/tables/dscp_map.h"
#include "vdevice/chip/tables/port.h"

namespace vdevice::chip {

/** What the chip makes of a frame before its rules look at it. */
struct Classified {
    uint16_t tci;                /**< VLAN and priority in which the frame goes on */
    std::optional<uint8_t> dscp; /**< another DSCP, which it leaves with */
};

struct PriorityRules {
    DscpMap dscps;
    /** Frames without a DSCP get, where it is trusted, the port's priority instead of the tag's. */
    bool defaults_to_port = false;

    /** For a frame on a port with these settings; @p tci carries the VLAN and priority that its tags have given it. */
    Classified classify(int port, const Port &settings, const Header &header, uint16_t tci) const;
};

}  // namespace vdevice::chip
