// Which member of a group manages it.
#ifndef AGG_ELECTION_H
#define AGG_ELECTION_H

#include "port/number.h"

namespace adp {

/** Elects and stores the management interface of a group that exists. */
void elect_manage_intf(Intf agg);

}  // namespace adp

#endif
