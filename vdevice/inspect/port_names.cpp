// Numbers and names of ports.
#include "vdevice/inspect/port_names.h"

#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "vdevice/inspect/text.h"

namespace vdevice::inspect {

using nlohmann::json;

std::vector<int> wired_ports(const Device &device) {
    std::vector<int> ports;
    for (int port = 0; port < chip::Switch::kPorts; ++port) {
        if (device.wire(port) != nullptr) {
            ports.push_back(port);
        }
    }
    return ports;
}

int user_number(const Device &device, int chip_port) {
    constexpr int kCpuUserNumber = 0;
    return device.board().user_port(chip_port).value_or(kCpuUserNumber);
}

json user_numbers(const Device &device, const chip::PortSet &chip_ports) {
    json numbers = json::array();
    chip_ports.for_each([&](int port) {
        if (device.wire(port) != nullptr) {
            numbers.push_back(user_number(device, port));
        }
    });
    return numbers;
}

std::string port_name(int port) {
    return port == 0 ? "cpu" : std::to_string(port);
}

std::string port_name(const json &row) {
    return port_name(row["port"].get<int>());
}

std::string port_list(const json &ports) {
    std::vector<std::string> parts;
    const auto numbers = ports.get<std::vector<int>>();
    for (size_t first = 0; first < numbers.size();) {
        size_t last = first;
        while (numbers[first] != 0 && last + 1 < numbers.size() && numbers[last + 1] == numbers[last] + 1) {
            ++last;
        }
        parts.push_back(first == last ? port_name(numbers[first])
                                      : fmt::format("{}-{}", numbers[first], numbers[last]));
        first = last + 1;
    }
    return parts.empty() ? "-" : joined(parts, ",");
}

}  // namespace vdevice::inspect
