/**
 * @file call_json.h
 * Calls as JSON, each with what is within it.
 */
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <vector>

#include "tools/adptrace/recording/recording.h"
#include "tools/adptrace/show/show.h"

namespace adptrace {

/** The chosen calls that are within none, and those around a chosen one. */
std::vector<nlohmann::json> calls_json(const Recording &recording, const ShowOptions &options);

}  // namespace adptrace
