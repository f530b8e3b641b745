// Multicast groups, and how ports forward to them.
#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "vdevice/driver/mac_text.h"
#include "vdevice/inspect/port_names.h"
#include "vdevice/inspect/subject.h"
#include "vdevice/inspect/text.h"
#include "vdevice/state/words.h"

namespace vdevice::inspect {
namespace {

using chip::MacEntry;
using nlohmann::json;

json group_rules_of(const Device &device) {
    json rows = json::array();
    for (const int number : wired_ports(device)) {
        const chip::PortGroupRules &rules = device.chip().port(number).groups;
        rows.push_back({{"port", user_number(device, number)},
                        {"entries", rules.uses_entries},
                        {"ipv4", rules.knows_ipv4},
                        {"ipv4_miss", state::word(rules.ipv4_miss)},
                        {"ipv6_miss", state::word(rules.ipv6_miss)}});
    }
    return rows;
}

json read_mcast(Device &device, const json & /*request*/) {
    json rows = json::array();
    const chip::MacTable &table = device.chip().macs();
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

std::string known_or_not(const json &value) {
    return value.get<bool>() ? "known" : "unknown";
}

std::string show_mcast(const json &answer) {
    std::string text = fmt::format("{:>4}  {:<17}  {:>5}  {:>5}  {}\n", "VLAN", "ADDRESS", "GROUP", "INDEX", "PORTS");
    for (const json &entry : answer["mcast"]) {
        text +=
            fmt::format("{:>4}  {:<17}  {:>5}  {:>5}  {}\n", entry["vid"].get<int>(), entry["mac"].get<std::string>(),
                        entry["group"].get<int>(), entry["index"].get<int>(), port_list(entry["ports"]));
    }
    text += fmt::format("{} of {} groups; IPv4 groups {}, IPv6 groups {}\n", all_rows(answer, "mcast"),
                        answer["capacity"].get<int>(), known_or_not(answer["ipv4"]), known_or_not(answer["ipv6"]));
    text += fmt::format("{:>4}  {:<7}  {:<7}  {:<9}  {}\n", "PORT", "ENTRIES", "IPV4", "IPV4 MISS", "IPV6 MISS");
    for (const json &port : answer["ports"]) {
        text += fmt::format("{:>4}  {:<7}  {:<7}  {:<9}  {}\n", port_name(port),
                            port["entries"].get<bool>() ? "used" : "unused", known_or_not(port["ipv4"]),
                            port["ipv4_miss"].get<std::string>(), port["ipv6_miss"].get<std::string>());
    }
    return text;
}

constexpr Filter kMcastFilters[] = {
    kByVlan,
    {"port", kPortList, "rows of these ports: 3 or 1-4,7 or cpu", FilterKind::kNumbers, {"port", "ports"}},
    {"mac", "ADDRESS", "the rows of this address", FilterKind::kWord, {"mac"}}};

}  // namespace

extern constexpr Subject kMcast{"mcast",    "",         "the multicast groups, and how ports forward to unknown ones",
                                read_mcast, show_mcast, kMcastFilters,
                                {},         kLong};

}  // namespace vdevice::inspect
