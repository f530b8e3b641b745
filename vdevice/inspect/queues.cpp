// Egress queues, their schedulers and shapers.
#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "vdevice/inspect/port_names.h"
#include "vdevice/inspect/subject.h"
#include "vdevice/inspect/text.h"
#include "vdevice/state/words.h"

namespace vdevice::inspect {
namespace {

using chip::PortQueues;
using nlohmann::json;

json read_queues_of(int number, const PortQueues &port) {
    json rows = json::array();
    for (size_t queue = 0; queue < chip::kQueues; ++queue) {
        const chip::QueueCounters &counters = port.counters(queue);
        rows.push_back({{"queue", queue},
                        {"weight", port.scheduler().weights[queue]},
                        {"frames", counters.frames},
                        {"octets", counters.octets},
                        {"dropped", counters.drops},
                        {"flushed", counters.flushed},
                        {"waiting_frames", port.waiting_frames(queue)},
                        {"waiting_octets", port.waiting_octets(queue)}});
    }
    const chip::RateLimit *shaper = port.shaper();
    return {{"port", number},
            {"mode", state::word(port.scheduler().mode)},
            {"delay", port.scheduler().delay},
            {"rate", shaper == nullptr ? 0 : shaper->rate},
            {"burst", shaper == nullptr ? 0 : shaper->depth},
            {"line_rate", port.has_line()},
            {"queues", rows}};
}

json read_queues(Device &device, const json & /*request*/) {
    device.catch_up();
    const chip::EgressQueues &queues = device.chip().queues();
    json rows = json::array();
    for (const int port : wired_ports(device)) {
        rows.push_back(read_queues_of(user_number(device, port), queues.port(port)));
    }
    // The time, so that two readings give a rate even when the second is late.
    return {{"ports", rows},
            {"count", device.chip().queue_map().queues()},
            {"waiting_octets", queues.waiting_octets()},
            {"capacity", chip::EgressQueues::kOctets},
            {"queue_capacity", PortQueues::kQueueOctets},
            {"time", seconds(device.now())}};
}

/** A number of the shaper; "-" for a port that has none. */
std::string of_shaper(const json &port, const char *what) {
    return port["rate"].get<uint32_t>() == 0 ? "-" : fmt::format("{}", port[what].get<uint32_t>());
}

std::string port_line(const json &port) {
    json weights = json::array();
    for (const json &queue : port["queues"]) {
        weights.push_back(queue["weight"]);
    }
    return fmt::format("{:>4}  {:<11} {:>10} {:>10}  {}\n", port_name(port), port["mode"].get<std::string>(),
                       of_shaper(port, "rate"), of_shaper(port, "burst"), numbers(weights));
}

/** A line for a queue that has had frames. */
std::string queue_line(const json &queue) {
    const auto number = [&](const char *what) { return queue[what].get<uint64_t>(); };
    if (number("frames") + number("waiting_frames") + number("dropped") + number("flushed") == 0) {
        return "";
    }
    return fmt::format("      queue {}: {} frames, {} octets; {} waiting with {} octets; {} dropped, {} flushed\n",
                       number("queue"), number("frames"), number("octets"), number("waiting_frames"),
                       number("waiting_octets"), number("dropped"), number("flushed"));
}

std::string show_queues(const json &answer) {
    std::string text =
        fmt::format("{:>4}  {:<11} {:>10} {:>10}  {}\n", "PORT", "MODE", "KBIT/S", "BURST KBIT", "WEIGHTS");
    for (const json &port : answer["ports"]) {
        text += port_line(port);
        for (const json &queue : port["queues"]) {
            text += queue_line(queue);
        }
    }
    return text + fmt::format("{} queues; {} of {} octets waiting\n", answer["count"].get<int>(),
                              answer["waiting_octets"].get<uint64_t>(), answer["capacity"].get<uint64_t>());
}

constexpr Filter kQueueFilters[] = {kByPort, kNonzero};
constexpr const char *kQueueCounts[] = {"frames", "octets", "dropped", "flushed"};

}  // namespace

extern constexpr Subject kQueues{
    "queues",      "[PORTS]",   "the ports' egress queues, how they are scheduled and shaped", read_queues, show_queues,
    kQueueFilters, kQueueCounts};

}  // namespace vdevice::inspect
