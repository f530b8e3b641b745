/**
 * @file remarks.h
 * What differs between two recordings as a whole, and is not counted as a difference of their calls.
 */
#pragma once

#include <string>

#include "tools/adptrace/compare/compare.h"

namespace adptrace {

/** Lines. */
std::string remarks_on(const Recording &a, const Recording &b, const CompareOptions &options);

}  // namespace adptrace
