// The commands that show spanning-tree groups, and what becomes of tags.
#include "vdevice/daemon/command.h"

namespace vdevice {
namespace {

using chip::StpGroups;
using chip::StpState;
using chip::TagChange;
using chip::VidMap;
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
    chip::PortSet ports;
    chip::Switch::all_ports().for_each([&](int port) {
        if (device.chip().stp().state(group, port) == state) {
            ports.add(port);
        }
    });
    return user_numbers(device, ports);
}

json priority_or_null(const TagChange &change) {
    return change.priority == TagChange::kKeepPriority ? json(nullptr) : json(change.priority);
}

json entries(const Device &device, const VidMap &table) {
    json rows = json::array();
    for (const auto &[key, change] : table.entries()) {
        rows.push_back({{"port", user_number(device, key.port)},
                        {"vid", key.vid},
                        {"new_vid", change.vid},
                        {"priority", priority_or_null(change)}});
    }
    return rows;
}

json subnets(const Device &device) {
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

json port_tags(const Device &device) {
    constexpr const char *kModes[] = {"off", "internal", "external"};
    json rows = json::array();
    chip::Switch::all_ports().for_each([&](int port) {
        if (device.wire(port) != nullptr) {
            const chip::PortTags &tags = device.chip().port(port).tags;
            rows.push_back({{"port", user_number(device, port)},
                            {"mode", kModes[static_cast<size_t>(tags.mode)]},
                            {"tpid", tags.tpid}});
        }
    });
    return rows;
}

}  // namespace

json show_stp_groups(Device &device, const json & /*request*/) {
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

json show_translations(Device &device, const json & /*request*/) {
    const chip::TagRules &rules = device.chip().tag_rules();
    return {{"ingress", entries(device, rules.ingress)},
            {"egress", entries(device, rules.egress)},
            {"double_tags", entries(device, rules.double_tags)},
            {"subnets", subnets(device)},
            {"ports", port_tags(device)},
            {"capacity", VidMap::kCapacity},
            {"subnet_capacity", chip::SubnetTable::kCapacity}};
}

}  // namespace vdevice
