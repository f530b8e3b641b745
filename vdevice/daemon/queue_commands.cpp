// The command that shows the ports' egress queues, their schedulers and shapers.
#include "vdevice/daemon/command.h"

namespace vdevice {
namespace {

using chip::PortQueues;
using chip::SchedulerMode;
using nlohmann::json;

const char *mode_name(SchedulerMode mode) {
    switch (mode) {
        case SchedulerMode::kRoundRobin:
            return "round_robin";
        case SchedulerMode::kWeighted:
            return "weighted";
        default:
            return "strict";
    }
}

json show_port(int number, const PortQueues &port) {
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
            {"mode", mode_name(port.scheduler().mode)},
            {"delay", port.scheduler().delay},
            {"rate", shaper == nullptr ? 0 : shaper->rate},
            {"burst", shaper == nullptr ? 0 : shaper->depth},
            {"queues", rows}};
}

}  // namespace

json show_queues(Device &device, const json & /*request*/) {
    device.catch_up();
    const chip::EgressQueues &queues = device.chip().queues();
    json rows = json::array();
    for (int port = 0; port < chip::Switch::kPorts; ++port) {
        if (device.wire(port) != nullptr) {
            rows.push_back(show_port(user_number(device, port), queues.port(port)));
        }
    }
    // With the time of this reading two of them give a rate, however late they are asked for.
    return {{"ports", rows},
            {"count", device.chip().queue_map().queues()},
            {"waiting_octets", queues.waiting_octets()},
            {"capacity", chip::EgressQueues::kOctets},
            {"time", seconds(device.now())}};
}

}  // namespace vdevice
