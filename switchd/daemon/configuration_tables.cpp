// The tables of groups and ports.
#include <adp/agg.h>

#include <algorithm>
#include <iterator>

#include "switchd/daemon/configuration_file.h"
#include "text/printable.h"

namespace switchd::configuration_file {
namespace {

using toml_file::choice_of, toml_file::number_of, toml_file::switch_of, toml_file::text_of;

// The keys of [groups.agg1].

/** In the order of GroupMode. */
constexpr const char *kModes[] = {"static", "lacp"};
constexpr const char *kRates[] = {"slow", "fast"};
/** In the order of enum adp_balance_mode. */
constexpr const char *kBalances[] = {"destination_mac", "source_mac", "mac", "destination_ip", "source_ip", "ip"};
static_assert(std::size(kModes) == static_cast<size_t>(GroupMode::kLacp) + 1);
static_assert(std::size(kBalances) == ADP_BALANCE_SRC_DST_IP);

void read_members(File &file, const toml::node &value, GroupSettings &group) {
    for (const toml::node &entry : list_of(file, value, "members")) {
        const std::string name = text_of(file, entry, "a member");
        const PortName port = whole_port_named(file, entry.source(), name);
        if (is_group(port)) {
            file.fail(entry.source(), configuration_file::quoted(name) + " is a group, and no member of one.");
        }
        const bool is_elsewhere = is_in_a_group(file.configuration, port.intf);
        if (is_elsewhere || !group.members.emplace(port.intf, Configuration::kDefaultPriority).second) {
            file.fail(entry.source(), configuration_file::quoted(name) + " is in a group already.");
        }
    }
}

constexpr Key<GroupSettings> kGroupKeys[] = {
    {"members", read_members},
    {"mode", [](File &file, const toml::node &value,
                GroupSettings &group) { group.mode = static_cast<GroupMode>(choice_of(file, value, "mode", kModes)); }},
    {"active", [](File &file, const toml::node &value,
                  GroupSettings &group) { group.is_active = switch_of(file, value, "active"); }},
    {"rate", [](File &file, const toml::node &value,
                GroupSettings &group) { group.is_fast = choice_of(file, value, "rate", kRates) != 0; }},
    {"balance", [](File &file, const toml::node &value,
                   GroupSettings &group) { group.balance = choice_of(file, value, "balance", kBalances) + 1; }},
    {"minimum_links",
     [](File &file, const toml::node &value, GroupSettings &group) {
         group.minimum_links = number_of(file, value, "minimum_links", 1, ADP_AGG_ACTIVE_MAX);
     }},
};

// The keys of [ports.swp5].

constexpr const char *kDot1x[] = {"none", "port", "stations"};
static_assert(std::size(kDot1x) == static_cast<size_t>(Dot1xControl::kStations) + 1);

struct PortEntry : Configuration::Port {
    std::optional<uint16_t> priority; /**< of a group's member */
};

constexpr Key<PortEntry> kPortKeys[] = {
    {"dot1x", [](File &file, const toml::node &value,
                 PortEntry &port) { port.dot1x = static_cast<Dot1xControl>(choice_of(file, value, "dot1x", kDot1x)); }},
    {"mtu",
     [](File &file, const toml::node &value, PortEntry &port) {
         constexpr uint32_t kLeast = 68;   // RFC 791
         constexpr uint32_t kMost = 9000;  // with tags still within the longest frame of the switch
         port.mtu = number_of(file, value, "mtu", kLeast, kMost);
     }},
    {"priority",
     [](File &file, const toml::node &value, PortEntry &port) {
         port.priority = static_cast<uint16_t>(number_of(file, value, "priority", 0, UINT16_MAX));
     }},
};

/** Settings that only ports outside groups have, or only members of groups. */
void check_place(const File &file, const toml::source_region &where, const PortName &name, const PortEntry &port) {
    const bool is_member = is_in_a_group(file.configuration, name.intf);
    if (port.dot1x != Dot1xControl::kNone && (is_group(name) || is_member)) {
        file.fail(where, "802.1X is for user ports outside groups.");
    }
    if (port.priority && !is_member) {
        file.fail(where, "priority is LACP's, for members of groups.");
    }
}

}  // namespace

std::string quoted(std::string_view name) {
    constexpr size_t kShown = 32;
    return "'" + text::on_one_line(name.substr(0, kShown)) + "'";
}

bool is_group(const PortName &port) {
    return port.intf >> ADP_INTF_TYPE_SHIFT == ADP_INTF_TYPE_AGG;
}

// Groups that the file does not have are refused where they matter.
PortName port_named(const File &file, const toml::source_region &where, std::string_view name) {
    const auto port = port_of_name(name);
    if (!port) {
        file.fail(where, configuration_file::quoted(name) +
                             " is no interface of the switch; these are swp1, agg1, or swp1.100 with a tag.");
    }
    if (!is_group(*port) && port->intf > file.configuration.user_ports) {
        file.fail(where, "there is no " + configuration_file::quoted(name) + ": the user ports are 1 to " +
                             std::to_string(file.configuration.user_ports) + ".");
    }
    return *port;
}

PortName whole_port_named(const File &file, const toml::source_region &where, std::string_view name) {
    const PortName port = port_named(file, where, name);
    if (port.vid != 0) {
        file.fail(where, configuration_file::quoted(name) + " has a tag: these settings are for all of " +
                             quoted(name.substr(0, name.find('.'))) + ".");
    }
    return port;
}

bool is_in_a_group(const Configuration &configuration, uint32_t port) {
    return std::any_of(configuration.groups.begin(), configuration.groups.end(),
                       [&](const auto &row) { return row.second.members.count(port) != 0; });
}

const toml::table &table_of(const File &file, const toml::node &value, const std::string &name) {
    const toml::table *table = value.as_table();
    if (table == nullptr) {
        file.fail(value.source(), name + " is a table: [" + name + "].");
    }
    return *table;
}

const toml::array &list_of(const File &file, const toml::node &value, const char *name) {
    const toml::array *list = value.as_array();
    if (list == nullptr) {
        file.fail(value.source(), std::string{name} + " must be a list in brackets.");
    }
    return *list;
}

void read_groups(File &file, const toml::node &value) {
    for (const auto &[key, settings] : table_of(file, value, "groups")) {
        const PortName port = whole_port_named(file, key.source(), key.str());
        if (!is_group(port)) {
            file.fail(key.source(), quoted(key.str()) + " is no group; these are agg1 to agg8.");
        }
        GroupSettings group;
        read_table(file, table_of(file, settings, "groups." + std::string{key.str()}), kGroupKeys, group);
        if (group.members.empty()) {
            file.fail(key.source(), "a group needs its 'members'.");
        }
        if (group.minimum_links > group.members.size()) {
            file.fail(key.source(), "the group has fewer members than minimum_links.");
        }
        file.configuration.groups[port.intf & ADP_INTF_INDEX_MASK] = group;
    }
}

void read_ports(File &file, const toml::node &value) {
    for (const auto &[key, settings] : table_of(file, value, "ports")) {
        const PortName name = whole_port_named(file, key.source(), key.str());
        PortEntry port;
        read_table(file, table_of(file, settings, "ports." + std::string{key.str()}), kPortKeys, port);
        check_place(file, key.source(), name, port);
        file.configuration.ports[name.intf] = port;
        for (auto &[number, group] : file.configuration.groups) {
            if (const auto member = group.members.find(name.intf); member != group.members.end()) {
                member->second = port.priority.value_or(member->second);
            }
        }
    }
}

}  // namespace switchd::configuration_file
