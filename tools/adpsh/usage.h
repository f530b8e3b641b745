/**
 * @file usage.h
 * How a call is written on a line, and what can be left out.
 */
#pragma once

#include "calls/exported.h"

#include <stddef.h>
#include <string>

namespace adpsh {

/** Whether the count follows from an array that the line gives. */
bool is_inferable_count(const exported::Call &call, size_t index);

/** Whether a parameter that the call reads and writes is an output: the last ones, behind what the call asks for. */
bool is_optional_output(const exported::Call &call, size_t index);

/** How the call is written: its name, inputs in order with those in brackets that can be left out, and outputs. */
std::string usage(const exported::Call &call);

}  // namespace adpsh
