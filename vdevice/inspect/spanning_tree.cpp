// Spanning-tree groups: their VLANs, and the state of each port.
#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "vdevice/inspect/port_names.h"
#include "vdevice/inspect/subject.h"
#include "vdevice/inspect/text.h"

namespace vdevice::inspect {
namespace {

using chip::StpGroups;
using chip::StpState;
using nlohmann::json;

/** Runs of VLANs as pairs of the first and the last one, since a group may have thousands. */
json ranges(const std::vector<chip::Vid> &vids) {
    json rows = json::array();
    for (size_t first = 0; first < vids.size();) {
        size_t last = first;
        while (last + 1 < vids.size() && vids[last + 1] == vids[last] + 1) {
            ++last;
        }
        rows.push_back({vids[first], vids[last]});
        first = last + 1;
    }
    return rows;
}

json ports_in_state(const Device &device, int group, StpState state) {
    json ports = json::array();
    for (const int port : wired_ports(device)) {
        if (device.chip().stp().state(group, port) == state) {
            ports.push_back(user_number(device, port));
        }
    }
    return ports;
}

json read_groups(Device &device, const json & /*request*/) {
    json rows = json::array();
    for (const int group : device.chip().stp().list()) {
        rows.push_back({{"group", group},
                        {"default", group == StpGroups::kDefault},
                        {"vlans", ranges(device.chip().stp().vlans(group))},
                        {"disabled", ports_in_state(device, group, StpState::kDisabled)},
                        {"blocking", ports_in_state(device, group, StpState::kBlocking)},
                        {"listening", ports_in_state(device, group, StpState::kListening)},
                        {"learning", ports_in_state(device, group, StpState::kLearning)},
                        {"forwarding", ports_in_state(device, group, StpState::kForwarding)}});
    }
    return {{"groups", rows}, {"capacity", StpGroups::kGroups}};
}

std::string vlan_list(const json &ranges) {
    std::vector<std::string> parts;
    for (const json &range : ranges) {
        const int first = range[0].get<int>();
        const int last = range[1].get<int>();
        parts.push_back(first == last ? std::to_string(first) : fmt::format("{}-{}", first, last));
    }
    return parts.empty() ? "-" : joined(parts, ",");
}

std::string show_groups(const json &answer) {
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

constexpr Filter kGroupFilters[] = {
    {"group", "GROUPS", "rows of these groups: 2 or 1-3,8", FilterKind::kNumbers, {"group"}},
    {"vlan", "VLANS", "groups with one of these VLANs", FilterKind::kNumbers, {"vlans"}}};

}  // namespace

extern constexpr Subject kGroups{
    "groups",    "",          "the spanning-tree groups with their VLANs and the ports' states",
    read_groups, show_groups, kGroupFilters};

}  // namespace vdevice::inspect
