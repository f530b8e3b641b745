/**
 * @file parameters.h
 * What the headers say of a call's parameters.
 */
#pragma once

#include <string_view>

#include "calls/element.h"

namespace adptrace {

/** Whether the word is a handle: an output of some call has its name. */
bool is_handle(const calls::Param &param);

/** Whether the argument is an address in the program, other than those that calls give: of the event queue. */
bool is_address_of_program(std::string_view call, const calls::Param &param);

bool is_octets(const calls::Param &param);

/** Whether the result is a number of the machine: a descriptor, an index of an interface. Negative is a failure. */
bool is_result_of_machine(std::string_view name);

}  // namespace adptrace
