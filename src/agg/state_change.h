// Telling that a group as a whole went up or down.
#pragma once

#include "core/number.h"

namespace adp {

/** Who announces: the worker's name and source line are part of the messages. */
struct Announcer {
    const char *function;
    int line;
};

/** Stores the group's state, writes the change to trace and log, and sets *changed unless it is null. */
void announce_state(TrunkId trunk, bool is_up, const Announcer &announcer, uint32_t *changed);

/** Hands the group's event to the registered receiver. */
void send_event(TrunkId trunk, const Announcer &announcer);

}  // namespace adp
