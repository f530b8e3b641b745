/**
 * @file known_calls.h
 * The calls of both boundaries in one table, by name.
 */
#pragma once

#include <span>
#include <string_view>

#include "calls/element.h"
#include "tools/adptrace/recording/recording.h"

namespace adptrace {

struct KnownCall {
    std::string_view name;
    Call::Kind kind;
    calls::Result result;
    const calls::Struct *layout; /**< of the struct whose address is the result, else null */
    std::span<const calls::Param> params;
};

/** Null for a call of another version of the library. */
const KnownCall *known_call(std::string_view name);

/** Whether it can be the name of a call. */
bool is_call_name(std::string_view text);

}  // namespace adptrace
