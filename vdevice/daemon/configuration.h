// The configuration file of vdeviced, read and checked as a whole.
#pragma once

#include <stdint.h>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "generated/driver_calls.h"
#include "vdevice/cable/conditions.h"
#include "vdevice/driver/board.h"
#include "vdevice/process/log_level.h"

namespace vdevice {

/** What the command line and the file can both say. */
struct Settings {
    std::optional<std::string> run_dir;
    std::optional<bool> create_interfaces;
    std::optional<int> user_ports;
    std::optional<int> first_port;
    std::optional<std::string> port_interfaces; /**< the name of user ports' interfaces before the number */
    std::optional<uint32_t> ring_slots;
    std::optional<bool> line_rate;
    std::optional<LogLevel> log_level;

    driver::Board board() const;
    /** Throws an io::Error if no device can be like this. */
    void check() const;
    /** These settings; where they say nothing, those of the other. */
    Settings or_else(const Settings &other) const;
};

/** One setting of the device, made by a call of its driver, as software on the device would. */
struct Step {
    std::string place; /**< "vdeviced.toml:12" */
    std::string what;  /**< "the speed of port 3" */
    std::function<int32_t(DriverCalls &)> call;
};

struct Configuration {
    Settings settings;                     /**< the file's */
    std::map<int, std::string> interfaces; /**< the network interfaces of user ports, 0 for the CPU port */
    std::set<uint32_t> vids;
    std::vector<Step> steps;
    std::map<int, cable::Conditions> cables = {}; /**< the bad ones, by user port */
};

/** Whether a network interface can have the name. */
bool is_interface_name(const std::string &name);

/**
 * Reads the file; what @p given says wins over it. Throws an io::Error, which names the line, if the file cannot be
 * read, has something unknown or out of range, or a setting that the driver of such a board refuses.
 */
Configuration read_configuration(const std::string &path, const Settings &given);

/** Makes the settings. Gives a sentence for each that the driver refuses. */
std::vector<std::string> apply(const Configuration &configuration, DriverCalls &calls);
/** Removes the VLANs that only the earlier file has, then as above. */
std::vector<std::string> apply_changes(const Configuration &earlier, const Configuration &configuration,
                                       DriverCalls &calls);

}  // namespace vdevice
