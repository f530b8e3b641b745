// The tables of the field processor.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace vdevice {

std::string show_fields(const nlohmann::json &answer);
std::string show_meters(const nlohmann::json &answer);

}  // namespace vdevice
