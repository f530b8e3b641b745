// The mux machine of IEEE 802.1AX with independent control: when a port collects and distributes frames.
#pragma once

#include <span>

#include "switchd/lacp/port.h"

namespace switchd::lacp {

/** Brings the ports of a group as far as they can come now. */
void run_mux(std::span<Port *const> ports, Time now);

}  // namespace switchd::lacp
