/**
 * @file call_text.h
 * A call as text: as a line that adpsh takes, and as a line of the trace, which is the same on every machine.
 */
#pragma once

#include <string>

#include "tests/differential/arguments.h"

namespace differential {

/** The call and its inputs, as adpsh takes them. */
std::string script_line(const Arguments &arguments);

/** The same for the trace: bytes that hold words are shown as words. */
std::string trace_line(const Arguments &arguments);

/** What the call left in its outputs, for the trace. */
std::string outputs_text(const Arguments &arguments);

}  // namespace differential
