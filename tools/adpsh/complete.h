/**
 * @file complete.h
 * What can complete a word of a line that is being typed.
 */
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace adpsh {

/** The names that begin with @p beginning and make sense behind @p before, the line up to that word. */
std::vector<std::string> completions(std::string_view before, std::string_view beginning);

}  // namespace adpsh
