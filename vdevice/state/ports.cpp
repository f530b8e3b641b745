// Names of ports, and all settings of each.
#include <algorithm>
#include <nlohmann/json.hpp>

#include "vdevice/state/parts.h"
#include "vdevice/state/words.h"

namespace vdevice::state {
namespace {

using chip::RateLimit;
using nlohmann::json;

json rate_of(const RateLimit &limit) {
    return {{"rate", limit.rate}, {"burst", limit.depth}};
}

json phy_of(const chip::Phy &phy) {
    return {{"autoneg", phy.autoneg()},   {"abilities", phy.abilities()},
            {"speed", phy.fixed_speed()}, {"full_duplex", phy.fixed_full_duplex()},
            {"pause", phy.fixed_pause()}, {"crossover", static_cast<uint32_t>(phy.crossover())}};
}

/** Those that are not 0. */
json vlan_controls_of(const chip::Port &port) {
    json rows = json::object();
    for (size_t control = 0; control < port.vlan_controls.size(); ++control) {
        if (const int32_t value = port.vlan_controls[control]; value != 0) {
            rows[std::to_string(control)] = value;
        }
    }
    return rows;
}

json multicast_of(const chip::PortGroupRules &rules) {
    return {{"entries", rules.uses_entries},
            {"ipv4", rules.knows_ipv4},
            {"ipv4_miss", word(rules.ipv4_miss)},
            {"ipv6_miss", word(rules.ipv6_miss)}};
}

json storm_of(const chip::PortStorm &storm) {
    json rows = json::object();
    for (const chip::StormTypeEntry &entry : chip::kStormTypeTable) {
        const chip::PortStorm::Kind &kind = storm.of(entry.type);
        json row = rate_of(kind.limiter.limit());
        row["enabled"] = kind.enabled;
        row["in_joint"] = storm.is_in_joint(entry.type);
        rows[entry.name] = std::move(row);
    }
    return rows;
}

json scheduler_of(const chip::SchedulerSettings &settings) {
    return {{"mode", word(settings.mode)}, {"weights", settings.weights}, {"delay", settings.delay}};
}

/** The rows that replace the chip's. */
json own_dscps_of(const chip::DscpMap &map, int port) {
    json rows = json::object();
    for (uint32_t dscp = 0; dscp < chip::kDscps; ++dscp) {
        if (map.has_own(port, dscp)) {
            const chip::DscpRow row = map.row(port, dscp);
            rows[std::to_string(dscp)] = {{"mapped", row.mapped}, {"priority", row.priority}};
        }
    }
    return rows;
}

json own_queues_of(const chip::QueueMap &map, int port) {
    json rows = json::object();
    for (uint32_t priority = 0; priority < chip::kPriorities; ++priority) {
        if (const auto queue = map.own_row(port, priority)) {
            rows[std::to_string(priority)] = *queue;
        }
    }
    return rows;
}

json port_of(const Source &source, int number) {
    const chip::Port &port = source.chip.port(number);
    const chip::PortQueues &queues = source.chip.queues().port(number);
    json row = phy_of(port.phy);
    row.update({{"enabled", port.enabled},
                {"jumbo", port.jumbo},
                {"loopback", port.loopback},
                {"eee", port.eee},
                {"learning", port.learning.number},
                {"egress", source.ports(port.egress)},
                {"pvid", port.pvid},
                {"vlan_controls", vlan_controls_of(port)},
                {"double_tag", word(port.tags.mode)},
                {"tpid", port.tags.tpid},
                {"priority", port.untagged_priority},
                {"trust", word(port.trust)},
                {"remap", port.remap.to},
                {"dscps", own_dscps_of(source.chip.priority_rules().dscps, number)},
                {"queues", own_queues_of(source.chip.queue_map(), number)},
                {"multicast", multicast_of(port.groups)},
                {"miss_action", static_cast<int>(source.chip.fields().miss_action(number))},
                {"ingress_limit", rate_of(port.policer.limit())},
                {"egress_limit", rate_of(queues.shaper() == nullptr ? RateLimit{} : *queues.shaper())},
                {"storm", storm_of(port.storm)},
                {"scheduler", scheduler_of(queues.scheduler())}});
    return row;
}

}  // namespace

std::string Source::key(int chip_port) const {
    if (chip_port == chip::Switch::kCpuPort) {
        return "cpu";
    }
    const auto user_port = driver.board().user_port(chip_port);
    return user_port ? std::to_string(*user_port) : "chip " + std::to_string(chip_port);
}

json Source::port(int chip_port) const {
    const auto user_port = driver.board().user_port(chip_port);
    return user_port ? json(*user_port) : json(key(chip_port));
}

json Source::ports(const chip::PortSet &chip_ports) const {
    json rows = json::array();
    chip_ports.for_each([&](int number) { rows.push_back(port(number)); });
    return rows;
}

json ports_of(const Source &source) {
    json rows = json::object();
    for (int port = 0; port < chip::Switch::kPorts; ++port) {
        rows[source.key(port)] = port_of(source, port);
    }
    return rows;
}

}  // namespace vdevice::state
