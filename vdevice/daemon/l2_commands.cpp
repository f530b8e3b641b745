// The commands that show the MAC table: stations, groups of stations, limits on learning.
#include "vdevice/daemon/command.h"
#include "vdevice/driver/mac_text.h"

namespace vdevice {
namespace {

using chip::LearnLimits;
using chip::MacEntry;
using chip::MacTable;
using chip::Switch;
using chip::TrunkTable;
using nlohmann::json;

const char *kind_of(const MacEntry &entry) {
    if (entry.is_filter()) {
        return "filter";
    }
    return entry.is_static ? "static" : "dynamic";
}

json station(const Device &device, const MacEntry &entry) {
    json row = {{"vid", entry.vid},
                {"mac", driver::to_text(entry.mac)},
                {"index", entry.index},
                {"port", user_number(device, entry.port)},
                {"trunk", entry.trunk},
                {"kind", kind_of(entry)},
                {"static", entry.is_static},
                {"drops_to", entry.drops_to},
                {"drops_from", entry.drops_from}};
    if (!entry.is_static) {
        row["age"] = seconds(device.now() - entry.last_seen);
    }
    return row;
}

/** A limit that was set, with what has been learned under it; else nothing. */
void add_limit(json &rows, json scope, LearnLimits::Limit limit, uint32_t learned) {
    if (limit != LearnLimits::kNoLimit) {
        scope["limit"] = limit;
        scope["learned"] = learned;
        rows.push_back(std::move(scope));
    }
}

json limits_of(const Device &device) {
    const LearnLimits &limits = device.chip().limits();
    const chip::LearnCounts &counts = device.chip().macs().counts();
    json rows = json::array();
    add_limit(rows, {{"scope", "system"}}, limits.system(), counts.total());
    for (chip::Vid vid = chip::kMinVid; vid <= chip::kMaxVid; ++vid) {
        add_limit(rows, {{"scope", "vlan"}, {"vid", vid}}, limits.of_vlan(vid), counts.in_vlan(vid));
    }
    for (int port = 0; port < Switch::kPorts; ++port) {
        const json scope = {{"scope", "port"}, {"port", user_number(device, port)}};
        add_limit(rows, scope, limits.of_port(port), counts.behind({port}));
    }
    for (int trunk = 0; trunk < TrunkTable::kTrunks; ++trunk) {
        add_limit(rows, {{"scope", "trunk"}, {"trunk", trunk}}, limits.of_trunk(trunk), counts.behind({0, trunk}));
    }
    return rows;
}

json violations_of(const Device &device) {
    json rows = json::array();
    for (int number = 0; number < Switch::kPorts; ++number) {
        const chip::Violations &violations = device.chip().port(number).violations;
        json addresses = json::array();
        for (const auto &[vid, mac] : violations.addresses()) {
            addresses.push_back({{"vid", vid}, {"mac", driver::to_text(mac)}});
        }
        if (!addresses.empty()) {
            rows.push_back({{"port", user_number(device, number)},
                            {"count", violations.count()},
                            {"addresses", std::move(addresses)}});
        }
    }
    return rows;
}

const char *name(chip::GroupMiss miss) {
    switch (miss) {
        case chip::GroupMiss::kDrop:
            return "drop";
        case chip::GroupMiss::kToCpu:
            return "cpu";
        case chip::GroupMiss::kFlood:
            break;
    }
    return "flood";
}

json group_rules_of(const Device &device) {
    json rows = json::array();
    for (int number = 0; number < Switch::kPorts; ++number) {
        if (device.wire(number) == nullptr) {
            continue;
        }
        const chip::PortGroupRules &rules = device.chip().port(number).groups;
        rows.push_back({{"port", user_number(device, number)},
                        {"entries", rules.uses_entries},
                        {"ipv4", rules.knows_ipv4},
                        {"ipv4_miss", name(rules.ipv4_miss)},
                        {"ipv6_miss", name(rules.ipv6_miss)}});
    }
    return rows;
}

}  // namespace

json show_macs(Device &device, const json & /*request*/) {
    json rows = json::array();
    const MacTable &table = device.chip().macs();
    for (const MacEntry &entry : table.list()) {
        if (!entry.is_group()) {
            rows.push_back(station(device, entry));
        }
    }
    return {{"macs", rows},
            {"groups", table.group_count()},
            {"capacity", MacTable::kCapacity},
            {"age_time", table.age_time().count()},
            {"learned", table.counters().learned},
            {"moved", table.counters().moved},
            {"aged", table.counters().aged},
            {"refused", table.counters().refused}};
}

json show_groups(Device &device, const json & /*request*/) {
    json rows = json::array();
    const MacTable &table = device.chip().macs();
    for (const MacEntry &entry : table.list()) {
        if (entry.is_group()) {
            rows.push_back({{"vid", entry.vid},
                            {"mac", driver::to_text(entry.mac)},
                            {"group", entry.group},
                            {"index", entry.index},
                            {"ports", user_numbers(device, table.ports_of(entry))}});
        }
    }
    const chip::GroupRules &rules = device.chip().group_rules();
    return {{"mcast", rows},
            {"capacity", chip::PortSetPool::kCapacity},
            {"ipv4", rules.knows_ipv4},
            {"ipv6", rules.knows_ipv6},
            {"ports", group_rules_of(device)}};
}

json show_limits(Device &device, const json & /*request*/) {
    return {{"limits", limits_of(device)},
            {"learned", device.chip().macs().counts().total()},
            {"violations", violations_of(device)}};
}

}  // namespace vdevice
