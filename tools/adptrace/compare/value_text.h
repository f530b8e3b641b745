/**
 * @file value_text.h
 * Values as short text.
 */
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "tools/adptrace/compare/values.h"

namespace adptrace {

/** Of two values that differ, the part that does: "argument entry.mac: .., ..". */
Difference difference_of(std::string what, const nlohmann::json &a, const nlohmann::json &b);

}  // namespace adptrace
