/**
 * @file parameter.h
 * What the header says about a call's parameter.
 */
#pragma once

#include "calls/exported.h"

#include <string>
#include <vector>

namespace adpsh {

/** The text behind the parameter's name in the call's description, on one line; empty if there is none. */
std::string description_of(const exported::Call &call, const calls::Param &parameter);

/** The constants that the description names: those of `enum TAG`, or those that begin as `ADP_PREFIX_...` does. */
std::vector<const exported::Constant *> constants_of(const exported::Call &call, const calls::Param &parameter);

/** Whether the call has a parameter with one of these constants. */
bool takes_one(const exported::Call &call, const std::vector<const exported::Constant *> &constants);

}  // namespace adpsh
