// Ports as vdevctl writes them.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace vdevice {

/** "cpu" for 0, else the number. */
std::string port_name(int port);
/** "cpu,1-4,9": runs of neighbouring ports drawn together; "-" for none. */
std::string port_list(const nlohmann::json &ports);

}  // namespace vdevice
