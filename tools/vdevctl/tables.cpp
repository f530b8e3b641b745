#include "tools/vdevctl/tables.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <vector>

#include "tools/vdevctl/field_tables.h"
#include "tools/vdevctl/l2_tables.h"
#include "tools/vdevctl/limit_tables.h"
#include "tools/vdevctl/port_text.h"
#include "tools/vdevctl/priority_tables.h"
#include "tools/vdevctl/queue_tables.h"
#include "tools/vdevctl/start_tables.h"
#include "tools/vdevctl/tag_tables.h"

namespace vdevice {
namespace {

using nlohmann::json;

std::string port_state(const json &port) {
    if (!port["present"].get<bool>()) {
        return "gone";
    }
    if (port["pulled"].get<bool>()) {
        return "pulled";
    }
    if (!port["enabled"].get<bool>()) {
        return "disabled";
    }
    return port["link"].get<bool>() ? "up" : "down";
}

/** "1000 full", with what is out of the ordinary behind it. */
std::string port_settings(const json &port) {
    constexpr int kNormalLearning = 5;
    std::string text =
        fmt::format("{} {}{}", port["speed"].get<int>(), port["full_duplex"].get<bool>() ? "full" : "half",
                    port["autoneg"].get<bool>() ? "" : ", fixed");
    if (port["learning"].get<int>() != kNormalLearning) {
        text += fmt::format(", learning {}", port["learning"].get<int>());
    }
    if (port["loopback"].get<int>() != 0) {
        text += fmt::format(", loopback {}", port["loopback"].get<int>());
    }
    return text + (port["jumbo"].get<bool>() ? "" : ", no jumbo frames");
}

std::string show_ports(const json &answer) {
    std::string text = fmt::format("{:>4}  {:>4}  {:<10} {:<8} {:>5} {:>12} {:>12}  {}\n", "PORT", "CHIP", "INTERFACE",
                                   "STATE", "PVID", "RX FRAMES", "TX FRAMES", "SETTINGS");
    for (const json &port : answer["ports"]) {
        text += fmt::format("{:>4}  {:>4}  {:<10} {:<8} {:>5} {:>12} {:>12}  {}\n", port_name(port["port"].get<int>()),
                            port["chip_port"].get<int>(), port["interface"].get<std::string>(), port_state(port),
                            port["pvid"].get<int>(), port["rx_frames"].get<uint64_t>(),
                            port["tx_frames"].get<uint64_t>(), port_settings(port));
    }
    return text;
}

std::string show_vlans(const json &answer) {
    std::string text = fmt::format("{:>5}  {:<30} {}\n", "VLAN", "MEMBERS", "UNTAGGED");
    for (const json &vlan : answer["vlans"]) {
        const std::string vid = fmt::format("{}{}", vlan["vid"].get<int>(), vlan["default"].get<bool>() ? "*" : "");
        text += fmt::format("{:>5}  {:<30} {}\n", vid, port_list(vlan["members"]), port_list(vlan["untagged"]));
    }
    return text + "* default VLAN\n";
}

std::string show_trunks(const json &answer) {
    std::string text =
        fmt::format("{:>5}  {:>5}  {:<24} {:<24} {}\n", "TRUNK", "GROUP", "MEMBERS", "STANDBY", "BALANCE");
    for (const json &trunk : answer["trunks"]) {
        text += fmt::format("{:>5}  {:>5}  {:<24} {:<24} {}\n", trunk["trunk"].get<int>(), trunk["group"].get<int>(),
                            port_list(trunk["members"]), port_list(trunk["standby"]), trunk["balance"].get<int>());
    }
    return text + fmt::format("hash selection {:#x}\n", answer["hash"].get<int>());
}

std::string show_drops(const json &row) {
    std::vector<std::string> parts;
    for (const auto &[reason, count] : row["drops"].items()) {
        if (count.get<uint64_t>() != 0) {
            parts.push_back(fmt::format("{} {}", reason, count.get<uint64_t>()));
        }
    }
    if (const auto longer = row["tx_too_long"].get<uint64_t>(); longer != 0) {
        parts.push_back(fmt::format("tx_too_long {}", longer));
    }
    for (const char *name : {"rx_lost", "tx_lost"}) {
        if (const auto lost = row[name].get<uint64_t>(); lost != 0) {
            parts.push_back(fmt::format("{} {}", name, lost));
        }
    }
    return fmt::format("{}", fmt::join(parts, ", "));
}

std::string show_counters(const json &answer) {
    std::string text = fmt::format("{:>4} {:>12} {:>14} {:>12} {:>14}  {}\n", "PORT", "RX FRAMES", "RX OCTETS",
                                   "TX FRAMES", "TX OCTETS", "DROPPED");
    for (const json &row : answer["counters"]) {
        text += fmt::format("{:>4} {:>12} {:>14} {:>12} {:>14}  {}\n", port_name(row["port"].get<int>()),
                            row["rx_frames"].get<uint64_t>(), row["rx_octets"].get<uint64_t>(),
                            row["tx_frames"].get<uint64_t>(), row["tx_octets"].get<uint64_t>(), show_drops(row));
    }
    return text;
}

std::string show_log(const json &answer) {
    std::string text;
    for (const json &line : answer["log"]) {
        text +=
            fmt::format("{:>12.6f}  {}/{} {:<7} {}\n", line["time"].get<double>(), line["level"].get<int>(),
                        line["module"].get<int>(), line["word"].get<std::string>(), line["text"].get<std::string>());
    }
    return text;
}

std::string show_events(const json &answer) {
    std::string text;
    for (const json &event : answer["events"]) {
        text += fmt::format("{:>12.6f}  queue {}  words {}  record {}\n", event["time"].get<double>(),
                            event["queue"].get<uint32_t>(), fmt::join(event["words"].get<std::vector<uint32_t>>(), " "),
                            fmt::join(event["record"].get<std::vector<int>>(), " "));
    }
    return text;
}

std::string show_version(const json &answer) {
    const int first = answer["first_port"].get<int>();
    const int count = answer["user_ports"].get<int>();
    return fmt::format("virtual device {}, user ports 1 to {} on chip ports {} to {}, running for {:.0f} s\n",
                       answer["version"].get<std::string>(), count, first, first + count - 1,
                       answer["uptime"].get<double>());
}

}  // namespace

std::string show(const std::string &command, const json &answer) {
    using Show = std::string (*)(const json &);
    static const std::map<std::string, Show> kTables = {
        {"ports", show_ports},
        {"vlans", show_vlans},
        {"macs", show_macs},
        {"counters", show_counters},
        {"log", show_log},
        {"events", show_events},
        {"trunks", show_trunks},
        {"version", show_version},
        {"reserved", show_reserved},
        {"mirrors", show_mirrors},
        {"gpio", show_gpio},
        {"mcast", show_groups},
        {"limits", show_limits},
        {"fields", show_fields},
        {"meters", show_meters},
        {"storm", show_storm},
        {"queues", show_queues},
        {"groups", show_stp_groups},
        {"translations", show_translations},
        {"priorities", show_priorities},
    };
    const auto table = kTables.find(command);
    return table == kTables.end() ? std::string{} : table->second(answer);
}

}  // namespace vdevice
