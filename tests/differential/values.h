/**
 * @file values.h
 * Random values as callers and drivers give them: mostly small, sometimes at a limit, sometimes any number.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string_view>

#include "calls/call_table.h"
#include "tests/differential/random.h"

namespace differential {

/** Any 32-bit number, small ones preferred. */
uint32_t any_number(Random &random);
/** An interface number: user ports, groups 0 to 9, limits, other types. */
uint32_t any_interface(Random &random);
/** A number for a parameter with this name. */
uint32_t number_for(Random &random, std::string_view name);

/** Fills @p count elements of an output of a driver call. */
void fill_output(Random &random, calls::CallId id, const calls::Param &param, void *to, size_t count);

}  // namespace differential
