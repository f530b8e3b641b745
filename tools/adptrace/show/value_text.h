/**
 * @file value_text.h
 * The values of calls as text that people read, in the words of calls/describe.h as far as JSON has what they need.
 */
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "tools/adptrace/recording/known_calls.h"

namespace adptrace {

/** How much of a long value is shown. */
enum class Length { kShort, kFull };

/**
 * The members of an object, `vid=100, members={4,5}`, in the order of the header.
 *
 * @param known      the call, null if unknown
 * @param values     the members that are shown
 * @param arguments  all arguments; some say how many elements others have
 */
std::string values_text(const KnownCall *known, const nlohmann::json &values, const nlohmann::json &arguments,
                        Length length);

/** `102 (ADP_E_DRIVER)`; a driver's result has the name that the virtual device gives it. */
std::string result_text(const KnownCall *known, const nlohmann::json &result, Length length);

}  // namespace adptrace
