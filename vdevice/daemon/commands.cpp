// Ports are named by their user port number, the CPU port by 0. Chip ports that the board does not use are left out.
#include "vdevice/daemon/commands.h"

#include <functional>
#include <map>
#include <string>

#include "vdevice/daemon/command.h"
#include "vdevice/io/error.h"

namespace vdevice {
namespace {

using chip::PortSet;
using nlohmann::json;

void for_each_wire(const Device &device, const std::function<void(const Wire &, const chip::Port &)> &visit) {
    for (int port = 0; port < chip::Switch::kPorts; ++port) {
        if (const Wire *wire = device.wire(port)) {
            visit(*wire, device.chip().port(port));
        }
    }
}

int requested_port(const Device &device, const json &request) {
    const auto port = request.find("port");
    if (port == request.end() || !port->is_number_integer() || !device.board().chip_port(port->get<int64_t>())) {
        throw Refusal{"The port must be a user port, 1 to " + std::to_string(device.board().user_ports) + "."};
    }
    return port->get<int>();
}

json ports(Device &device, const json & /*request*/) {
    json rows = json::array();
    for_each_wire(device, [&](const Wire &wire, const chip::Port &port) {
        rows.push_back({{"port", user_number(device, wire.chip_port)},
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
                        {"tx_frames", port.counters.tx_frames}});
    });
    return {{"ports", rows}};
}

json vlans(Device &device, const json & /*request*/) {
    json rows = json::array();
    const chip::VlanTable &table = device.chip().vlans();
    for (const chip::Vid vid : table.list()) {
        const chip::Vlan &vlan = *table.find(vid);
        rows.push_back({{"vid", vid},
                        {"default", vid == table.default_vid()},
                        {"members", user_numbers(device, vlan.members)},
                        {"untagged", user_numbers(device, vlan.untagged)}});
    }
    return {{"vlans", rows}};
}

json counters(Device &device, const json & /*request*/) {
    json rows = json::array();
    for_each_wire(device, [&](const Wire &wire, const chip::Port &port) {
        json drops = json::object();
        for (size_t reason = 0; reason < chip::kDropReasons; ++reason) {
            drops[chip::name(static_cast<chip::Drop>(reason))] = port.counters.drops[reason];
        }
        rows.push_back({{"port", user_number(device, wire.chip_port)},
                        {"rx_frames", port.counters.rx_frames},
                        {"rx_octets", port.counters.rx_octets},
                        {"tx_frames", port.counters.tx_frames},
                        {"tx_octets", port.counters.tx_octets},
                        {"tx_too_long", port.counters.tx_too_long},
                        {"rx_lost", wire.socket.receive_losses()},
                        {"tx_lost", wire.socket.send_failures()},
                        {"drops", drops}});
    });
    return {{"counters", rows}};
}

json log(Device &device, const json & /*request*/) {
    json rows = json::array();
    for (const driver::LogLine &line : device.driver().journal().lines()) {
        rows.push_back({{"time", seconds(line.time)},
                        {"level", line.level},
                        {"module", line.module},
                        {"word", line.word},
                        {"text", line.text}});
    }
    return {{"log", rows}, {"total", device.driver().journal().total()}};
}

json events(Device &device, const json & /*request*/) {
    json rows = json::array();
    for (const driver::Event &event : device.driver().events().events()) {
        rows.push_back(
            {{"time", seconds(event.time)}, {"queue", event.queue}, {"words", event.words}, {"record", event.record}});
    }
    return {{"events", rows}};
}

json pull(Device &device, const json &request) {
    device.pull(requested_port(device, request));
    return json::object();
}

json plug(Device &device, const json &request) {
    device.plug(requested_port(device, request));
    return json::object();
}

json trace(Device &device, const json &request) {
    const auto value = request.find("value");
    if (value == request.end() || !value->is_number_integer()) {
        throw Refusal{"The trace value must be a number, 0 for off."};
    }
    device.driver().set_trace(value->get<int32_t>());
    return json::object();
}

/** User port numbers in the list's own order. */
json user_list(const Device &device, const std::vector<int> &chip_ports) {
    json numbers = json::array();
    for (const int port : chip_ports) {
        numbers.push_back(user_number(device, port));
    }
    return numbers;
}

json trunks(Device &device, const json & /*request*/) {
    json rows = json::array();
    const chip::TrunkTable &table = device.chip().trunks();
    for (int number = 0; number < chip::TrunkTable::kTrunks; ++number) {
        if (const chip::Trunk *trunk = table.find(number)) {
            rows.push_back({{"trunk", number},
                            {"group", number + 1},
                            {"members", user_list(device, trunk->members)},
                            {"standby", user_numbers(device, trunk->ports() & table.standby())},
                            {"balance", trunk->balance}});
        }
    }
    uint32_t hash = 0;
    device.driver().user_switch_control_get(0, 0, driver::kHashSelection, &hash);
    const chip::Traps &traps = device.chip().traps();
    return {{"trunks", rows},
            {"hash", hash},
            {"traps", {{"lacp", traps.lacp}, {"oam", traps.oam}, {"self_mac", traps.self_mac}}}};
}

json version(Device &device, const json & /*request*/) {
    return {{"version", VDEVICE_VERSION},
            {"user_ports", device.board().user_ports},
            {"first_port", device.board().first_port},
            {"uptime", seconds(device.now())}};
}

const std::map<std::string, Command> &command_table() {
    static const std::map<std::string, Command> kCommands = {
        {"ports", ports},
        {"vlans", vlans},
        {"macs", show_macs},
        {"mcast", show_groups},
        {"limits", show_limits},
        {"counters", counters},
        {"log", log},
        {"events", events},
        {"pull", pull},
        {"plug", plug},
        {"trace", trace},
        {"trunks", trunks},
        {"version", version},
        {"reserved", show_reserved},
        {"mirrors", show_mirrors},
        {"fields", show_fields},
        {"meters", show_meters},
        {"storm", show_storm},
        {"queues", show_queues},
        {"gpio", gpio},
        {"groups", show_stp_groups},
        {"translations", show_translations},
        {"priorities", show_priorities},
    };
    return kCommands;
}

}  // namespace

double seconds(chip::Time time) {
    return std::chrono::duration<double>(time).count();
}

int user_number(const Device &device, int chip_port) {
    constexpr int kCpuUserNumber = 0;
    return device.board().user_port(chip_port).value_or(kCpuUserNumber);
}

json user_numbers(const Device &device, const PortSet &chip_ports) {
    json numbers = json::array();
    chip_ports.for_each([&](int port) {
        if (device.wire(port) != nullptr) {
            numbers.push_back(user_number(device, port));
        }
    });
    return numbers;
}

json carry_out(Device &device, const json &request) {
    const auto name = request.find("command");
    if (name == request.end() || !name->is_string()) {
        return {{"error", "The request names no command."}};
    }
    const auto command = command_table().find(name->get<std::string>());
    if (command == command_table().end()) {
        return {{"error", "There is no command '" + name->get<std::string>() + "'."}};
    }
    try {
        return command->second(device, request);
    } catch (const io::Error &error) {
        return {{"error", std::string{"The device "} + error.what()}};
    } catch (const Refusal &refusal) {
        return {{"error", refusal.what()}};
    } catch (const json::exception &) {
        return {{"error", "An argument of the command has the wrong type."}};
    }
}

}  // namespace vdevice
