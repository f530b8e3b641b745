#include "tools/vdevctl/tag_tables.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <vector>

#include "tools/vdevctl/port_text.h"

namespace vdevice {
namespace {

using nlohmann::json;

std::string vlan_list(const json &ranges) {
    std::vector<std::string> parts;
    for (const json &range : ranges) {
        const int first = range[0].get<int>();
        const int last = range[1].get<int>();
        parts.push_back(first == last ? std::to_string(first) : fmt::format("{}-{}", first, last));
    }
    return parts.empty() ? "-" : fmt::format("{}", fmt::join(parts, ","));
}

std::string priority_text(const json &priority) {
    return priority.is_null() ? "kept" : std::to_string(priority.get<int>());
}

std::string dotted(uint32_t address) {
    return fmt::format("{}.{}.{}.{}", address >> 24, address >> 16 & 0xFF, address >> 8 & 0xFF, address & 0xFF);
}

std::string show_entries(const char *table, const json &entries) {
    std::string text;
    for (const json &entry : entries) {
        text += fmt::format("{:<10} {:>4}  {:<34} {:>5}  {}\n", table, port_name(entry["port"].get<int>()),
                            entry["vid"].get<int>(), entry["new_vid"].get<int>(), priority_text(entry["priority"]));
    }
    return text;
}

std::string show_subnets(const json &subnets) {
    std::string text;
    for (const json &subnet : subnets) {
        const std::string network =
            fmt::format("{}/{}", dotted(subnet["address"].get<uint32_t>()), dotted(subnet["mask"].get<uint32_t>()));
        text += fmt::format("{:<10} {:>4}  {:<34} {:>5}  {}\n", "subnet", port_name(subnet["port"].get<int>()), network,
                            subnet["vid"].get<int>(), priority_text(subnet["priority"]));
    }
    return text;
}

/** Ports with plain tags are not worth a line. */
std::string show_port_tags(const json &ports) {
    constexpr int kPlainTpid = 0x8100;
    std::string text;
    for (const json &port : ports) {
        if (port["mode"] != "off" || port["tpid"] != kPlainTpid) {
            text += fmt::format("port {}: double tags {}, TPID {:#06x}\n", port_name(port["port"].get<int>()),
                                port["mode"].get<std::string>(), port["tpid"].get<int>());
        }
    }
    return text;
}

}  // namespace

std::string show_stp_groups(const json &answer) {
    std::string text;
    for (const json &group : answer["groups"]) {
        text += fmt::format("group {}{}  VLANs {}\n", group["group"].get<int>(),
                            group["default"].get<bool>() ? "*" : "", vlan_list(group["vlans"]));
        for (const char *state : {"disabled", "blocking", "listening", "learning", "forwarding"}) {
            if (!group[state].empty()) {
                text += fmt::format("    {:<10} {}\n", state, port_list(group[state]));
            }
        }
    }
    return text + "* default group\n";
}

std::string show_translations(const json &answer) {
    std::string text = fmt::format("{:<10} {:>4}  {:<34} {:>5}  {}\n", "TABLE", "PORT", "MATCH", "VLAN", "PRIORITY");
    text += show_entries("ingress", answer["ingress"]);
    text += show_entries("egress", answer["egress"]);
    text += show_entries("double tag", answer["double_tags"]);
    return text + show_subnets(answer["subnets"]) + show_port_tags(answer["ports"]);
}

}  // namespace vdevice
