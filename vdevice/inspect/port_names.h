// How answers name ports: in JSON by their user port number, the CPU port being 0; in text as on the front.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "vdevice/device/device.h"

namespace vdevice::inspect {

/** The chip ports that have a cable. An answer is about these. */
std::vector<int> wired_ports(const Device &device);

/** The user port of a chip port, 0 for the CPU port. */
int user_number(const Device &device, int chip_port);
/** The set's wired ports as user ports. */
nlohmann::json user_numbers(const Device &device, const chip::PortSet &chip_ports);

/** "cpu" for 0, else the number. */
std::string port_name(int port);
/** The name of the port in a row of an answer. */
std::string port_name(const nlohmann::json &row);
/** "cpu,1-4,9": runs of neighbouring ports drawn together; "-" for none. */
std::string port_list(const nlohmann::json &ports);

}  // namespace vdevice::inspect
