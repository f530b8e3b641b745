// Controls of one port that other subsystems offer too.
#ifndef L2_PORT_CONTROL_H
#define L2_PORT_CONTROL_H

#include "port/number.h"

namespace adp {

/** Sets the priority of untagged frames; ADP_E_DRIVER for every aggregation interface. */
adp_status_t hal_port_untagged_priority_set(Intf intf, uint32_t priority);

}  // namespace adp

#endif
