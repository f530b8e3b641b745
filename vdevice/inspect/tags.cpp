// VLAN tags: translations, double tags, VLANs of IPv4 subnets, and each port's tag type.
#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "vdevice/inspect/port_names.h"
#include "vdevice/inspect/subject.h"
#include "vdevice/state/words.h"

namespace vdevice::inspect {
namespace {

using chip::TagChange;
using chip::VidMap;
using nlohmann::json;

json priority_or_null(const TagChange &change) {
    return change.priority == TagChange::kKeepPriority ? json(nullptr) : json(change.priority);
}

json read_entries(const Device &device, const VidMap &table) {
    json rows = json::array();
    for (const auto &[key, change] : table.entries()) {
        rows.push_back({{"port", user_number(device, key.port)},
                        {"vid", key.vid},
                        {"new_vid", change.vid},
                        {"priority", priority_or_null(change)}});
    }
    return rows;
}

json read_subnets(const Device &device) {
    json rows = json::array();
    for (const chip::Subnet &subnet : device.chip().tag_rules().subnets.list()) {
        rows.push_back({{"port", user_number(device, static_cast<int>(subnet.port))},
                        {"address", subnet.address},
                        {"mask", subnet.mask},
                        {"vid", subnet.change.vid},
                        {"priority", priority_or_null(subnet.change)}});
    }
    return rows;
}

json read_port_tags(const Device &device) {
    json rows = json::array();
    for (const int port : wired_ports(device)) {
        const chip::PortTags &tags = device.chip().port(port).tags;
        rows.push_back({{"port", user_number(device, port)}, {"mode", state::word(tags.mode)}, {"tpid", tags.tpid}});
    }
    return rows;
}

json read_translations(Device &device, const json & /*request*/) {
    const chip::TagRules &rules = device.chip().tag_rules();
    return {{"ingress", read_entries(device, rules.ingress)},
            {"egress", read_entries(device, rules.egress)},
            {"double_tags", read_entries(device, rules.double_tags)},
            {"subnets", read_subnets(device)},
            {"ports", read_port_tags(device)},
            {"capacity", VidMap::kCapacity},
            {"subnet_capacity", chip::SubnetTable::kCapacity}};
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
        text += fmt::format("{:<10} {:>4}  {:<34} {:>5}  {}\n", table, port_name(entry), entry["vid"].get<int>(),
                            entry["new_vid"].get<int>(), priority_text(entry["priority"]));
    }
    return text;
}

std::string show_subnets(const json &subnets) {
    std::string text;
    for (const json &subnet : subnets) {
        const std::string network =
            fmt::format("{}/{}", dotted(subnet["address"].get<uint32_t>()), dotted(subnet["mask"].get<uint32_t>()));
        text += fmt::format("{:<10} {:>4}  {:<34} {:>5}  {}\n", "subnet", port_name(subnet), network,
                            subnet["vid"].get<int>(), priority_text(subnet["priority"]));
    }
    return text;
}

/** A line for each port that differs from the power-on setting. */
std::string show_port_tags(const json &ports) {
    constexpr int kPlainTpid = 0x8100;
    std::string text;
    for (const json &port : ports) {
        if (port["mode"] != "off" || port["tpid"] != kPlainTpid) {
            text += fmt::format("port {}: double tags {}, TPID {:#06x}\n", port_name(port),
                                port["mode"].get<std::string>(), port["tpid"].get<int>());
        }
    }
    return text;
}

std::string show_translations(const json &answer) {
    std::string text = fmt::format("{:<10} {:>4}  {:<34} {:>5}  {}\n", "TABLE", "PORT", "MATCH", "VLAN", "PRIORITY");
    text += show_entries("ingress", answer["ingress"]);
    text += show_entries("egress", answer["egress"]);
    text += show_entries("double tag", answer["double_tags"]);
    return text + show_subnets(answer["subnets"]) + show_port_tags(answer["ports"]);
}

constexpr Filter kTranslationFilters[] = {
    kByPort, {"vlan", "VLANS", "rows that match or give one of these VLANs", FilterKind::kNumbers, {"vid", "new_vid"}}};

}  // namespace

extern constexpr Subject kTranslations{"translations",
                                       "",
                                       "VLAN translations, double tags, subnets and tag types",
                                       read_translations,
                                       show_translations,
                                       kTranslationFilters};

}  // namespace vdevice::inspect
