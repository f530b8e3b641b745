// Priorities as vdevctl writes them.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace vdevice {

std::string show_priorities(const nlohmann::json &answer);

}  // namespace vdevice
