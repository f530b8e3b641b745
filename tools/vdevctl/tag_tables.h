// Tables of spanning-tree groups and of what becomes of tags.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace vdevice {

std::string show_stp_groups(const nlohmann::json &answer);
std::string show_translations(const nlohmann::json &answer);

}  // namespace vdevice
