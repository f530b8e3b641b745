// The tables of stations, of groups of stations, and of limits on learning.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace vdevice {

std::string show_macs(const nlohmann::json &answer);
std::string show_groups(const nlohmann::json &answer);
std::string show_limits(const nlohmann::json &answer);

}  // namespace vdevice
