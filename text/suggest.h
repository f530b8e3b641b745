// Suggests names close to an unknown one.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace text {

/** "; did you mean 'a' or 'b'?" for the closest names; empty if none is close. */
std::string did_you_mean(std::string_view name, const std::vector<std::string_view> &names,
                         std::string_view separator = "; ");

/** Whether two words differ by one letter, or by two neighbours that changed places. */
bool has_one_error(std::string_view a, std::string_view b);

}  // namespace text
