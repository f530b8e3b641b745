// VLANs and their ports.
#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "vdevice/inspect/port_names.h"
#include "vdevice/inspect/subject.h"

namespace vdevice::inspect {
namespace {

using nlohmann::json;

json read_vlans(Device &device, const json & /*request*/) {
    json rows = json::array();
    const chip::VlanTable &table = device.chip().vlans();
    for (const chip::Vid vid : table.list()) {
        const chip::Vlan &vlan = *table.find(vid);
        rows.push_back({{"vid", vid},
                        {"default", vid == table.default_vid()},
                        {"members", user_numbers(device, vlan.members)},
                        {"untagged", user_numbers(device, vlan.untagged)}});
    }
    return {{"vlans", rows}};
}

std::string show_vlans(const json &answer) {
    std::string text = fmt::format("{:>5}  {:<30} {}\n", "VLAN", "MEMBERS", "UNTAGGED");
    for (const json &vlan : answer["vlans"]) {
        const std::string vid = fmt::format("{}{}", vlan["vid"].get<int>(), vlan["default"].get<bool>() ? "*" : "");
        text += fmt::format("{:>5}  {:<30} {}\n", vid, port_list(vlan["members"]), port_list(vlan["untagged"]));
    }
    return text + "* default VLAN\n";
}

constexpr Filter kVlanFilters[] = {
    kByVlan, {"port", kPortList, "VLANs with one of these members", FilterKind::kNumbers, {"members"}}};

}  // namespace

extern constexpr Subject kVlans{"vlans", "[VLANS]", "the VLAN table", read_vlans, show_vlans, kVlanFilters, {}, kLong};

}  // namespace vdevice::inspect
