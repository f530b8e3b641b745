#include "tools/vdevctl/priority_tables.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <stdint.h>
#include <vector>

#include "tools/vdevctl/port_text.h"

namespace vdevice {
namespace {

using nlohmann::json;

std::string numbers(const json &list) {
    return fmt::format("{}", fmt::join(list.get<std::vector<uint64_t>>(), " "));
}

/** Code points that stay as they are, with their class for a priority, are not worth a line. */
std::string show_dscps(const std::string &whose, const json &rows, bool all) {
    constexpr int kClassSize = 8;
    std::string text;
    for (const json &row : rows) {
        const int dscp = row["dscp"].get<int>();
        const int mapped = row["mapped"].get<int>();
        const int priority = row["priority"].get<int>();
        if (all || mapped != dscp || priority != dscp / kClassSize) {
            text += fmt::format("DSCP {:>2} {}: DSCP {}, priority {}\n", dscp, whose, mapped, priority);
        }
    }
    return text;
}

}  // namespace

std::string show_priorities(const json &answer) {
    std::string text = fmt::format("{:>4}  {:<7} {:>8}  {:<15}  {:<15}  {}\n", "PORT", "TRUSTS", "PRIORITY",
                                   "PRIORITIES 0-7", "THEIR QUEUES", "FRAMES SENT BY QUEUES 0-7");
    std::string dscps = show_dscps("on all ports", answer["dscps"], false);
    for (const json &port : answer["ports"]) {
        const std::string name = port_name(port["port"].get<int>());
        text += fmt::format("{:>4}  {:<7} {:>8}  {:<15}  {:<15}  {}\n", name, port["trust"].get<std::string>(),
                            port["priority"].get<int>(), numbers(port["remap"]), numbers(port["queues"]),
                            numbers(port["tx_queues"]));
        dscps += show_dscps("on port " + name, port["dscps"], true);
    }
    return text + dscps;
}

}  // namespace vdevice
