/**
 * @file show.h
 * Memory shown to people, as text, and to programs, as JSON.
 */
#pragma once

#include "tools/adpsh/arguments.h"
#include "tools/adpsh/table.h"

#include <nlohmann/json.hpp>

#include <stddef.h>
#include <string>

namespace adpsh {

using Json = nlohmann::ordered_json;

/** Bytes as hexadecimal digits without separators. */
std::string hex_of(const uint8_t *bytes, size_t count);

std::string text_of(const Type &type, const void *from, size_t count);
Json json_of(const Type &type, const void *from, size_t count);

/** Whether a slot has something to show after the call: an output, or a set behind a word that the call changed. */
bool is_shown(const Slot &slot);
std::string text_of(const Slot &slot, const Arguments &arguments);
Json json_of(const Slot &slot, const Arguments &arguments);

std::string text_of(const Call &call, const Result &result);
Json json_of(const Call &call, const Result &result);

}  // namespace adpsh
