// Election of the manager of a group.
#pragma once

#include "core/number.h"

namespace adp {

/** Elects and stores the manager of an existing group. */
void elect_manage_intf(Intf agg);

}  // namespace adp
