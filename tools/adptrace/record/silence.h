// Why a program was not recorded.
#pragma once

#include <string>

namespace adptrace::record {

/** A sentence for a program in which the library was never loaded. */
std::string why_silent(const std::string &file, bool follows);

}  // namespace adptrace::record
