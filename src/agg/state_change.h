// Announcements that a group went up or down.
#pragma once

#include "core/messages.h"
#include "core/number.h"

namespace adp {

// Messages and events name the worker that found the change.

/** Stores the group's state, writes the change to trace and log, and sets *changed unless it is null. */
void announce_state(TrunkId trunk, bool is_up, const Place &worker, uint32_t *changed);

/** Hands the group's event to the registered receiver. */
void send_event(TrunkId trunk, const Place &worker);

}  // namespace adp
