#include "tools/vdevctl/field_tables.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <vector>

#include "tools/vdevctl/port_text.h"

namespace vdevice {
namespace {

using nlohmann::json;

std::string value_text(const json &value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}

std::string mask_text(const json &mask) {
    return mask.is_string() ? mask.get<std::string>() : fmt::format("{:#x}", mask.get<uint32_t>());
}

/** "dscp 184/0xff", "in_ports 1-4", "ip_kind 5". */
std::string qualifier_text(const json &row) {
    std::string text = row["field"].get<std::string>() + " ";
    text += row.contains("ports") ? port_list(row["ports"]) : value_text(row["data"]);
    return text + (row.contains("mask") ? "/" + mask_text(row["mask"]) : "");
}

/** "set_dscp 46", "drop". */
std::string action_text(const json &row) {
    std::string text = row["action"].get<std::string>();
    if (row.contains("ports")) {
        text += " " + port_list(row["ports"]);
    } else if (row.contains("value")) {
        text += " " + value_text(row["value"]);
    }
    return text;
}

std::string rule_text(const json &entry) {
    std::vector<std::string> qualifiers;
    for (const json &row : entry["qualifiers"]) {
        qualifiers.push_back(qualifier_text(row));
    }
    std::vector<std::string> actions;
    for (const json &row : entry["actions"]) {
        actions.push_back(action_text(row));
    }
    return fmt::format("{}: {}", qualifiers.empty() ? "all" : fmt::format("{}", fmt::join(qualifiers, ", ")),
                       actions.empty() ? "nothing" : fmt::format("{}", fmt::join(actions, ", ")));
}

std::string state_text(const json &entry) {
    if (!entry["installed"].get<bool>()) {
        return "staged";
    }
    return entry["changed"].get<bool>() ? "changed" : "installed";
}

}  // namespace

std::string show_fields(const json &answer) {
    std::string text = fmt::format("{:>5}  {:>5}  {:<6} {:>8}  {:<9} {:>12}  {}\n", "ENTRY", "GROUP", "PART",
                                   "PRIORITY", "STATE", "MATCHES", "RULE");
    for (const json &entry : answer["fields"]) {
        text += fmt::format("{:>5}  {:>5}  {:<6} {:>8}  {:<9} {:>12}  {}\n", entry["entry"].get<int>(),
                            entry["group"].get<int>(), entry["part"].get<std::string>(), entry["priority"].get<int>(),
                            state_text(entry), entry["matches"].get<uint64_t>(), rule_text(entry));
    }
    text += fmt::format("{} of {} entries\n", answer["fields"].size(), answer["capacity"].get<int>());
    for (const json &row : answer["counters"]) {
        text += fmt::format("counter {}: {} frames, {} octets\n", row["counter"].get<int>(),
                            row["frames"].get<uint64_t>(), row["octets"].get<uint64_t>());
    }
    for (const json &row : answer["miss_actions"]) {
        text += fmt::format("port {}: miss action {}\n", port_name(row["port"].get<int>()), row["action"].get<int>());
    }
    return text;
}

std::string show_meters(const json &answer) {
    std::string text = fmt::format("{:>5}  {:>10}  {:>10} {:>12} {:>12}  {}\n", "METER", "KBIT/S", "DEPTH", "PASSED",
                                   "DROPPED", "ENTRIES");
    for (const json &meter : answer["meters"]) {
        const auto entries = meter["entries"].get<std::vector<int>>();
        text += fmt::format("{:>5}  {:>10}  {:>10} {:>12} {:>12}  {}\n", meter["meter"].get<int>(),
                            meter["rate"].get<uint32_t>(), meter["depth"].get<uint64_t>(),
                            meter["passed"].get<uint64_t>(), meter["dropped"].get<uint64_t>(),
                            entries.empty() ? "-" : fmt::format("{}", fmt::join(entries, " ")));
    }
    return text + fmt::format("{} of {} meters; preamble and gap {}\n", answer["meters"].size(),
                              answer["capacity"].get<int>(),
                              answer["counts_gap"].get<bool>() ? "counted" : "not counted");
}

}  // namespace vdevice
