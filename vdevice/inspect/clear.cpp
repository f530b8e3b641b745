// Clears statistics.
#include <nlohmann/json.hpp>

#include "vdevice/inspect/port_names.h"
#include "vdevice/inspect/subject.h"
#include "vdevice/inspect/text.h"

namespace vdevice::inspect {
namespace {

using nlohmann::json;

std::vector<int> requested_ports(const Device &device, const json &request) {
    std::vector<int> ports = wired_ports(device);
    std::erase_if(ports, [&](int port) { return !asks_for_port(request, user_number(device, port)); });
    return ports;
}

json clear(Device &device, const json &request) {
    if (request.value("what", "") != "counters") {
        throw Refusal{"What can be cleared is 'counters'."};
    }
    const std::vector<int> ports = requested_ports(device, request);
    if (ports.empty()) {
        throw Refusal{"The device has none of these ports."};
    }
    for (const int port : ports) {
        device.clear_counts(port);
    }
    if (!request.contains(kByPort.name)) {
        device.clear_table_counts();
    }
    return json::object();
}

}  // namespace

extern constexpr Subject kClear{"clear", "WHAT [PORT]", "clear counters: the counts of PORT, as 1-4,7, or all counts",
                                clear, show_nothing};

}  // namespace vdevice::inspect
