// The receive tag of frames from the switch.
#pragma once

#include "pkt/switch_tag.h"

namespace adp {

/** The physical port that a received frame came in on; the frame has at least kRxTaggedHeaderLength bytes. */
PhyPort ingress_port_of(const uint8_t *frame);

/** Removes the tag: the rest of the frame moves over it. */
void strip_rx_tag(uint8_t *frame, uint32_t length);

}  // namespace adp
