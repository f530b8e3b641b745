/**
 * @file plausible.h
 * Values as callers and drivers give them: mostly small, now and then at an edge, sometimes anything.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string_view>

#include "calls/call_table.h"
#include "tests/differential/random.h"

namespace lives {

/** Any 32-bit number, small ones preferred. */
uint32_t any_number(Random &random);
/** An interface number: user ports, groups 0..9, edges, foreign types. */
uint32_t any_interface(Random &random);
/** A number for a parameter of this name. */
uint32_t number_for(Random &random, std::string_view name);

/** What a driver call writes. */
void fill_output(Random &random, calls::CallId id, const calls::Param &param, void *to, size_t count);

}  // namespace lives
