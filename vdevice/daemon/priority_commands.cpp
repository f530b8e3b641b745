// The command that shows what becomes of priorities.
#include "vdevice/daemon/command.h"

namespace vdevice {
namespace {

using chip::DscpMap;
using chip::DscpRow;
using chip::QueueMap;
using nlohmann::json;

json dscp_row(uint32_t dscp, DscpRow row) {
    return {{"dscp", dscp}, {"mapped", row.mapped}, {"priority", row.priority}};
}

json all_dscps(const DscpMap &map) {
    json rows = json::array();
    for (uint32_t dscp = 0; dscp < chip::kDscps; ++dscp) {
        rows.push_back(dscp_row(dscp, map.row(dscp)));
    }
    return rows;
}

json own_dscps(const DscpMap &map, int port) {
    json rows = json::array();
    for (uint32_t dscp = 0; dscp < chip::kDscps; ++dscp) {
        if (map.has_own(port, dscp)) {
            rows.push_back(dscp_row(dscp, map.row(port, dscp)));
        }
    }
    return rows;
}

json queues(const QueueMap &map) {
    json rows = json::array();
    for (uint32_t priority = 0; priority < chip::kPriorities; ++priority) {
        rows.push_back(map.queue_of(priority));
    }
    return rows;
}

json queues(const QueueMap &map, int port) {
    json rows = json::array();
    for (uint32_t priority = 0; priority < chip::kPriorities; ++priority) {
        rows.push_back(map.queue_of(port, priority));
    }
    return rows;
}

json frames_sent(const chip::PortQueues &port) {
    json rows = json::array();
    for (size_t queue = 0; queue < chip::kQueues; ++queue) {
        rows.push_back(port.counters(queue).frames);
    }
    return rows;
}

json port_row(const Device &device, int number) {
    constexpr const char *kTrusts[] = {"port", "802.1p", "dscp", "both"};
    const chip::Port &port = device.chip().port(number);
    return {{"port", user_number(device, number)},
            {"trust", kTrusts[static_cast<size_t>(port.trust)]},
            {"priority", port.untagged_priority},
            {"remap", port.remap.to},
            {"queues", queues(device.chip().queue_map(), number)},
            {"dscps", own_dscps(device.chip().priority_rules().dscps, number)},
            {"tx_queues", frames_sent(device.chip().queues().port(number))}};
}

}  // namespace

json show_priorities(Device &device, const json & /*request*/) {
    json ports = json::array();
    chip::Switch::all_ports().for_each([&](int port) {
        if (device.wire(port) != nullptr) {
            ports.push_back(port_row(device, port));
        }
    });
    const chip::PriorityRules &rules = device.chip().priority_rules();
    return {{"queues", queues(device.chip().queue_map())},
            {"dscps", all_dscps(rules.dscps)},
            {"default", rules.defaults_to_port ? "port" : "802.1p"},
            {"ports", ports}};
}

}  // namespace vdevice
