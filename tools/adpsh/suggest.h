/**
 * @file suggest.h
 * Guesses which name was meant.
 */
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace adpsh {

/** "; did you mean 'a' or 'b'?" for the closest of the names, or nothing when none is close. */
std::string did_you_mean(std::string_view name, const std::vector<std::string_view> &names);

}  // namespace adpsh
