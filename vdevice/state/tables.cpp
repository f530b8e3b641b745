// VLANs, addresses, groups, trunks, spanning trees, mirrors, tags and limits.
#include <nlohmann/json.hpp>

#include "vdevice/driver/mac_text.h"
#include "vdevice/state/parts.h"

namespace vdevice::state {
namespace {

using chip::LearnLimits;
using chip::MacEntry;
using nlohmann::json;

json change_of(const chip::TagChange &change) {
    return {{"vid", change.vid}, {"priority", change.has_priority() ? json(change.priority) : json(nullptr)}};
}

json entries_of(const Source &source, const chip::VidMap &map) {
    json rows = json::object();
    for (const auto &[key, change] : map.entries()) {
        rows["port " + source.key(key.port) + " vlan " + std::to_string(key.vid)] = change_of(change);
    }
    return rows;
}

std::string dotted(uint32_t address) {
    constexpr uint32_t kByte = 0xFF;
    return std::to_string(address >> 24) + "." + std::to_string(address >> 16 & kByte) + "." +
           std::to_string(address >> 8 & kByte) + "." + std::to_string(address & kByte);
}

json subnets_of(const Source &source) {
    json rows = json::object();
    for (const chip::Subnet &subnet : source.chip.tag_rules().subnets.list()) {
        rows["port " + source.key(static_cast<int>(subnet.port)) + " " + dotted(subnet.address) + "/" +
             dotted(subnet.mask)] = change_of(subnet.change);
    }
    return rows;
}

void add_limit(json &rows, const std::string &scope, LearnLimits::Limit limit) {
    if (limit != LearnLimits::kNoLimit) {
        rows[scope] = limit;
    }
}

json port_or_null(const Source &source, int chip_port) {
    return chip_port == chip::Mirror::kNone ? json(nullptr) : source.port(chip_port);
}

}  // namespace

std::string key(const MacEntry &entry) {
    return std::to_string(entry.vid) + " " + driver::to_text(entry.mac);
}

json vlans_of(const Source &source) {
    json rows = json::object();
    for (const chip::Vid vid : source.chip.vlans().list()) {
        const chip::Vlan &vlan = *source.chip.vlans().find(vid);
        rows[std::to_string(vid)] = {{"members", source.ports(vlan.members)},
                                     {"untagged", source.ports(vlan.untagged)}};
    }
    return rows;
}

json addresses_of(const Source &source) {
    json rows = json::object();
    for (const MacEntry &entry : source.chip.macs().list()) {
        if (entry.is_static && !entry.is_group()) {
            rows[key(entry)] = {{"port", source.port(entry.port)},
                                {"trunk", entry.place().is_trunk() ? json(entry.trunk) : json(nullptr)},
                                {"given_to_trunk", entry.is_given_to_trunk},
                                {"drops_to", entry.drops_to},
                                {"drops_from", entry.drops_from}};
        }
    }
    return rows;
}

json groups_of(const Source &source) {
    const chip::MacTable &table = source.chip.macs();
    json rows = json::object();
    for (const MacEntry &entry : table.list()) {
        if (entry.is_group()) {
            rows[key(entry)] = {{"number", entry.group}, {"ports", source.ports(table.ports_of(entry))}};
        }
    }
    return rows;
}

json limits_of(const Source &source) {
    const LearnLimits &limits = source.chip.limits();
    json rows = json::object();
    add_limit(rows, "system", limits.system());
    for (chip::Vid vid = chip::kMinVid; vid <= chip::kMaxVid; ++vid) {
        add_limit(rows, "vlan " + std::to_string(vid), limits.of_vlan(vid));
    }
    for (int port = 0; port < chip::Switch::kPorts; ++port) {
        add_limit(rows, "port " + source.key(port), limits.of_port(port));
    }
    for (int trunk = 0; trunk < chip::TrunkTable::kTrunks; ++trunk) {
        add_limit(rows, "trunk " + std::to_string(trunk), limits.of_trunk(trunk));
    }
    return rows;
}

// The software's members are kept when a trunk is destroyed, so trunks that do not exist can have some.
json trunks_of(const Source &source) {
    json rows = json::object();
    for (int number = 0; number < chip::TrunkTable::kTrunks; ++number) {
        const chip::Trunk &trunk = source.chip.trunks().row(number);
        if (!trunk.exists && !trunk.is_configured) {
            continue;
        }
        json members = json::array();  // in the order that the hash counts in
        for (const int port : trunk.members) {
            members.push_back(source.port(port));
        }
        rows[std::to_string(number)] = {
            {"exists", trunk.exists},
            {"members", members},
            {"configured", trunk.is_configured ? source.ports(trunk.configured) : json(nullptr)},
            {"balance", trunk.balance}};
    }
    return rows;
}

// The default group has all VLANs that are in no other.
json spanning_tree_of(const Source &source) {
    constexpr const char *kStates[] = {"disabled", "blocking", "listening", "learning", "forwarding"};
    const chip::StpGroups &groups = source.chip.stp();
    json rows = json::object();
    for (const int group : groups.list()) {
        json ports = json::object();
        for (int port = 0; port < chip::Switch::kPorts; ++port) {
            ports[source.key(port)] = kStates[static_cast<size_t>(groups.state(group, port))];
        }
        json row = {{"ports", ports}};
        if (group != chip::StpGroups::kDefault) {
            row["vlans"] = groups.vlans(group);
        }
        rows[std::to_string(group)] = std::move(row);
    }
    return rows;
}

json mirrors_of(const Source &source) {
    const chip::MirrorTable &table = source.chip.mirrors();
    json rows = json::object();
    for (uint32_t number = 0; number < chip::MirrorTable::kSessions; ++number) {
        const chip::Mirror &mirror = table.session(number);
        rows[std::to_string(number)] = {{"destination", port_or_null(source, mirror.destination)},
                                        {"ingress", source.ports(mirror.ingress)},
                                        {"egress", source.ports(mirror.egress)},
                                        {"flow", port_or_null(source, mirror.flow_destination)},
                                        {"disabled", mirror.disabled}};
    }
    return rows;
}

json tags_of(const Source &source) {
    const chip::TagRules &rules = source.chip.tag_rules();
    return {{"ingress", entries_of(source, rules.ingress)},
            {"egress", entries_of(source, rules.egress)},
            {"double", entries_of(source, rules.double_tags)},
            {"subnets", subnets_of(source)}};
}

}  // namespace vdevice::state
