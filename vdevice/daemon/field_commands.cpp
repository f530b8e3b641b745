// The commands that show the field processor: its entries, counters and miss actions, its meters.
#include <arpa/inet.h>

#include <bit>
#include <chrono>
#include <string>

#include "vdevice/daemon/command.h"
#include "vdevice/driver/mac_text.h"

namespace vdevice {
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
using chip::MeterTable;
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

json show_qualifier(const Device &device, const Qualifier &qualifier) {
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

json show_action(const Device &device, const Action &action) {
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

/** What matches, or would if it were installed. */
json show_entry(const Device &device, uint32_t number, const FieldEntry &entry) {
    const FieldRule &rule = entry.installed ? *entry.installed : entry.staged;
    json qualifiers = json::array();
    for (const Qualifier &qualifier : rule.qualifiers) {
        qualifiers.push_back(show_qualifier(device, qualifier));
    }
    json actions = json::array();
    for (const Action &action : rule.actions) {
        actions.push_back(show_action(device, action));
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

json show_field_counters(const FieldCounters &counters) {
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

json show_miss_actions(const Device &device) {
    json rows = json::array();
    for (int port = 0; port < chip::Switch::kPorts; ++port) {
        const auto action = static_cast<int>(device.chip().fields().miss_action(port));
        if (action != 0 && device.wire(port) != nullptr) {
            rows.push_back({{"port", user_number(device, port)}, {"action", action}});
        }
    }
    return rows;
}

/** The entries whose rule, installed or not, names the meter. */
json entries_with(const chip::FieldTable &table, uint32_t meter) {
    json entries = json::array();
    table.for_each([&](uint32_t number, const FieldEntry &entry) {
        if (entry.names_meter(meter)) {
            entries.push_back(number);
        }
    });
    return entries;
}

}  // namespace

json show_fields(Device &device, const json & /*request*/) {
    const chip::FieldProcessor &fields = device.chip().fields();
    json rows = json::array();
    fields.table().for_each(
        [&](uint32_t number, const FieldEntry &entry) { rows.push_back(show_entry(device, number, entry)); });
    return {{"fields", rows},
            {"capacity", chip::FieldTable::kEntries},
            {"counters", show_field_counters(fields.counters())},
            {"miss_actions", show_miss_actions(device)}};
}

json show_meters(Device &device, const json & /*request*/) {
    const chip::FieldProcessor &fields = device.chip().fields();
    json rows = json::array();
    for (uint32_t number = 0; number < MeterTable::kMeters; ++number) {
        if (const auto &meter = fields.meters().find(number)) {
            rows.push_back({{"meter", number},
                            {"rate", meter->rate()},
                            {"depth", meter->depth()},
                            {"passed", meter->passed()},
                            {"dropped", meter->dropped()},
                            {"entries", entries_with(fields.table(), number)}});
        }
    }
    // With the time of this reading two of them give a rate, however late they are asked for.
    return {{"meters", rows},
            {"capacity", MeterTable::kMeters},
            {"counts_gap", fields.meters().counts_gap()},
            {"time", std::chrono::duration<double>(device.now()).count()}};
}

}  // namespace vdevice
