// The configuration file of adp-switchd, read and checked as a whole.
#pragma once

#include <stdint.h>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "switchd/daemon/dot1x_control.h"
#include "switchd/groups/settings.h"
#include "switchd/kernel/kernel_state.h"
#include "switchd/ports/interface.h"
#include "switchd/ports/port_name.h"
#include "vdevice/process/log_level.h"

namespace switchd {

struct Configuration {
    static constexpr uint16_t kDefaultPriority = 0x8000; /**< of a port in LACP */

    struct Port {
        Dot1xControl dot1x = Dot1xControl::kNone;
        std::optional<uint32_t> mtu;

        bool operator==(const Port &) const = default;
    };

    // These stay as they are while the daemon runs.
    std::optional<std::string> run_dir;
    std::string cpu_interface = "eth0";
    uint32_t user_ports = 0; /**< the board's number by default */
    uint32_t cpu_physical_port = 0;
    std::vector<uint32_t> physical_ports; /**< of user port 1 and the following ones */
    uint16_t first_internal_vid = 4000;
    std::optional<Mac> mac;                       /**< of the CPU port; user port n has the one that is n higher */
    std::optional<InterfaceKind> interfaces_kind; /**< the best one, unless it is given */

    std::vector<PortName> interfaces; /**< with tags, besides those of the ports */
    uint32_t flood_limit = 10'000;    /**< flooded frames a second from each port to the CPU; 0 for no limit */
    uint32_t learned_seconds = 1;     /**< between two looks at what the switch has learned */
    std::map<std::string, uint16_t> bridges;
    std::map<uint32_t, GroupSettings> groups; /**< by the group's number, 1 to 8 */
    std::map<uint32_t, Port> ports;           /**< by interface number, user ports and groups */
    std::optional<vdevice::LogLevel> log_level;

    /** The port's settings, or the defaults. */
    Port port(uint32_t intf) const;
    /** Whether the VLAN is among those from the first internal one to the last of all. */
    bool is_internal(uint16_t vid) const { return vid >= first_internal_vid; }

    bool operator==(const Configuration &) const = default;
};

/**
 * Reads the file; "" stands for an empty one. Throws a vdevice::io::Error, which names the line, if the file cannot be
 * read, or has something unknown, out of range or contradictory.
 */
Configuration read_configuration(const std::string &path);

/** A file that was read while the daemon runs. */
struct ConfigurationAgain {
    Configuration configuration;
    std::vector<std::string> kept; /**< keys that have other values in the file, and keep those of the running daemon */
};

/** As above; what cannot change stays as it is, and the rest of the file must fit that. */
ConfigurationAgain read_configuration_again(const std::string &path, const Configuration &running);

/** Gives what cannot change its value in the running configuration, and the keys of what would have changed. */
std::vector<std::string> keep_fixed(Configuration &read, const Configuration &running);

}  // namespace switchd
