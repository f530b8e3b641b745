// Port counters: frames, octets and drops.
#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "vdevice/inspect/port_names.h"
#include "vdevice/inspect/subject.h"
#include "vdevice/inspect/text.h"

namespace vdevice::inspect {
namespace {

using nlohmann::json;

json read_counters_of(const Device &device, const Wire &wire) {
    const auto &counters = device.chip().port(wire.chip_port).counters;
    const chip::PortQueues &queues = device.chip().queues().port(wire.chip_port);
    json drops = json::object();
    for (size_t reason = 0; reason < chip::kDropReasons; ++reason) {
        drops[chip::name(static_cast<chip::Drop>(reason))] = counters.drops[reason];
    }
    return {{"port", user_number(device, wire.chip_port)},
            {"rx_frames", counters.rx_frames},
            {"rx_octets", counters.rx_octets},
            {"tx_frames", counters.tx_frames},
            {"tx_octets", counters.tx_octets},
            {"tx_too_long", counters.tx_too_long},
            {"tx_no_room", queues.drops()},
            {"tx_flushed", queues.flushed()},
            {"tx_mirror_down", counters.tx_mirror_down},
            {"rx_lost", wire.socket.receive_losses()},
            {"tx_lost", wire.socket.send_failures()},
            {"drops", drops}};
}

json read_counters(Device &device, const json & /*request*/) {
    json rows = json::array();
    for (const int port : wired_ports(device)) {
        rows.push_back(read_counters_of(device, *device.wire(port)));
    }
    return {{"counters", rows}, {"time", seconds(device.now())}};
}

/** The counts that are not 0. */
std::string drops_text(const json &row) {
    std::vector<std::string> parts;
    const auto add = [&parts](const std::string &name, uint64_t count) {
        if (count != 0) {
            parts.push_back(fmt::format("{} {}", name, count));
        }
    };
    for (const auto &[reason, count] : row["drops"].items()) {
        add(reason, count.get<uint64_t>());
    }
    for (const char *name : {"tx_too_long", "tx_no_room", "tx_flushed", "tx_mirror_down", "rx_lost", "tx_lost"}) {
        add(name, row[name].get<uint64_t>());
    }
    return joined(parts, ", ");
}

std::string show_counters(const json &answer) {
    std::string text = fmt::format("{:>4} {:>12} {:>14} {:>12} {:>14}  {}\n", "PORT", "RX FRAMES", "RX OCTETS",
                                   "TX FRAMES", "TX OCTETS", "DROPPED");
    for (const json &row : answer["counters"]) {
        text += fmt::format("{:>4} {:>12} {:>14} {:>12} {:>14}  {}\n", port_name(row), row["rx_frames"].get<uint64_t>(),
                            row["rx_octets"].get<uint64_t>(), row["tx_frames"].get<uint64_t>(),
                            row["tx_octets"].get<uint64_t>(), drops_text(row));
    }
    return text;
}

constexpr Filter kCounterFilters[] = {kByPort, kNonzero};
constexpr const char *kCounterCounts[] = {"rx_frames",   "rx_octets",  "tx_frames",  "tx_octets",
                                          "tx_too_long", "tx_no_room", "tx_flushed", "tx_mirror_down",
                                          "rx_lost",     "tx_lost",    "drops"};

}  // namespace

extern constexpr Subject kCounters{
    "counters",    "[PORTS]",     "frames and octets of each port, and why frames were dropped",
    read_counters, show_counters, kCounterFilters,
    kCounterCounts};

}  // namespace vdevice::inspect
