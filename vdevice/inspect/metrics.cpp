// Metrics for a monitoring system, in the text format of Prometheus.
#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "vdevice/inspect/port_names.h"
#include "vdevice/inspect/process.h"
#include "vdevice/inspect/subject.h"

namespace vdevice::inspect {
namespace {

using chip::Switch;
using nlohmann::json;

constexpr const char *kCounterType = "counter";
constexpr const char *kGaugeType = "gauge";

/** A number of every port. */
struct PortMetric {
    const char *name;
    const char *type;
    const char *help;
    uint64_t (*value)(const chip::Port &port, const Wire &wire);
};

constexpr PortMetric kPortMetrics[] = {
    {"adp_port_up", kGaugeType, "Whether the port passes frames.",
     [](const chip::Port &port, const Wire &) { return uint64_t{port.is_up()}; }},
    {"adp_port_receive_frames_total", kCounterType, "Frames received.",
     [](const chip::Port &port, const Wire &) { return port.counters.rx_frames; }},
    {"adp_port_receive_bytes_total", kCounterType, "Octets of the frames received.",
     [](const chip::Port &port, const Wire &) { return port.counters.rx_octets; }},
    {"adp_port_transmit_frames_total", kCounterType, "Frames sent.",
     [](const chip::Port &port, const Wire &) { return port.counters.tx_frames; }},
    {"adp_port_transmit_bytes_total", kCounterType, "Octets of the frames sent.",
     [](const chip::Port &port, const Wire &) { return port.counters.tx_octets; }},
    {"adp_port_transmit_too_long_frames_total", kCounterType, "Frames not sent because they are too long for the port.",
     [](const chip::Port &port, const Wire &) { return port.counters.tx_too_long; }},
    {"adp_port_transmit_mirror_down_frames_total", kCounterType,
     "Copies of a mirror not sent because the port is down.",
     [](const chip::Port &port, const Wire &) { return port.counters.tx_mirror_down; }},
    {"adp_port_receive_lost_frames_total", kCounterType, "Frames lost before the chip, for lack of room.",
     [](const chip::Port &, const Wire &wire) { return wire.socket.receive_losses(); }},
    {"adp_port_transmit_lost_frames_total", kCounterType, "Frames that the interface did not take.",
     [](const chip::Port &, const Wire &wire) { return wire.socket.send_failures(); }},
};

/** A table of the chip: how full it is. */
struct TableMetric {
    const char *table;
    size_t (*entries)(const Switch &chip);
    size_t capacity;
};

constexpr TableMetric kTableMetrics[] = {
    {"mac", [](const Switch &chip) { return chip.macs().size(); }, chip::MacTable::kCapacity},
    {"multicast", [](const Switch &chip) { return chip.macs().group_count(); }, chip::PortSetPool::kCapacity},
    {"vlan", [](const Switch &chip) { return chip.vlans().list().size(); }, chip::kMaxVid},
    {"field",
     [](const Switch &chip) {
         size_t count = 0;
         chip.fields().table().for_each([&](uint32_t, const chip::FieldEntry &) { ++count; });
         return count;
     },
     chip::FieldTable::kEntries},
    {"ingress_translation", [](const Switch &chip) { return chip.tag_rules().ingress.entries().size(); },
     chip::VidMap::kCapacity},
    {"egress_translation", [](const Switch &chip) { return chip.tag_rules().egress.entries().size(); },
     chip::VidMap::kCapacity},
    {"double_tag", [](const Switch &chip) { return chip.tag_rules().double_tags.entries().size(); },
     chip::VidMap::kCapacity},
    {"subnet", [](const Switch &chip) { return chip.tag_rules().subnets.list().size(); }, chip::SubnetTable::kCapacity},
    {"spanning_tree_group", [](const Switch &chip) { return chip.stp().list().size(); }, chip::StpGroups::kGroups},
};

/** What became of source addresses. */
struct MacMetric {
    const char *name;
    const char *help;
    uint64_t chip::MacTable::Counters::*value;
};

constexpr MacMetric kMacMetrics[] = {
    {"adp_mac_learned_addresses_total", "Addresses learned.", &chip::MacTable::Counters::learned},
    {"adp_mac_moved_addresses_total", "Addresses that moved to another port.", &chip::MacTable::Counters::moved},
    {"adp_mac_aged_addresses_total", "Addresses removed because they were not seen.", &chip::MacTable::Counters::aged},
    {"adp_mac_refused_addresses_total", "Addresses not learned because there was no room.",
     &chip::MacTable::Counters::refused},
};

json family(const char *name, const char *type, const char *help, json samples) {
    return {{"name", name}, {"type", type}, {"help", help}, {"samples", std::move(samples)}};
}

json sample(json labels, json value) {
    return {{"labels", std::move(labels)}, {"value", std::move(value)}};
}

json single(const char *name, const char *type, const char *help, json value) {
    return family(name, type, help, json::array({sample(json::object(), std::move(value))}));
}

void add_ports(json &families, const Device &device) {
    for (const PortMetric &metric : kPortMetrics) {
        json samples = json::array();
        for (const int port : wired_ports(device)) {
            samples.push_back(sample({{"port", port_name(user_number(device, port))}},
                                     metric.value(device.chip().port(port), *device.wire(port))));
        }
        families.push_back(family(metric.name, metric.type, metric.help, std::move(samples)));
    }
}

void add_drops(json &families, const Device &device) {
    json drops = json::array();
    json queue_drops = json::array();
    json flushed = json::array();
    for (const int port : wired_ports(device)) {
        const std::string name = port_name(user_number(device, port));
        for (size_t reason = 0; reason < chip::kDropReasons; ++reason) {
            drops.push_back(sample({{"port", name}, {"reason", chip::name(static_cast<chip::Drop>(reason))}},
                                   device.chip().port(port).counters.drops[reason]));
        }
        const chip::PortQueues &queues = device.chip().queues().port(port);
        flushed.push_back(sample({{"port", name}}, queues.flushed()));
        for (size_t queue = 0; queue < chip::kQueues; ++queue) {
            queue_drops.push_back(
                sample({{"port", name}, {"queue", std::to_string(queue)}}, queues.counters(queue).drops));
        }
    }
    families.push_back(family("adp_port_dropped_frames_total", kCounterType,
                              "Frames dropped, by the port that they came in on.", std::move(drops)));
    families.push_back(family("adp_port_queue_dropped_frames_total", kCounterType,
                              "Frames dropped for lack of room in an egress queue.", std::move(queue_drops)));
    families.push_back(family("adp_port_flushed_frames_total", kCounterType,
                              "Frames that waited in the egress queues when the port went down.", std::move(flushed)));
}

void add_cables(json &families, const Device &device) {
    json frames = json::array();
    for (const int port : wired_ports(device)) {
        const Wire &wire = *device.wire(port);
        for (const cable::CountName &known : cable::kCountNames) {
            const auto add = [&](const char *direction, const cable::OneWay &way) {
                frames.push_back(sample(
                    {{"port", port_name(user_number(device, port))}, {"direction", direction}, {"what", known.name}},
                    way.counts().*known.count));
            };
            if (wire.bad != nullptr) {
                add("in", wire.bad->in);
                add("out", wire.bad->out);
            }
        }
    }
    if (!frames.empty()) {
        families.push_back(family("adp_cable_frames_total", kCounterType, "What became of the frames on bad cables.",
                                  std::move(frames)));
    }
}

void add_tables(json &families, const Switch &chip) {
    json entries = json::array();
    json capacities = json::array();
    for (const TableMetric &metric : kTableMetrics) {
        entries.push_back(sample({{"table", metric.table}}, metric.entries(chip)));
        capacities.push_back(sample({{"table", metric.table}}, metric.capacity));
    }
    families.push_back(family("adp_table_entries", kGaugeType, "Entries in use.", std::move(entries)));
    families.push_back(
        family("adp_table_capacity_entries", kGaugeType, "Entries that the table holds.", std::move(capacities)));
    for (const MacMetric &metric : kMacMetrics) {
        families.push_back(single(metric.name, kCounterType, metric.help, chip.macs().counters().*metric.value));
    }
}

void add_clients(json &families, const Device &device) {
    const auto clients = device.clients();
    if (!clients) {
        return;
    }
    json connected = json::array();
    json rejected = json::array();
    for (const Clients::Socket &socket : clients->sockets) {
        connected.push_back(sample({{"socket", socket.name}}, socket.connected));
        rejected.push_back(sample({{"socket", socket.name}}, socket.rejected));
    }
    families.push_back(family("adp_clients", kGaugeType, "Programs that are connected.", std::move(connected)));
    families.push_back(family("adp_clients_rejected_total", kCounterType,
                              "Programs that were turned away because there were too many.", std::move(rejected)));
    json readers = json::array();
    for (const Clients::Stream &stream : clients->streams) {
        readers.push_back(sample({{"command", stream.command}}, stream.readers));
    }
    families.push_back(
        family("adp_stream_readers", kGaugeType, "Programs that are told line by line.", std::move(readers)));
}

void add_process(json &families) {
    const Process process = read_process();
    families.push_back(single("process_resident_memory_bytes", kGaugeType, "Memory in use.", process.resident_bytes));
    families.push_back(single("process_virtual_memory_bytes", kGaugeType, "Address space.", process.virtual_bytes));
    families.push_back(single("process_open_fds", kGaugeType, "Open file descriptors.", process.open_fds));
    families.push_back(single("process_max_fds", kGaugeType, "Most open file descriptors.", process.max_fds));
    families.push_back(single("process_cpu_seconds_total", kCounterType, "Processor time used.", process.cpu_seconds));
}

json read_metrics(Device &device, const json & /*request*/) {
    json families = json::array();
    families.push_back(family("adp_build_info", kGaugeType, "The version of the device.",
                              json::array({sample({{"version", kVersionText}}, 1)})));
    families.push_back(
        single("adp_uptime_seconds", kGaugeType, "Time since the device started.", seconds(device.now())));
    add_ports(families, device);
    add_drops(families, device);
    add_cables(families, device);
    add_tables(families, device.chip());
    families.push_back(
        single("adp_log_lines_total", kCounterType, "Lines that were logged.", device.journal().total()));
    add_clients(families, device);
    add_process(families);
    return {{"metrics", families}};
}

std::string escaped(const std::string &value) {
    std::string text;
    for (const char letter : value) {
        if (letter == '\n') {
            text += "\\n";
        } else {
            text += letter == '\\' || letter == '"' ? std::string{'\\', letter} : std::string{letter};
        }
    }
    return text;
}

/** {port="3",reason="storm"}; nothing without labels. */
std::string labels_text(const json &labels) {
    std::string text;
    for (const auto &[name, value] : labels.items()) {
        text += fmt::format("{}{}=\"{}\"", text.empty() ? "{" : ",", name, escaped(value.get<std::string>()));
    }
    return text.empty() ? text : text + "}";
}

std::string show_metrics(const json &answer) {
    std::string text;
    for (const json &family : answer["metrics"]) {
        const std::string name = family["name"].get<std::string>();
        text += fmt::format("# HELP {} {}\n# TYPE {} {}\n", name, family["help"].get<std::string>(), name,
                            family["type"].get<std::string>());
        for (const json &sample : family["samples"]) {
            text += fmt::format("{}{} {}\n", name, labels_text(sample["labels"]), sample["value"].dump());
        }
    }
    return text;
}

}  // namespace

extern constexpr Subject kMetrics{"metrics", "", "metrics in the text format of Prometheus", read_metrics,
                                  show_metrics};

}  // namespace vdevice::inspect
