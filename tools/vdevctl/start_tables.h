// The tables of what start-up sets.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace vdevice {

std::string show_reserved(const nlohmann::json &answer);
std::string show_mirrors(const nlohmann::json &answer);
std::string show_gpio(const nlohmann::json &answer);

}  // namespace vdevice
