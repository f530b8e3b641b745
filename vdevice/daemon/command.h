// What the commands have in common: how they refuse, and how they name ports.
#pragma once

#include <nlohmann/json.hpp>
#include <stdexcept>

#include "vdevice/device/device.h"

namespace vdevice {

/** Carries out one command; throws a Refusal, in a sentence, if it cannot be. */
using Command = nlohmann::json (*)(Device &, const nlohmann::json &request);

class Refusal : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

double seconds(chip::Time time);
/** The user port of a chip port, the CPU port being 0. */
int user_number(const Device &device, int chip_port);
/** The set's ports as user ports; chip ports that the board does not use are left out. */
nlohmann::json user_numbers(const Device &device, const chip::PortSet &chip_ports);

// Commands on what start-up sets: start_commands.cpp
nlohmann::json show_reserved(Device &device, const nlohmann::json &request);
nlohmann::json show_mirrors(Device &device, const nlohmann::json &request);
/** With a pin and a level it drives the pin first. */
nlohmann::json gpio(Device &device, const nlohmann::json &request);

// Commands on the field processor: field_commands.cpp
nlohmann::json show_fields(Device &device, const nlohmann::json &request);
nlohmann::json show_meters(Device &device, const nlohmann::json &request);

// The command on egress queues: queue_commands.cpp
nlohmann::json show_queues(Device &device, const nlohmann::json &request);

// The command on what ports let in: limit_commands.cpp
nlohmann::json show_storm(Device &device, const nlohmann::json &request);

// Commands on the MAC table: l2_commands.cpp
nlohmann::json show_macs(Device &device, const nlohmann::json &request);
nlohmann::json show_groups(Device &device, const nlohmann::json &request);
nlohmann::json show_limits(Device &device, const nlohmann::json &request);

// Commands on priorities: priority_commands.cpp
nlohmann::json show_priorities(Device &device, const nlohmann::json &request);

// Commands on spanning-tree groups and tags: tag_commands.cpp
nlohmann::json show_stp_groups(Device &device, const nlohmann::json &request);
nlohmann::json show_translations(Device &device, const nlohmann::json &request);

}  // namespace vdevice
