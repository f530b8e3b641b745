// Mirror sessions.
#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "vdevice/inspect/port_names.h"
#include "vdevice/inspect/subject.h"
#include "vdevice/inspect/text.h"

namespace vdevice::inspect {
namespace {

using chip::Mirror;
using chip::MirrorTable;
using nlohmann::json;

json user_port_or_null(const Device &device, int chip_port) {
    return chip_port == Mirror::kNone ? json(nullptr) : json(user_number(device, chip_port));
}

json read_mirrors(Device &device, const json & /*request*/) {
    const MirrorTable &table = device.chip().mirrors();
    json rows = json::array();
    for (uint32_t number = 0; number < MirrorTable::kSessions; ++number) {
        const Mirror &mirror = table.session(number);
        if (mirror.is_used()) {
            rows.push_back({{"session", number},
                            {"destination", user_port_or_null(device, mirror.destination)},
                            {"ingress", user_numbers(device, mirror.ingress)},
                            {"egress", user_numbers(device, mirror.egress)},
                            {"flow", user_port_or_null(device, mirror.flow_destination)},
                            {"disabled", mirror.disabled}});
        }
    }
    return {{"mirrors", rows}, {"enabled", table.enabled()}};
}

std::string port_or_dash(const json &port) {
    return port.is_null() ? "-" : port_name(port.get<int>());
}

std::string show_mirrors(const json &answer) {
    std::string text = fmt::format("{:>7}  {:<24} {:<24} {:>2}  {:>4}\n", "SESSION", "INGRESS", "EGRESS", "TO", "FLOW");
    for (const json &mirror : answer["mirrors"]) {
        text +=
            fmt::format("{:>7}  {:<24} {:<24} {:>2}  {:>4}{}\n", mirror["session"].get<int>(),
                        port_list(mirror["ingress"]), port_list(mirror["egress"]), port_or_dash(mirror["destination"]),
                        port_or_dash(mirror["flow"]), mirror["disabled"].get<bool>() ? "  disabled" : "");
    }
    return text + fmt::format("mirroring {}\n", on_or_off(answer["enabled"]));
}

constexpr Filter kMirrorFilters[] = {{"port",
                                      kPortList,
                                      "sessions that mirror one of these ports, or to one of them",
                                      FilterKind::kNumbers,
                                      {"ingress", "egress", "destination"}}};

}  // namespace

extern constexpr Subject kMirrors{"mirrors",    "",           "the mirror sessions with their ports",
                                  read_mirrors, show_mirrors, kMirrorFilters};

}  // namespace vdevice::inspect
