// A row for each of kCommands.
#include "switchd/daemon/handlers.h"

#include <nlohmann/json.hpp>

#include "switchd/daemon/mac_text.h"
#include "switchd/daemon/statistics.h"
#include "switchd/daemon/status_text.h"
#include "vdevice/io/error.h"

namespace switchd {
namespace {

using nlohmann::json;

json said(const std::string &text) {
    return {{"text", text}};
}

std::optional<Mac> station_of(const Arguments &arguments) {
    if (arguments.size() < 2) {
        return std::nullopt;
    }
    const auto station = mac_of_text(arguments[1]);
    if (!station || !is_station_address(*station)) {
        throw vdevice::io::Error{"a station's address is written like 02:00:00:00:00:01."};
    }
    return station;
}

json statistics_of(const Switchd &daemon, const Arguments &arguments) {
    return statistics(arguments.empty() ? daemon.counted() : std::vector{daemon.counted_named(arguments[0])});
}

}  // namespace

Handlers handlers_of(Switchd &daemon) {
    return {
        {"status",
         [&](const Arguments &arguments) {
             const json status = daemon.status();
             return arguments.empty() ? status : subject_of(status, arguments[0]);
         }},
        {"statistics", [&](const Arguments &arguments) { return statistics_of(daemon, arguments); }},
        {"add", [&](const Arguments &arguments) { return said(daemon.add(arguments[0])); }},
        {"remove", [&](const Arguments &arguments) { return said(daemon.remove(arguments[0])); }},
        {"authorize",
         [&](const Arguments &arguments) { return said(daemon.authorize(arguments[0], station_of(arguments), true)); }},
        {"unauthorize",
         [&](const Arguments &arguments) {
             return said(daemon.authorize(arguments[0], station_of(arguments), false));
         }},
        {"resync", [&](const Arguments &) { return said(daemon.resync()); }},
    };
}

}  // namespace switchd
