// Trunks: their members, and the hash that spreads flows over them.
#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "vdevice/inspect/port_names.h"
#include "vdevice/inspect/subject.h"

namespace vdevice::inspect {
namespace {

using nlohmann::json;

/** User port numbers in the list's own order. */
json in_order(const Device &device, const std::vector<int> &chip_ports) {
    json numbers = json::array();
    for (const int port : chip_ports) {
        numbers.push_back(user_number(device, port));
    }
    return numbers;
}

json read_trunks(Device &device, const json & /*request*/) {
    json rows = json::array();
    const chip::TrunkTable &table = device.chip().trunks();
    for (int number = 0; number < chip::TrunkTable::kTrunks; ++number) {
        if (const chip::Trunk *trunk = table.find(number)) {
            rows.push_back({{"trunk", number},
                            {"group", number + 1},
                            {"members", in_order(device, trunk->members)},
                            {"standby", user_numbers(device, trunk->ports() & table.standby())},
                            {"balance", trunk->balance}});
        }
    }
    const chip::Traps &traps = device.chip().traps();
    return {{"trunks", rows},
            {"hash", device.hash_selection()},
            {"traps", {{"lacp", traps.lacp}, {"oam", traps.oam}, {"self_mac", traps.self_mac}}}};
}

std::string show_trunks(const json &answer) {
    std::string text =
        fmt::format("{:>5}  {:>5}  {:<24} {:<24} {}\n", "TRUNK", "GROUP", "MEMBERS", "STANDBY", "BALANCE");
    for (const json &trunk : answer["trunks"]) {
        text += fmt::format("{:>5}  {:>5}  {:<24} {:<24} {}\n", trunk["trunk"].get<int>(), trunk["group"].get<int>(),
                            port_list(trunk["members"]), port_list(trunk["standby"]), trunk["balance"].get<int>());
    }
    return text + fmt::format("hash selection {:#x}\n", answer["hash"].get<int>());
}

constexpr Filter kTrunkFilters[] = {
    {"group", "GROUPS", "rows of these groups: 2 or 1-3,8", FilterKind::kNumbers, {"group"}},
    {"port", kPortList, "trunks with one of these members", FilterKind::kNumbers, {"members"}}};

}  // namespace

extern constexpr Subject kTrunks{"trunks",    "",          "the trunks with their members",
                                 read_trunks, show_trunks, kTrunkFilters};

}  // namespace vdevice::inspect
