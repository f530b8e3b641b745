#include "tools/vdevctl/queue_tables.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <vector>

#include "tools/vdevctl/port_text.h"

namespace vdevice {
namespace {

using nlohmann::json;

/** Numbers that mean something only while the port is shaped. */
std::string of_shaper(const json &port, const char *what) {
    return port["rate"].get<uint32_t>() == 0 ? "-" : fmt::format("{}", port[what].get<uint32_t>());
}

std::string port_line(const json &port) {
    std::vector<uint32_t> weights;
    for (const json &queue : port["queues"]) {
        weights.push_back(queue["weight"].get<uint32_t>());
    }
    return fmt::format("{:>4}  {:<11} {:>10} {:>10}  {}\n", port_name(port["port"].get<int>()),
                       port["mode"].get<std::string>(), of_shaper(port, "rate"), of_shaper(port, "burst"),
                       fmt::join(weights, " "));
}

/** Nothing for a queue that no frame has come to. */
std::string queue_line(const json &queue) {
    const auto number = [&](const char *what) { return queue[what].get<uint64_t>(); };
    if (number("frames") + number("waiting_frames") + number("dropped") + number("flushed") == 0) {
        return "";
    }
    return fmt::format("      queue {}: {} frames, {} octets; {} waiting with {} octets; {} dropped, {} flushed\n",
                       number("queue"), number("frames"), number("octets"), number("waiting_frames"),
                       number("waiting_octets"), number("dropped"), number("flushed"));
}

}  // namespace

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

}  // namespace vdevice
