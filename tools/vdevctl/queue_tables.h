// The table of the ports' egress queues.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace vdevice {

std::string show_queues(const nlohmann::json &answer);

}  // namespace vdevice
