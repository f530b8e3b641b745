/**
 * @file trace_text.h
 * Calls as text that does not depend on the machine: what platform/describe.h gives, but with the thread's id replaced
 * by a name, and blocks that hold words in the machine's byte order shown as words.
 */
#ifndef TESTS_SUPPORT_TRACE_TEXT_H
#define TESTS_SUPPORT_TRACE_TEXT_H

#include <string>

#include "platform/call_table.h"

namespace trace_text {

/** The call with everything it reads. */
std::string describe_call(platform::CallId id, const void *const *arguments);

/** The result and everything that the call wrote. */
std::string describe_result(platform::CallId id, const void *const *arguments, int64_t result);

/** Bytes as the 32-bit words that they are, without trailing zeros: `[5, 70000, ..]`. */
std::string words(const void *bytes, std::size_t size);

}  // namespace trace_text

#endif
