// Churn detection of IEEE 802.1AX: a port that does not come into use for a minute, on this end or on the other.
#pragma once

#include "switchd/lacp/port.h"

namespace switchd::lacp {

void watch_churn(Port &port, Time now);

}  // namespace switchd::lacp
