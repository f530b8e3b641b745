// The table of storm limits and ingress limits.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace vdevice {

std::string show_storm(const nlohmann::json &answer);

}  // namespace vdevice
