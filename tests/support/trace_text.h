/**
 * @file trace_text.h
 * Calls as text that is the same on every machine: the text of calls/describe.h, but without a thread's id, and of a
 * VLAN record the members only.
 */
#pragma once

#include <string>

#include "calls/call_table.h"

namespace trace_text {

/** The call with everything it reads. */
std::string describe_call(calls::CallId id, const void *const *arguments);

/** The result and everything that the call wrote. */
std::string describe_result(calls::CallId id, const void *const *arguments, int64_t result);

/** Bytes that hold 32-bit words, without trailing zeros: `[5, 70000, ..]`. */
std::string words(const void *bytes, size_t size);

}  // namespace trace_text
