// Cables of the user ports: pulled and plugged by hand, and made bad.
#include <fmt/core.h>

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>

#include "vdevice/inspect/port_names.h"
#include "vdevice/inspect/subject.h"
#include "vdevice/inspect/text.h"

namespace vdevice::inspect {
namespace {

using cable::Conditions;
using nlohmann::json;

constexpr const char *kClearOption = "clear";

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

/** A word that is a number has become one. */
uint64_t condition_of(const json &value, const cable::Option &option) {
    const auto condition = cable::value_of(option, value.is_string() ? value.get<std::string>() : value.dump());
    if (!condition) {
        throw Refusal{std::string{"The option --"} + option.name + " takes " + option.takes + "."};
    }
    return *condition;
}

/** Those that are named; nothing if none is. */
std::optional<Conditions> named_conditions(const json &request) {
    Conditions conditions;
    bool is_any_named = false;
    for (const cable::Option &option : cable::kOptions) {
        if (const auto value = request.find(option.name); value != request.end()) {
            conditions.*option.condition = condition_of(*value, option);
            is_any_named = is_any_named || option.condition != &Conditions::seed;
        }
    }
    return is_any_named ? std::optional{conditions} : std::nullopt;
}

json set_cable(Device &device, const json &request) {
    const int port = requested_port(device, request);
    const std::optional<Conditions> conditions = named_conditions(request);
    const bool is_clear = request.contains(kClearOption);
    if (is_clear == conditions.has_value() || (is_clear && request[kClearOption] != true)) {
        throw Refusal{"A cable is given its conditions, at least one besides a seed, or --clear."};
    }
    if (const char *fault = conditions ? cable::fault_of(*conditions) : nullptr) {
        throw Refusal{std::string{"There is no such cable: "} + fault};
    }
    device.set_conditions(port, conditions.value_or(Conditions{}));
    return json::object();
}

/** As the command takes them. */
json cable_words(const Conditions &conditions) {
    json words = json::object();
    for (const cable::Option &option : cable::kOptions) {
        const uint64_t condition = conditions.*option.condition;
        if (option.condition == &Conditions::seed) {
            words[option.name] = condition;
        } else if (condition != 0) {
            words[option.name] = cable::text_of(option, condition);
        }
    }
    return words;
}

json cable_row(const cable::OneWay &way, int port, const char *direction, const Conditions &conditions) {
    json row = {
        {"port", port}, {"direction", direction}, {"conditions", cable_words(conditions)}, {"waiting", way.waiting()}};
    for (const cable::CountName &known : cable::kCountNames) {
        row[known.name] = way.counts().*known.count;
    }
    return row;
}

json read_cables(Device &device, const json & /*request*/) {
    device.catch_up();
    json rows = json::array();
    for (const int port : wired_ports(device)) {
        if (const auto &bad = device.wire(port)->bad) {
            rows.push_back(cable_row(bad->in, user_number(device, port), "in", bad->conditions));
            rows.push_back(cable_row(bad->out, user_number(device, port), "out", bad->conditions));
        }
    }
    return {{"cables", rows}, {"time", seconds(device.now())}};
}

std::string conditions_text(const json &words) {
    std::vector<std::string> parts;
    for (const cable::Option &option : cable::kOptions) {
        if (const auto word = words.find(option.name); word != words.end()) {
            parts.push_back(
                fmt::format("{} {}", option.name, word->is_string() ? word->get<std::string>() : word->dump()));
        }
    }
    return joined(parts, ", ");
}

std::string show_cables(const json &answer) {
    constexpr const char *kRow = "{:>4}  {:<9} {:>9} {:>9} {:>9} {:>10} {:>9} {:>7} {:>7} {:>7}  {}\n";
    std::string text = fmt::format(kRow, "PORT", "DIRECTION", "FRAMES", "PASSED", "LOST", "DUPLICATED", "CORRUPTED",
                                   "WAITING", "NO ROOM", "CUT", "CONDITIONS");
    for (const json &row : answer["cables"]) {
        const auto count = [&](const char *name) { return row[name].get<uint64_t>(); };
        text += fmt::format(kRow, port_name(row), row["direction"].get<std::string>(), count("frames"), count("passed"),
                            count("lost"), count("duplicated"), count("corrupted"), count("waiting"), count("no_room"),
                            count("cut"), conditions_text(row["conditions"]));
    }
    return text;
}

constexpr Filter own_option(const char *name, const char *value, const char *help) {
    return {name, value, help, FilterKind::kOwn, {}};
}

/** Those of the cable, and one to have a good one again. */
constexpr auto kCableOptions = [] {
    std::array<Filter, std::size(cable::kOptions) + 1> filters{};
    std::transform(std::begin(cable::kOptions), std::end(cable::kOptions), filters.begin(),
                   [](const cable::Option &option) { return own_option(option.name, option.value, option.help); });
    filters.back() = own_option(kClearOption, "", "the cable is a good one again");
    return filters;
}();

constexpr Filter kCableFilters[] = {kByPort, kNonzero};
constexpr auto kCableCounts = [] {
    std::array<const char *, std::size(cable::kCountNames)> names{};
    std::transform(std::begin(cable::kCountNames), std::end(cable::kCountNames), names.begin(),
                   [](const cable::CountName &known) { return known.name; });
    return names;
}();

}  // namespace

extern constexpr Subject kCables{"cables",    "[PORTS]",   "the bad cables, and what became of the frames on them",
                                 read_cables, show_cables, kCableFilters,
                                 kCableCounts};
extern constexpr Subject kCable{"cable",   "PORT",       "make a user port's cable a bad one, or a good one again",
                                set_cable, show_nothing, kCableOptions};
extern constexpr Subject kPull{"pull", "PORT", "pull a user port's cable", pull, show_nothing};
extern constexpr Subject kPlug{"plug", "PORT", "plug a user port's cable in again", plug, show_nothing};

}  // namespace vdevice::inspect
