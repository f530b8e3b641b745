// Which member of a group manages it.
#pragma once

#include "core/number.h"

namespace adp {

/** Elects and stores the management interface of a group that exists. */
void elect_manage_intf(Intf agg);

}  // namespace adp
