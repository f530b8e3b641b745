// The maximum speed of an interface; how speed is set depends on it.
#pragma once

#include "core/number.h"

namespace adp {

/**
 * Reads a port's maximum speed, of a group the largest over its configured members (0 without members).
 *
 * @return ADP_OK, ADP_E_DRIVER when a read failed, ADP_FAIL for a group outside 1..8
 */
adp_status_t read_max_speed(Intf intf, uint32_t *speed);

}  // namespace adp
