// The keys of the configuration file.
#include "switchd/daemon/configuration_file.h"

#include <algorithm>
#include <iterator>

#include "switchd/daemon/mac_text.h"
#include "text/printable.h"
#include "vdevice/io/error.h"

namespace switchd {
namespace {

using namespace configuration_file;
using toml_file::choice_of, toml_file::number_of, toml_file::text_of;

constexpr uint32_t kMostVid = 4094;
constexpr uint32_t kMostPhysicalPort = 255;

/** A key that is read when what it depends on is known. */
void later(File & /*file*/, const toml::node & /*value*/, Configuration & /*configuration*/) {}

void check_interface_name(const File &file, const toml::source_region &where, std::string_view name) {
    constexpr size_t kMost = 15;
    const bool is_name = !name.empty() && name.size() <= kMost && name.find_first_of("/: \t\n") == std::string::npos;
    if (!is_name || text::on_one_line(name) != name) {
        file.fail(where, "an interface has a name of 1 to 15 letters without blanks, '/' and ':'.");
    }
}

/** A VLAN that is not among the internal ones. */
uint16_t vid_of(const File &file, const toml::node &value, uint32_t vid) {
    if (file.configuration.is_internal(static_cast<uint16_t>(vid))) {
        file.fail(value.source(), "VLAN " + std::to_string(vid) + " is internal; these begin at first_internal_vid, " +
                                      std::to_string(file.configuration.first_internal_vid) + ".");
    }
    return static_cast<uint16_t>(vid);
}

void read_interfaces(File &file, const toml::node &value) {
    for (const toml::node &entry : list_of(file, value, "interfaces")) {
        const std::string name = text_of(file, entry, "an interface");
        const PortName port = port_named(file, entry.source(), name);
        if (port.vid == 0) {
            file.fail(entry.source(), configuration_file::quoted(name) +
                                          " is there anyway; these are for frames with a tag, as swp1.100.");
        }
        vid_of(file, entry, port.vid);
        if (is_group(port) && file.configuration.groups.count(port.intf & ADP_INTF_INDEX_MASK) == 0) {
            file.fail(entry.source(), configuration_file::quoted(name) + " is of a group that is not in [groups].");
        }
        auto &interfaces = file.configuration.interfaces;
        if (std::find(interfaces.begin(), interfaces.end(), port) != interfaces.end()) {
            file.fail(entry.source(), configuration_file::quoted(name) + " is there twice.");
        }
        interfaces.push_back(port);
    }
}

void read_bridges(File &file, const toml::node &value) {
    auto &bridges = file.configuration.bridges;
    for (const auto &[key, vlan] : table_of(file, value, "bridges")) {
        check_interface_name(file, key.source(), key.str());
        const uint16_t vid = vid_of(file, vlan, number_of(file, vlan, "VLAN", 1, kMostVid));
        if (std::any_of(bridges.begin(), bridges.end(), [&](const auto &row) { return row.second == vid; })) {
            file.fail(vlan.source(), "VLAN " + std::to_string(vid) + " is another bridge's.");
        }
        bridges[std::string{key.str()}] = vid;
    }
}

/** Checks the list, or makes it of the first one. */
void complete_physical_ports(const File &file, Configuration &configuration) {
    auto &ports = configuration.physical_ports;
    if (ports.empty()) {
        for (uint32_t i = 0; i < configuration.user_ports; ++i) {
            ports.push_back(file.first_physical_port + i);
        }
    }
    std::vector<uint32_t> all = ports;
    all.push_back(configuration.cpu_physical_port);
    std::sort(all.begin(), all.end());
    const bool is_unique = std::adjacent_find(all.begin(), all.end()) == all.end();
    if (ports.size() != configuration.user_ports || !is_unique || all.back() > kMostPhysicalPort) {
        throw vdevice::io::Error{file.path + ": each of the " + std::to_string(configuration.user_ports) +
                                 " user ports, and the CPU port, needs a physical port of its own, from 0 to " +
                                 std::to_string(kMostPhysicalPort) + "."};
    }
}

/** Behind the first one, in the order of InterfaceKind. */
constexpr const char *kInterfacesKinds[] = {"auto", "tap", "veth"};
static_assert(std::size(kInterfacesKinds) == static_cast<size_t>(InterfaceKind::kVeth) + 2);

void read_interfaces_kind(File &file, const toml::node &value, Configuration &configuration) {
    if (const uint32_t word = choice_of(file, value, "interfaces_kind", kInterfacesKinds); word != 0) {
        configuration.interfaces_kind = static_cast<InterfaceKind>(word - 1);
    }
}

void read_mac(File &file, const toml::node &value, Configuration &configuration) {
    configuration.mac = mac_of_text(text_of(file, value, "mac"));
    if (!configuration.mac || !is_station_address(*configuration.mac)) {
        file.fail(value.source(), "mac must be the address of one interface, as \"02:00:00:00:00:01\".");
    }
}

void read_log_level(File &file, const toml::node &value, Configuration &configuration) {
    configuration.log_level = vdevice::log_level_named(text_of(file, value, "log_level"));
    if (!configuration.log_level) {
        file.fail(value.source(), std::string{"log_level must be "} + vdevice::kLogLevelHelp + ".");
    }
}

constexpr Key<Configuration> kFileKeys[] = {
    {"run_dir", [](File &file, const toml::node &value,
                   Configuration &configuration) { configuration.run_dir = text_of(file, value, "run_dir"); }},
    {"cpu_interface",
     [](File &file, const toml::node &value, Configuration &configuration) {
         configuration.cpu_interface = text_of(file, value, "cpu_interface");
         check_interface_name(file, value.source(), configuration.cpu_interface);
     }},
    {"user_ports",
     [](File &file, const toml::node &value, Configuration &configuration) {
         configuration.user_ports = number_of(file, value, "user_ports", 1, ADP_USER_PORTS);
     }},
    {"first_physical_port",
     [](File &file, const toml::node &value, Configuration & /*configuration*/) {
         file.first_physical_port = number_of(file, value, "first_physical_port", 0, kMostPhysicalPort);
     }},
    {"cpu_physical_port",
     [](File &file, const toml::node &value, Configuration &configuration) {
         configuration.cpu_physical_port = number_of(file, value, "cpu_physical_port", 0, kMostPhysicalPort);
     }},
    {"physical_ports",
     [](File &file, const toml::node &value, Configuration &configuration) {
         for (const toml::node &entry : list_of(file, value, "physical_ports")) {
             configuration.physical_ports.push_back(number_of(file, entry, "a physical port", 0, kMostPhysicalPort));
         }
     }},
    {"first_internal_vid",
     [](File &file, const toml::node &value, Configuration &configuration) {
         constexpr uint32_t kMost = kMostVid - ADP_USER_PORTS - ADP_AGG_GROUPS;
         configuration.first_internal_vid =
             static_cast<uint16_t>(number_of(file, value, "first_internal_vid", 2, kMost));
     }},
    {"mac", read_mac},
    {"interfaces_kind", read_interfaces_kind},
    {"flood_limit",
     [](File &file, const toml::node &value, Configuration &configuration) {
         constexpr uint32_t kMost = 1000000;
         configuration.flood_limit = number_of(file, value, "flood_limit", 0, kMost);
     }},
    {"learned_seconds",
     [](File &file, const toml::node &value, Configuration &configuration) {
         constexpr uint32_t kMost = 3600;
         configuration.learned_seconds = number_of(file, value, "learned_seconds", 1, kMost);
     }},
    {"log_level", read_log_level},
    {"interfaces", later},
    {"bridges", later},
    {"groups", later},
    {"ports", later},
};

struct Part {
    const char *key;
    void (*read)(File &file, const toml::node &value);
};

/** In the order in which one depends on another. */
constexpr Part kParts[] = {
    {"groups", read_groups}, {"ports", read_ports}, {"interfaces", read_interfaces}, {"bridges", read_bridges}};

/** What cannot change is that of the running daemon, if one is. */
ConfigurationAgain read_file(const std::string &path, const Configuration *running) {
    File file{{path}, {}};
    file.configuration.user_ports = ADP_USER_PORTS;
    const toml::table table = path.empty() ? toml::table{} : toml_file::parse(file);
    read_table(file, table, kFileKeys, file.configuration);
    complete_physical_ports(file, file.configuration);
    std::vector<std::string> kept;
    if (running != nullptr) {
        kept = keep_fixed(file.configuration, *running);
    }
    for (const Part &part : kParts) {
        if (const toml::node *value = table.get(part.key)) {
            part.read(file, *value);
        }
    }
    return {std::move(file.configuration), std::move(kept)};
}

}  // namespace

Configuration read_configuration(const std::string &path) {
    return read_file(path, nullptr).configuration;
}

ConfigurationAgain read_configuration_again(const std::string &path, const Configuration &running) {
    return read_file(path, &running);
}

}  // namespace switchd
