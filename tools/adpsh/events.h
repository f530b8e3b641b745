/**
 * @file events.h
 * Events: what the library tells the shell through callbacks that a line has registered with `print`.
 */
#pragma once

#include "tools/adpsh/table.h"

#include <stdint.h>
#include <string>
#include <vector>

namespace adpsh {

/** Notes an event. Called from whatever thread the library calls back on. @return always 0 */
int32_t report_event(const Callback &callback, const void *const *arguments);

/** The events since the last time, as text. */
std::vector<std::string> take_events();

}  // namespace adpsh
