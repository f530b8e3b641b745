// The periodic transmission machine of IEEE 802.1AX: how often a partner that has nothing new to hear is told so.
#pragma once

#include "switchd/lacp/port.h"

namespace switchd::lacp {

void run_periodic(Port &port, Time now);

}  // namespace switchd::lacp
