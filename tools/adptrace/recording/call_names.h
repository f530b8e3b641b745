/**
 * @file call_names.h
 * Names of calls, looked up in the tables of both boundaries.
 */
#pragma once

#include <string_view>

#include "tools/adptrace/recording/recording.h"

namespace adptrace {

struct CallName {
    std::string_view name; /**< of the tables, or a part of the line; empty if it is no name of a call */
    Call::Kind kind = Call::Kind::kUnknown;
};

CallName call_name(std::string_view name, std::string_view line);

}  // namespace adptrace
