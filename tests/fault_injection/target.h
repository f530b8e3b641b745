/**
 * @file target.h
 * Where assignments go: a parameter or an exported table by name, or an element or a field of it.
 *
 *     agg_manage_intf[1]=0   agg_info[1].count=2   ports=[1, 2]   *=00
 */
#pragma once

#include <stddef.h>
#include <string>
#include <vector>

#include "calls/exported.h"
#include "tests/fault_injection/plan.h"

namespace fault_injection {

/** `name[1][0].field[2]` taken apart. */
struct Target {
    std::string name;
    std::vector<size_t> indexes;
    std::string part; /**< what stands behind the first dot */
};

Target target_of(const std::string &text);

/** Stores a value into one of @p count elements at @p to, or into the first of them. */
void store(const Target &target, const calls::Element &type, size_t count, void *to, const std::string &value);

/** Stores into an exported table; throws std::runtime_error when there is none of that name. */
void assign_table(const Assignment &assignment);

/** The clause `given`: what the driver's calls write and return, `call.output=value, call=result, ...`. */
void give(const std::string &text);

}  // namespace fault_injection
