// Reserved addresses, and the protocols whose frames go to the CPU alone.
#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "vdevice/driver/mac_text.h"
#include "vdevice/inspect/subject.h"
#include "vdevice/inspect/text.h"

namespace vdevice::inspect {
namespace {

using chip::ReservedMacs;
using nlohmann::json;

json read_traps(const chip::Switch &chip) {
    return {{"lacp", chip.traps().lacp}, {"oam", chip.traps().oam},      {"lldp", chip.traps().lldp},
            {"bpdu", chip.traps().bpdu}, {"igmp", chip.snooping().igmp}, {"mld", chip.snooping().mld}};
}

json read_reserved(Device &device, const json & /*request*/) {
    const chip::Switch &chip = device.chip();
    json rows = json::array();
    for (uint32_t index = 0; index < ReservedMacs::kEntries; ++index) {
        if (const chip::Mac mac = *chip.reserved_macs().get(index); !(mac == ReservedMacs::kFree)) {
            rows.push_back({{"index", index}, {"mac", driver::to_text(mac)}});
        }
    }
    return {{"reserved", rows},
            {"entries", rows.size()},
            {"capacity", ReservedMacs::kEntries},
            {"traps", read_traps(chip)},
            {"reserved_multicast", chip.snooping().reserved_multicast},
            {"attack_filter", chip.filters_attacks()}};
}

std::string traps_that_are_on(const json &traps) {
    std::vector<std::string> names;
    for (const auto &[name, on] : traps.items()) {
        if (on.get<bool>()) {
            names.push_back(name);
        }
    }
    return names.empty() ? "none" : joined(names, ", ");
}

std::string show_reserved(const json &answer) {
    std::string text = fmt::format("{:>5}  {}\n", "INDEX", "ADDRESS");
    for (const json &entry : answer["reserved"]) {
        text += fmt::format("{:>5}  {}\n", entry["index"].get<int>(), entry["mac"].get<std::string>());
    }
    text += fmt::format("{} of {} entries\n", answer["entries"].get<size_t>(), answer["capacity"].get<int>());
    text += fmt::format("trapped: {}\n", traps_that_are_on(answer["traps"]));
    return text + fmt::format("reserved multicast to the CPU {}, attack filter {}\n",
                              on_or_off(answer["reserved_multicast"]), on_or_off(answer["attack_filter"]));
}

constexpr Filter kReservedFilters[] = {{"mac", "ADDRESS", "the rows of this address", FilterKind::kWord, {"mac"}}};

}  // namespace

extern constexpr Subject kReserved{
    "reserved",      "", "addresses and protocols whose frames go to the CPU alone", read_reserved, show_reserved,
    kReservedFilters};

}  // namespace vdevice::inspect
