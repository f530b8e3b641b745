// The keys of the configuration file, and the settings that they make.
#include <algorithm>
#include <iterator>

#include "vdevice/chip/tables/stp_groups.h"
#include "vdevice/daemon/configuration.h"
#include "vdevice/daemon/configuration_tables.h"
#include "vdevice/driver/driver.h"
#include "vdevice/io/error.h"
#include "vdevice/io/receive_ring.h"

namespace vdevice {
namespace {

using configuration_file::File, configuration_file::kCpuPort, configuration_file::ports_of,
    configuration_file::read_list;
using toml_file::choice_of, toml_file::number_of, toml_file::switch_of, toml_file::text_of;

template <typename Target>
using Key = toml_file::Key<File, Target>;

constexpr uint32_t kUnit = 0;

uint32_t vid_of(const File &file, const toml::node &value) {
    return number_of(file, value, "VLAN", chip::kMinVid, chip::kMaxVid);
}

int chip_port_of(const File &file, int port) {
    return port == kCpuPort ? chip::Switch::kCpuPort : *file.board.chip_port(port);
}

std::string port_text(int port) {
    return port == kCpuPort ? "the CPU port" : "port " + std::to_string(port);
}

// The keys of [[vlan]].

struct VlanEntry {
    std::optional<uint32_t> vid;
    chip::PortSet members;
    chip::PortSet untagged;
};

chip::PortSet port_set_of(const File &file, const toml::node &value, const char *name) {
    chip::PortSet set;
    for (const int port : ports_of(file, value, name)) {
        set.add(chip_port_of(file, port));
    }
    return set;
}

constexpr Key<VlanEntry> kVlanKeys[] = {
    {"vid", [](File &file, const toml::node &value, VlanEntry &vlan) { vlan.vid = vid_of(file, value); }},
    {"members",
     [](File &file, const toml::node &value, VlanEntry &vlan) { vlan.members = port_set_of(file, value, "members"); }},
    {"untagged", [](File &file, const toml::node &value,
                    VlanEntry &vlan) { vlan.untagged = port_set_of(file, value, "untagged"); }},
};

int32_t make_vlan(DriverCalls &calls, const VlanEntry &vlan) {
    uint32_t members[chip::PortSet::kWords];
    uint32_t untagged[chip::PortSet::kWords];
    vlan.members.to_words(members);
    vlan.untagged.to_words(untagged);
    calls.user_vlan_create(kUnit, 0, *vlan.vid);  // it may be there already
    return calls.user_vlan_port_set(kUnit, 0, *vlan.vid, members, untagged);
}

void read_vlan(File &file, const toml::table &table) {
    VlanEntry vlan;
    read_table(file, table, kVlanKeys, vlan);
    if (!vlan.vid) {
        file.fail(table.source(), "a VLAN needs its 'vid'.");
    }
    if (!((vlan.untagged & vlan.members) == vlan.untagged)) {
        file.fail(table.source(), "a port of 'untagged' is not in 'members'.");
    }
    if (!file.configuration.vids.insert(*vlan.vid).second) {
        file.fail(table.source(), "VLAN " + std::to_string(*vlan.vid) + " is there twice.");
    }
    file.configuration.steps.push_back({file.place(table.source()), "VLAN " + std::to_string(*vlan.vid),
                                        [vlan](DriverCalls &calls) { return make_vlan(calls, vlan); }});
}

// The keys of [[port]].

struct PortEntry {
    std::vector<int> ports;
};

using PortCall = int32_t (*)(DriverCalls &calls, int32_t port, uint32_t value);

void add_port_steps(File &file, const toml::node &at, const PortEntry &entry, const char *what, uint32_t value,
                    PortCall call) {
    for (const int port : entry.ports) {
        const int chip_port = chip_port_of(file, port);
        file.port_steps.push_back({file.place(at.source()), std::string{what} + " of " + port_text(port),
                                   [=](DriverCalls &calls) { return call(calls, chip_port, value); }});
    }
}

void read_interface(File &file, const toml::node &value, PortEntry &entry) {
    const std::string name = text_of(file, value, "interface");
    if (!is_interface_name(name)) {
        file.fail(value.source(), "an interface has a name of 1 to 15 letters without blanks, '/' and ':'.");
    }
    if (entry.ports.size() != 1) {
        file.fail(value.source(), "an interface is of one port alone.");
    }
    auto &interfaces = file.configuration.interfaces;
    const bool is_taken =
        std::any_of(interfaces.begin(), interfaces.end(), [&](const auto &row) { return row.second == name; });
    if (is_taken || !interfaces.emplace(entry.ports.front(), name).second) {
        file.fail(value.source(), "a port has one interface, and an interface one port.");
    }
}

constexpr const char *kDuplexes[] = {"half", "full", "auto"};
constexpr const char *kStates[] = {"disabled", "blocking", "listening", "learning", "forwarding"};
static_assert(std::size(kStates) == chip::kStpStates);

constexpr Key<PortEntry> kPortKeys[] = {
    {"ports", [](File &, const toml::node &, PortEntry &) {}},  // read first
    {"interface", read_interface},
    {"enabled",
     [](File &file, const toml::node &value, PortEntry &entry) {
         add_port_steps(file, value, entry, "the state", switch_of(file, value, "enabled") ? 1 : 0,
                        [](DriverCalls &calls, int32_t port, uint32_t on) {
                            return calls.user_port_enable_set(kUnit, 0, port, on);
                        });
     }},
    {"speed",
     [](File &file, const toml::node &value, PortEntry &entry) {
         add_port_steps(file, value, entry, "the speed", number_of(file, value, "speed", 0, chip::kTenGigabit),
                        [](DriverCalls &calls, int32_t port, uint32_t speed) {
                            return calls.user_port_speed_set(kUnit, 0, port, speed, 0);
                        });
     }},
    {"duplex",
     [](File &file, const toml::node &value, PortEntry &entry) {
         add_port_steps(file, value, entry, "the duplex mode", choice_of(file, value, "duplex", kDuplexes),
                        [](DriverCalls &calls, int32_t port, uint32_t duplex) {
                            return calls.user_port_duplex_set(kUnit, 0, port, duplex, 0);
                        });
     }},
    {"pvid",
     [](File &file, const toml::node &value, PortEntry &entry) {
         add_port_steps(file, value, entry, "the PVID", vid_of(file, value),
                        [](DriverCalls &calls, int32_t port, uint32_t vid) {
                            return calls.user_port_untagged_vlan_set(kUnit, 0, port, vid);
                        });
     }},
    {"spanning-tree",
     [](File &file, const toml::node &value, PortEntry &entry) {
         add_port_steps(file, value, entry, "the spanning-tree state", choice_of(file, value, "spanning-tree", kStates),
                        [](DriverCalls &calls, int32_t port, uint32_t code) {
                            return calls.user_stg_stp_set(kUnit, 0, chip::StpGroups::kDefault, port, code);
                        });
     }},
};

void read_port(File &file, const toml::table &table) {
    PortEntry entry;
    const toml::node *ports = table.get("ports");
    if (ports == nullptr) {
        file.fail(table.source(), "settings of ports need their 'ports'.");
    }
    entry.ports = ports_of(file, *ports, "ports");
    read_table(file, table, kPortKeys, entry);
}

// The keys of the file.

void read_log_level(File &file, const toml::node &value, Settings &settings) {
    settings.log_level = log_level_named(text_of(file, value, "log-level"));
    if (!settings.log_level) {
        file.fail(value.source(), std::string{"log-level must be "} + kLogLevelHelp + ".");
    }
}

constexpr Key<Settings> kFileKeys[] = {
    {"run-dir", [](File &file, const toml::node &value,
                   Settings &settings) { settings.run_dir = text_of(file, value, "run-dir"); }},
    {"create-interfaces",
     [](File &file, const toml::node &value, Settings &settings) {
         settings.create_interfaces = switch_of(file, value, "create-interfaces");
     }},
    {"user-ports",
     [](File &file, const toml::node &value, Settings &settings) {
         settings.user_ports = static_cast<int>(number_of(file, value, "user-ports", 1, chip::Switch::kPorts - 1));
     }},
    {"first-port",
     [](File &file, const toml::node &value, Settings &settings) {
         settings.first_port = static_cast<int>(number_of(file, value, "first-port", 1, chip::Switch::kPorts - 1));
     }},
    {"port-interfaces", [](File &file, const toml::node &value,
                           Settings &settings) { settings.port_interfaces = text_of(file, value, "port-interfaces"); }},
    {"ring-slots",
     [](File &file, const toml::node &value, Settings &settings) {
         settings.ring_slots =
             number_of(file, value, "ring-slots", io::ReceiveRing::kSlotsInBlock, io::ReceiveRing::kMostSlots);
     }},
    {"line-rate", [](File &file, const toml::node &value,
                     Settings &settings) { settings.line_rate = switch_of(file, value, "line-rate"); }},
    {"log-level", read_log_level},
    {"ageing-time",
     [](File &file, const toml::node &value, Settings &) {
         const uint32_t time = number_of(file, value, "ageing-time", 0, chip::MacTable::kMaxAgeTime.count());
         file.configuration.steps.push_back({file.place(value.source()), "the ageing time", [time](DriverCalls &calls) {
                                                 return calls.user_mac_age_time_set(kUnit, time);
                                             }});
     }},
    {"port", [](File &, const toml::node &, Settings &) {}},  // read when the board is known
    {"vlan", [](File &, const toml::node &, Settings &) {}},
    {"cable", [](File &, const toml::node &, Settings &) {}},
};

/** Makes the settings on a chip of its own: what the driver refuses there it would refuse on the device. */
void rehearse(const File &file) {
    class NoPorts final : public chip::Sink {
        void transmit(int, const chip::Frame &) override {}
        void port_changed(int) override {}
        void departure_changed() override {}
    };
    NoPorts sink;
    chip::Switch chip{sink};
    driver::Driver driver{chip, file.board, [] { return chip::Time{}; }};
    const std::vector<std::string> refusals = apply(file.configuration, driver);
    if (!refusals.empty()) {
        throw io::Error{refusals.front()};
    }
}

}  // namespace

Configuration read_configuration(const std::string &path, const Settings &given) {
    File file{{path}, given, {}, {}, {}};
    const toml::table table = toml_file::parse(file);
    read_table(file, table, kFileKeys, file.configuration.settings);
    const Settings settings = given.or_else(file.configuration.settings);
    try {
        settings.check();
    } catch (const io::Error &error) {
        throw io::Error{path + ": " + error.what()};
    }
    file.board = settings.board();
    if (const toml::node *vlans = table.get("vlan")) {
        read_list(file, *vlans, "vlan", read_vlan);
    }
    if (const toml::node *ports = table.get("port")) {
        read_list(file, *ports, "port", read_port);
    }
    if (const toml::node *cables = table.get("cable")) {
        read_list(file, *cables, "cable", configuration_file::read_cable);
    }
    std::move(file.port_steps.begin(), file.port_steps.end(), std::back_inserter(file.configuration.steps));
    rehearse(file);
    return std::move(file.configuration);
}

}  // namespace vdevice
