// The priority of a received frame. It chooses the frame's egress queues and is written into the tag that it leaves
// with.
#pragma once

#include <stdint.h>

#include "vdevice/chip/tables/classified.h"
#include "vdevice/chip/tables/dscp_map.h"
#include "vdevice/chip/tables/port.h"

namespace vdevice::chip {

struct PriorityRules {
    DscpMap dscps;
    /** Frames without a DSCP, on ports that trust it, get the port's priority instead of the tag's. */
    bool defaults_to_port = false;

    /** For a frame on a port with these settings; @p by_tag is what its tags and the port give it. */
    Classified classify(int port, const Port &settings, const Header &header, const Classified &by_tag) const {
        return settings.trust == Trust::kDot1p ? by_tag : by_trust(port, settings, header, by_tag);
    }

  private:
    Classified by_trust(int port, const Port &settings, const Header &header, const Classified &by_tag) const;
};

}  // namespace vdevice::chip
