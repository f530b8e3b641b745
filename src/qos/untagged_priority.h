// The priority of the frames that an interface receives untagged.
#pragma once

#include <netlink_api.h>

#include "core/resolve.h"

namespace adp {

/** Sets it on a user port; ADP_E_DRIVER for every aggregation interface. */
inline adp_status_t hal_port_untagged_priority_set(Intf intf, uint32_t priority) {
    return on_port_only(intf, user_port_untagged_priority_set, priority);
}

}  // namespace adp
