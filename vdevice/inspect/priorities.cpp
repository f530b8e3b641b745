// Priorities: what each port trusts, its remap, DSCPs and queues.
#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "vdevice/inspect/port_names.h"
#include "vdevice/inspect/subject.h"
#include "vdevice/inspect/text.h"
#include "vdevice/state/words.h"

namespace vdevice::inspect {
namespace {

using chip::DscpMap;
using chip::DscpRow;
using chip::QueueMap;
using nlohmann::json;

json read_dscp(uint32_t dscp, DscpRow row) {
    return {{"dscp", dscp}, {"mapped", row.mapped}, {"priority", row.priority}};
}

json all_dscps(const DscpMap &map) {
    json rows = json::array();
    for (uint32_t dscp = 0; dscp < chip::kDscps; ++dscp) {
        rows.push_back(read_dscp(dscp, map.row(dscp)));
    }
    return rows;
}

json own_dscps(const DscpMap &map, int port) {
    json rows = json::array();
    for (uint32_t dscp = 0; dscp < chip::kDscps; ++dscp) {
        if (map.has_own(port, dscp)) {
            rows.push_back(read_dscp(dscp, map.row(port, dscp)));
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

json read_priorities_of(const Device &device, int number) {
    const chip::Port &port = device.chip().port(number);
    return {{"port", user_number(device, number)},
            {"trust", state::word(port.trust)},
            {"priority", port.untagged_priority},
            {"remap", port.remap.to},
            {"queues", queues(device.chip().queue_map(), number)},
            {"dscps", own_dscps(device.chip().priority_rules().dscps, number)},
            {"tx_queues", frames_sent(device.chip().queues().port(number))}};
}

json read_priorities(Device &device, const json & /*request*/) {
    json ports = json::array();
    for (const int port : wired_ports(device)) {
        ports.push_back(read_priorities_of(device, port));
    }
    const chip::PriorityRules &rules = device.chip().priority_rules();
    return {{"queues", queues(device.chip().queue_map())},
            {"dscps", all_dscps(rules.dscps)},
            {"default", rules.defaults_to_port ? "port" : "802.1p"},
            {"ports", ports},
            {"time", seconds(device.now())}};
}

bool is_mapped(const json &row) {
    constexpr int kClassSize = 8;
    const int dscp = row["dscp"].get<int>();
    return row["mapped"].get<int>() != dscp || row["priority"].get<int>() != dscp / kClassSize;
}

std::string dscp_line(const std::string &whose, const json &row) {
    return fmt::format("DSCP {:>2} {}: DSCP {}, priority {}\n", row["dscp"].get<int>(), whose, row["mapped"].get<int>(),
                       row["priority"].get<int>());
}

std::string show_priorities(const json &answer) {
    std::string text = fmt::format("{:>4}  {:<7} {:>8}  {:<15}  {:<15}  {}\n", "PORT", "TRUSTS", "PRIORITY",
                                   "PRIORITIES 0-7", "THEIR QUEUES", "FRAMES SENT BY QUEUES 0-7");
    std::string dscps;
    for (const json &row : answer["dscps"]) {
        dscps += is_mapped(row) ? dscp_line("on all ports", row) : "";
    }
    for (const json &port : answer["ports"]) {
        const std::string name = port_name(port);
        text += fmt::format("{:>4}  {:<7} {:>8}  {:<15}  {:<15}  {}\n", name, port["trust"].get<std::string>(),
                            port["priority"].get<int>(), numbers(port["remap"]), numbers(port["queues"]),
                            numbers(port["tx_queues"]));
        for (const json &row : port["dscps"]) {
            dscps += dscp_line("on port " + name, row);
        }
    }
    return text + dscps;
}

constexpr Filter kPriorityFilters[] = {kByPort, kNonzero};
constexpr const char *kPriorityCounts[] = {"tx_queues"};

}  // namespace

extern constexpr Subject kPriorities{
    "priorities",    "[PORTS]",       "how frames get priorities and queues, and what the queues have sent",
    read_priorities, show_priorities, kPriorityFilters,
    kPriorityCounts};

}  // namespace vdevice::inspect
