/**
 * @file show.h
 * Shows memory as text for people and as JSON for programs.
 */
#pragma once

#include "calls/exported.h"
#include "tools/adpsh/arguments.h"

#include <nlohmann/json.hpp>

#include <stddef.h>
#include <string>

namespace adpsh {

using Json = nlohmann::ordered_json;

std::string text_of(const calls::Element &element, const void *from, size_t count);
Json json_of(const calls::Element &element, const void *from, size_t count);

/** Whether a slot is shown after the call: an output, or a set addressed by a word if the call changed it. */
bool is_shown(const Slot &slot);
std::string text_of(const Slot &slot, const Arguments &arguments);
Json json_of(const Slot &slot, const Arguments &arguments);

std::string text_of(const exported::Call &call, int64_t result);
Json json_of(const exported::Call &call, int64_t result);

}  // namespace adpsh
