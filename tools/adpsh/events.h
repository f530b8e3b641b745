/**
 * @file events.h
 * Events: the calls of callbacks that a line has registered with `print`.
 */
#pragma once

#include "calls/exported.h"

#include <stdint.h>
#include <string>
#include <vector>

namespace adpsh {

/** Keeps an event, see exported::receive_events(). @return always 0 */
int32_t keep_event(const exported::Callback &callback, const void *const *arguments);

/** The events since the last time, as text. */
std::vector<std::string> take_events();

}  // namespace adpsh
