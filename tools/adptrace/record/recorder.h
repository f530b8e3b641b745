/**
 * @file recorder.h
 * A line before a call and one after it.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <span>

#include "calls/element.h"
#include "tools/adptrace/record/thread.h"

namespace adptrace::record {

struct RecordedCall {
    const char *name;
    calls::Result result;
    const calls::Struct *layout; /**< of the struct whose address is the result, else null */
    std::span<const calls::Param> params;
    bool is_library; /**< one of the library's calls: it may change the port map */
};

/**
 * Before the call. What is between this and end() has no destructors: a thread that is cancelled in the call, or a
 * handler that jumps out of it, passes by as if nothing were here.
 *
 * @return whether the call is recorded; then end() belongs to it
 */
bool begin(Span &span, const RecordedCall &call, const void *const *arguments) noexcept;
void end(Span &span, const RecordedCall &call, int64_t result) noexcept;

}  // namespace adptrace::record
