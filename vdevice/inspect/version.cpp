// The device itself: its version, its board, and how long it has run.
#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "vdevice/inspect/subject.h"

namespace vdevice::inspect {

const char *const kVersionText = VDEVICE_VERSION;

namespace {

using nlohmann::json;

json read_version(Device &device, const json & /*request*/) {
    return {{"version", kVersionText},
            {"user_ports", device.board().user_ports},
            {"first_port", device.board().first_port},
            {"uptime", seconds(device.now())}};
}

std::string show_version(const json &answer) {
    const int first = answer["first_port"].get<int>();
    const int count = answer["user_ports"].get<int>();
    return fmt::format("virtual device {}, user ports 1 to {} on chip ports {} to {}, running for {:.0f} s\n",
                       answer["version"].get<std::string>(), count, first, first + count - 1,
                       answer["uptime"].get<double>());
}

}  // namespace

extern constexpr Subject kVersion{"version", "", "version and board of the running device", read_version, show_version};

}  // namespace vdevice::inspect
