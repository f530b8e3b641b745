// What differs between two JSON values, for people.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace text {

/**
 * A line for each difference, with its place and both values: "vlans 100 members: {1,2} / {1,2,3}". A member that is
 * missing is "-". Numbers in names are ordered as numbers. The values may be anybody's, as long as they are not deep.
 */
std::vector<std::string> differences(const nlohmann::json &first, const nlohmann::json &second);

}  // namespace text
