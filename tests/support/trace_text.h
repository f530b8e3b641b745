/**
 * @file trace_text.h
 * Calls as text that does not depend on the machine: what calls/describe.h gives, but with the thread's id replaced
 * by a name, and blocks that hold words in the machine's byte order shown as words.
 */
#pragma once

#include <string>

#include "calls/call_table.h"

namespace trace_text {

/** The call with everything it reads. */
std::string describe_call(calls::CallId id, const void *const *arguments);

/** The result and everything that the call wrote. */
std::string describe_result(calls::CallId id, const void *const *arguments, int64_t result);

/** Bytes as the 32-bit words that they are, without trailing zeros: `[5, 70000, ..]`. */
std::string words(const void *bytes, size_t size);

}  // namespace trace_text
