// The field processor: entries, counters and miss actions.
#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "vdevice/inspect/port_names.h"
#include "vdevice/inspect/subject.h"
#include "vdevice/inspect/text.h"
#include "vdevice/state/rule_json.h"

namespace vdevice::inspect {
namespace {

using chip::CounterType;
using chip::FieldCounters;
using chip::FieldEntry;
using chip::FieldRule;
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

/** The row with what a person reads of it. */
json with_text(json row, std::string (*text_of)(const json &)) {
    row["text"] = text_of(row);
    return row;
}

/** The installed rule; for an entry without one, the rule that the next installation takes. */
json read_entry(const Device &device, uint32_t number, const FieldEntry &entry) {
    const FieldRule &rule = entry.installed ? *entry.installed : entry.staged;
    const state::PortNames names = [&](const chip::PortSet &ports) { return user_numbers(device, ports); };
    json qualifiers = json::array();
    for (const chip::Qualifier &qualifier : rule.qualifiers) {
        qualifiers.push_back(with_text(state::qualifier_json(qualifier, names), qualifier_text));
    }
    json actions = json::array();
    for (const chip::Action &action : rule.actions) {
        actions.push_back(with_text(state::action_json(action, names), action_text));
    }
    return {{"entry", number},
            {"group", entry.group},
            {"part", state::word(entry.part)},
            {"installed", entry.installed.has_value()},
            {"changed", !entry.installed || !(*entry.installed == entry.staged)},
            {"priority", rule.priority},
            {"matches", entry.matches},
            {"qualifiers", qualifiers},
            {"actions", actions}};
}

json read_field_counters(const FieldCounters &counters) {
    json rows = json::array();
    for (uint32_t number = 0; number < FieldCounters::kCounters; ++number) {
        const uint64_t frames = counters.get(number, CounterType::kFrames);
        const uint64_t octets = counters.get(number, CounterType::kOctets);
        if (frames != 0 || octets != 0) {
            rows.push_back({{"counter", number}, {"frames", frames}, {"octets", octets}});
        }
    }
    return rows;
}

json read_miss_actions(const Device &device) {
    json rows = json::array();
    for (const int port : wired_ports(device)) {
        if (const auto action = static_cast<int>(device.chip().fields().miss_action(port)); action != 0) {
            rows.push_back({{"port", user_number(device, port)}, {"action", action}});
        }
    }
    return rows;
}

json read_fields(Device &device, const json & /*request*/) {
    const chip::FieldProcessor &fields = device.chip().fields();
    json rows = json::array();
    fields.table().for_each(
        [&](uint32_t number, const FieldEntry &entry) { rows.push_back(read_entry(device, number, entry)); });
    return {{"fields", rows},
            {"time", seconds(device.now())},
            {"capacity", chip::FieldTable::kEntries},
            {"counters", read_field_counters(fields.counters())},
            {"miss_actions", read_miss_actions(device)}};
}

/** The texts of rows as one; `none` without any. */
std::string texts_of(const json &rows, const char *none) {
    std::vector<std::string> texts;
    for (const json &row : rows) {
        texts.push_back(row["text"].get<std::string>());
    }
    return texts.empty() ? none : joined(texts, ", ");
}

std::string rule_text(const json &entry) {
    return fmt::format("{}: {}", texts_of(entry["qualifiers"], "all"), texts_of(entry["actions"], "nothing"));
}

std::string state_text(const json &entry) {
    if (!entry["installed"].get<bool>()) {
        return "staged";
    }
    return entry["changed"].get<bool>() ? "changed" : "installed";
}

std::string show_fields(const json &answer) {
    std::string text = fmt::format("{:>5}  {:>5}  {:<6} {:>8}  {:<9} {:>12}  {}\n", "ENTRY", "GROUP", "PART",
                                   "PRIORITY", "STATE", "MATCHES", "RULE");
    for (const json &entry : answer["fields"]) {
        text += fmt::format("{:>5}  {:>5}  {:<6} {:>8}  {:<9} {:>12}  {}\n", entry["entry"].get<int>(),
                            entry["group"].get<int>(), entry["part"].get<std::string>(), entry["priority"].get<int>(),
                            state_text(entry), entry["matches"].get<uint64_t>(), rule_text(entry));
    }
    text += fmt::format("{} of {} entries\n", all_rows(answer, "fields"), answer["capacity"].get<int>());
    for (const json &row : answer["counters"]) {
        text += fmt::format("counter {}: {} frames, {} octets\n", row["counter"].get<int>(),
                            row["frames"].get<uint64_t>(), row["octets"].get<uint64_t>());
    }
    for (const json &row : answer["miss_actions"]) {
        text += fmt::format("port {}: miss action {}\n", port_name(row), row["action"].get<int>());
    }
    return text;
}

constexpr Filter kFieldFilters[] = {
    {"entry", "ENTRIES", "these entries: 5 or 0-9,20", FilterKind::kNumbers, {"entry"}},
    {"group", "GROUPS", "the entries of these groups: 2 or 1-3,8", FilterKind::kNumbers, {"group"}},
    kNonzero};
constexpr const char *kFieldCounts[] = {"matches", "frames", "octets"};

}  // namespace

extern constexpr Subject kFields{"fields",     "",          "the field processor's entries, counters and miss actions",
                                 read_fields,  show_fields, kFieldFilters,
                                 kFieldCounts, kLong};

}  // namespace vdevice::inspect
