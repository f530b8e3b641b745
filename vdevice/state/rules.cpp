// Priorities, rules, and the controls of the whole chip.
#include <algorithm>
#include <nlohmann/json.hpp>

#include "vdevice/driver/mac_text.h"
#include "vdevice/state/parts.h"
#include "vdevice/state/rule_json.h"
#include "vdevice/state/words.h"

namespace vdevice::state {
namespace {

using chip::FieldRule;
using driver::ListHandles;
using driver::SwitchControls;
using nlohmann::json;

/** The order of the actions counts, that of the qualifiers does not. */
json rule_of(const Source &source, const FieldRule &rule) {
    const PortNames names = [&](const chip::PortSet &ports) { return source.ports(ports); };
    json qualifiers = json::object();
    for (const chip::Qualifier &qualifier : rule.qualifiers) {
        json row = qualifier_json(qualifier, names);
        row.erase("field");
        qualifiers[describe(qualifier.field).name] = std::move(row);
    }
    json actions = json::array();
    for (const chip::Action &action : rule.actions) {
        actions.push_back(action_json(action, names));
    }
    return {{"priority", rule.priority}, {"qualifiers", qualifiers}, {"actions", actions}};
}

/** The installed rule, and the one that is being written where it is another. */
json entry_of(const Source &source, const chip::FieldEntry &entry) {
    json staged = rule_of(source, entry.staged);
    json row = entry.installed ? rule_of(source, *entry.installed) : staged;
    if (row != staged) {
        row["staged"] = std::move(staged);
    }
    row["group"] = entry.group;
    row["part"] = word(entry.part);
    row["installed"] = entry.installed.has_value();
    return row;
}

json meters_of(const chip::MeterTable &table) {
    json rows = json::object();
    for (uint32_t number = 0; number < chip::MeterTable::kMeters; ++number) {
        if (const auto &meter = table.find(number)) {
            rows[std::to_string(number)] = {{"rate", meter->rate()}};
        }
    }
    return rows;
}

/** Those that are not 0. Some have an effect of their own, and a name. */
json words_of(const SwitchControls &controls) {
    constexpr struct {
        uint32_t number;
        const char *name;
    } kNames[] = {{driver::kMldToCpu, "mld_to_cpu"},
                  {driver::kIgmpToCpu, "igmp_to_cpu"},
                  {driver::kMirroring, "mirroring"},
                  {driver::kHashSelection, "hash_selection"},
                  {driver::kReservedMulticast, "reserved_multicast_to_cpu"}};
    json rows = json::object();
    for (uint32_t number = 0; number < SwitchControls::kControls; ++number) {
        uint32_t value = 0;
        controls.get(number, value);
        const auto *named = std::find_if(std::begin(kNames), std::end(kNames),
                                         [&](const auto &control) { return control.number == number; });
        if (named != std::end(kNames)) {
            rows[named->name] = value;
        } else if (value != 0) {
            rows[std::to_string(number)] = value;
        }
    }
    return rows;
}

json storm_counting_of(const chip::Switch &chip) {
    json rows = json::object();
    for (const chip::StormTypeEntry &entry : chip::kStormTypeTable) {
        rows[entry.name] = word(chip.storm_counting(entry.type));
    }
    return rows;
}

json reserved_of(const chip::ReservedMacs &macs) {
    json rows = json::object();
    for (uint32_t index = 0; index < chip::ReservedMacs::kEntries; ++index) {
        if (const chip::Mac mac = *macs.get(index); !(mac == chip::ReservedMacs::kFree)) {
            rows[std::to_string(index)] = driver::to_text(mac);
        }
    }
    return rows;
}

}  // namespace

json priorities_of(const Source &source) {
    const chip::PriorityRules &rules = source.chip.priority_rules();
    const chip::QueueMap &map = source.chip.queue_map();
    json dscps = json::object();
    for (uint32_t dscp = 0; dscp < chip::kDscps; ++dscp) {
        const chip::DscpRow row = rules.dscps.row(dscp);
        dscps[std::to_string(dscp)] = {{"mapped", row.mapped}, {"priority", row.priority}};
    }
    json queues = json::array();
    for (uint32_t priority = 0; priority < chip::kPriorities; ++priority) {
        queues.push_back(map.row(priority));
    }
    return {{"dscps", dscps},
            {"default", rules.defaults_to_port ? "port" : "802.1p"},
            {"queues", queues},
            {"queue_count", map.queues()}};
}

json fields_of(const Source &source) {
    const chip::FieldProcessor &fields = source.chip.fields();
    json entries = json::object();
    fields.table().for_each([&](uint32_t number, const chip::FieldEntry &entry) {
        entries[std::to_string(number)] = entry_of(source, entry);
    });
    return {{"entries", entries}, {"meters", meters_of(fields.meters())}, {"counts_gap", fields.meters().counts_gap()}};
}

json controls_of(const Source &source) {
    const chip::Traps &traps = source.chip.traps();
    return {{"words", words_of(source.driver.controls())},
            {"traps",
             {{"lacp", traps.lacp},
              {"oam", traps.oam},
              {"lldp", traps.lldp},
              {"bpdu", traps.bpdu},
              {"self_mac", traps.self_mac}}},
            {"reserved", reserved_of(source.chip.reserved_macs())},
            {"storm_counts", storm_counting_of(source.chip)},
            {"attack_filter", source.chip.filters_attacks()},
            {"ipv4_groups", source.chip.group_rules().knows_ipv4},
            {"ipv6_groups", source.chip.group_rules().knows_ipv6},
            {"pins", {{"output", source.chip.gpio().output()}, {"direction", source.chip.gpio().direction()}}}};
}

// How many elements each had; the handles only tell how many there have been.
json lists_of(const Source &source) {
    std::vector<int32_t> groups;
    std::vector<int32_t> vlans;
    for (const ListHandles::List &list : source.driver.lists().open_lists()) {
        (list.kind == ListHandles::Kind::kGroups ? groups : vlans).push_back(list.count);
    }
    std::sort(groups.begin(), groups.end());
    std::sort(vlans.begin(), vlans.end());
    return {{"groups", groups}, {"vlans", vlans}};
}

}  // namespace vdevice::state
