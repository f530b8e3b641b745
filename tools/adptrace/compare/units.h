/**
 * @file units.h
 * The calls of a recording by thread: what one thread asked for, in its order.
 */
#pragma once

#include <stddef.h>
#include <vector>

#include "tools/adptrace/recording/recording.h"

namespace adptrace {

/** A call that is in no other one, then those within it: indices in calls(). */
using Unit = std::vector<size_t>;
using Thread = std::vector<Unit>;

/** For each process its threads, by their first calls. @p with_imported: driver and service calls, too. */
std::vector<std::vector<Thread>> threads_of(const Recording &recording, bool with_imported);

}  // namespace adptrace
