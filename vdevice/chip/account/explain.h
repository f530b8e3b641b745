// What would become of a frame.
#pragma once

#include <vector>

#include "vdevice/chip/account/account.h"

namespace vdevice::chip {

/**
 * The accounts of the frame and of those that it brings back by loopback. It runs on a copy of the tables: they do not
 * change. The port must exist.
 */
std::vector<Account> explain(const Tables &tables, Time now, int port, Bytes frame);

}  // namespace vdevice::chip
