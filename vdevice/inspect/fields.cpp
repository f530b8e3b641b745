// The field processor: entries, counters and miss actions.
#include <arpa/inet.h>
#include <fmt/core.h>

#include <bit>
#include <nlohmann/json.hpp>

#include "vdevice/driver/mac_text.h"
#include "vdevice/inspect/port_names.h"
#include "vdevice/inspect/subject.h"
#include "vdevice/inspect/text.h"

namespace vdevice::inspect {
namespace {

using chip::Action;
using chip::ActionKind;
using chip::CounterType;
using chip::EntryPart;
using chip::Field;
using chip::FieldCounters;
using chip::FieldEntry;
using chip::FieldRule;
using chip::FieldWords;
using chip::Qualifier;
using nlohmann::json;

std::string address_text(int family, const FieldWords &words) {
    FieldWords network{};
    for (size_t i = 0; i < words.size(); ++i) {
        network[i] = htonl(words[i]);
    }
    char text[INET6_ADDRSTRLEN] = {};
    return inet_ntop(family, network.data(), text, sizeof(text));
}

json value_of(Field field, const FieldWords &words) {
    constexpr unsigned kWordBits = 32;
    switch (field) {
        case Field::kSourceMac:
        case Field::kDestinationMac:
            return driver::to_text(chip::Mac{uint64_t{words[0]} << kWordBits | words[1]});
        case Field::kSourceIpv4:
        case Field::kDestinationIpv4:
            return address_text(AF_INET, words);
        case Field::kSourceIpv6:
        case Field::kDestinationIpv6:
            return address_text(AF_INET6, words);
        default:
            return words[0];
    }
}

json read_qualifier(const Device &device, const Qualifier &qualifier) {
    json row = {{"field", describe(qualifier.field).name}};
    if (qualifier.field == Field::kInPorts) {
        row["ports"] = user_numbers(device, chip::PortSet::from_words(qualifier.data.data()) &
                                                chip::PortSet::from_words(qualifier.mask.data()));
    } else if (qualifier.field == Field::kIpKind || qualifier.field == Field::kFrameKind) {
        row["data"] = std::countr_zero(qualifier.data[0]);
    } else {
        row["data"] = value_of(qualifier.field, qualifier.data);
        row["mask"] = value_of(qualifier.field, qualifier.mask);
    }
    return row;
}

bool has_value(ActionKind kind) {
    return kind != ActionKind::kPermit && kind != ActionKind::kDrop && kind != ActionKind::kCopyToCpu &&
           kind != ActionKind::kToCpu;
}

json read_action(const Device &device, const Action &action) {
    json row = {{"action", name(action)}};
    if (action.kind == ActionKind::kRedirect) {
        row["ports"] = user_numbers(device, action.ports);
    } else if (has_value(action.kind)) {
        row["value"] = action.value;
    }
    return row;
}

const char *part_name(EntryPart part) {
    switch (part) {
        case EntryPart::kFirstHalf:
            return "first";
        case EntryPart::kSecondHalf:
            return "second";
        default:
            return "whole";
    }
}

/** The installed rule; for an entry without one, the rule that the next installation takes. */
json read_entry(const Device &device, uint32_t number, const FieldEntry &entry) {
    const FieldRule &rule = entry.installed ? *entry.installed : entry.staged;
    json qualifiers = json::array();
    for (const Qualifier &qualifier : rule.qualifiers) {
        qualifiers.push_back(read_qualifier(device, qualifier));
    }
    json actions = json::array();
    for (const Action &action : rule.actions) {
        actions.push_back(read_action(device, action));
    }
    return {{"entry", number},
            {"group", entry.group},
            {"part", part_name(entry.part)},
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
            {"entries", rows.size()},
            {"time", seconds(device.now())},
            {"capacity", chip::FieldTable::kEntries},
            {"counters", read_field_counters(fields.counters())},
            {"miss_actions", read_miss_actions(device)}};
}

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
    return fmt::format("{}: {}", qualifiers.empty() ? "all" : joined(qualifiers, ", "),
                       actions.empty() ? "nothing" : joined(actions, ", "));
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
    text += fmt::format("{} of {} entries\n", answer["entries"].get<size_t>(), answer["capacity"].get<int>());
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
