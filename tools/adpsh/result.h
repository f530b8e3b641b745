/**
 * @file result.h
 * Names the numbers that calls return: the library's codes, the driver's own results, and the driver call that failed.
 */
#pragma once

#include "tools/adpsh/execute.h"
#include "tools/adpsh/show.h"

#include <stdint.h>
#include <string>
#include <string_view>

namespace adpsh {

/** The virtual device's name for a driver call's result; empty if it has none. */
std::string_view device_name_of(int64_t result);

/** What the virtual device means by a result, given by its name or as a number; empty if it means nothing. */
std::string device_result_text(std::string_view word);

/** The library's code with this number; null if there is none. */
const exported::Constant *library_result(std::string_view number);

/** `-11 (vlan_exists of the virtual device: the VLAN exists already)`, or the result alone. */
std::string result_text(const Outcome &outcome);

/** Adds the result as `result`, `result_name`, `meaning` and `failed`. */
void add_result(const Outcome &outcome, Json &object);

}  // namespace adpsh
