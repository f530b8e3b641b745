// Cables of the user ports: pulled and plugged by hand.
#include <nlohmann/json.hpp>

#include "vdevice/inspect/subject.h"
#include "vdevice/inspect/text.h"

namespace vdevice::inspect {
namespace {

using nlohmann::json;

int requested_port(const Device &device, const json &request) {
    const auto port = request.find("port");
    if (port == request.end() || !port->is_number_integer() || !device.board().chip_port(port->get<int64_t>())) {
        throw Refusal{"The port must be a user port, 1 to " + std::to_string(device.board().user_ports) + "."};
    }
    return port->get<int>();
}

json pull(Device &device, const json &request) {
    device.pull(requested_port(device, request));
    return json::object();
}

json plug(Device &device, const json &request) {
    device.plug(requested_port(device, request));
    return json::object();
}

}  // namespace

extern constexpr Subject kPull{"pull", "PORT", "pull a user port's cable", pull, show_nothing};
extern constexpr Subject kPlug{"plug", "PORT", "plug a user port's cable in again", plug, show_nothing};

}  // namespace vdevice::inspect
