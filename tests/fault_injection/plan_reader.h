/**
 * @file plan_reader.h
 * Reads the text of plans. docs/testing.md describes it.
 */
#pragma once

#include <string>
#include <vector>

#include "tests/fault_injection/plan.h"
#include "tests/fault_injection/row.h"
#include "tests/fault_injection/state.h"

namespace fault_injection {

/** The plan in a state. @p port is what calls on a port must name, empty where the plan does not say. */
Plan read_plan(const Family &family, const State &state, const std::string &text, const std::string &port);

bool is_number(const std::string &text);

/** The assignments of "a=1, b=2". */
std::vector<Assignment> assignments_of(const std::string &text);

/** The text with $intf, $hold, $group and $trunk replaced. */
std::string in_state(const std::string &text, const State &state);

}  // namespace fault_injection
