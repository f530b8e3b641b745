// Ports: their state and settings.
#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "vdevice/inspect/port_names.h"
#include "vdevice/inspect/subject.h"

namespace vdevice::inspect {
namespace {

using nlohmann::json;

json read_port(const Device &device, const Wire &wire) {
    const chip::Port &port = device.chip().port(wire.chip_port);
    return {{"port", user_number(device, wire.chip_port)},
            {"chip_port", wire.chip_port},
            {"interface", wire.socket.interface_name()},
            {"present", wire.socket.is_open()},
            {"enabled", port.enabled},
            {"pulled", wire.pulled},
            {"link", port.link},
            {"up", port.is_up()},
            {"pvid", port.pvid},
            {"speed", port.phy.speed()},
            {"full_duplex", port.phy.full_duplex()},
            {"autoneg", port.phy.autoneg()},
            {"medium", port.phy.medium() == chip::Medium::kFibre ? "fibre" : "copper"},
            {"learning", port.learning.number},
            {"loopback", port.loopback},
            {"jumbo", port.jumbo},
            {"egress", user_numbers(device, port.egress)},
            {"rx_frames", port.counters.rx_frames},
            {"tx_frames", port.counters.tx_frames}};
}

json read_ports(Device &device, const json & /*request*/) {
    json rows = json::array();
    for (const int port : wired_ports(device)) {
        rows.push_back(read_port(device, *device.wire(port)));
    }
    return {{"ports", rows}, {"time", seconds(device.now())}};
}

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

/** "1000 full", then the settings that differ from the usual ones. */
std::string port_settings(const json &port) {
    constexpr int kUsualLearning = 5;
    std::string text =
        fmt::format("{} {}{}", port["speed"].get<int>(), port["full_duplex"].get<bool>() ? "full" : "half",
                    port["autoneg"].get<bool>() ? "" : ", fixed");
    if (port["learning"].get<int>() != kUsualLearning) {
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
        text += fmt::format("{:>4}  {:>4}  {:<10} {:<8} {:>5} {:>12} {:>12}  {}\n", port_name(port),
                            port["chip_port"].get<int>(), port["interface"].get<std::string>(), port_state(port),
                            port["pvid"].get<int>(), port["rx_frames"].get<uint64_t>(),
                            port["tx_frames"].get<uint64_t>(), port_settings(port));
    }
    return text;
}

constexpr Filter kPortFilters[] = {kByPort};
constexpr const char *kPortCounts[] = {"rx_frames", "tx_frames"};

}  // namespace

extern constexpr Subject kPorts{"ports",      "[PORTS]",  "the ports with their state", read_ports, show_ports,
                                kPortFilters, kPortCounts};

}  // namespace vdevice::inspect
