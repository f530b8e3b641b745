#include "tools/vdevctl/start_tables.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <vector>

#include "tools/vdevctl/port_text.h"

namespace vdevice {
namespace {

using nlohmann::json;

std::string on_or_off(const json &value) {
    return value.get<bool>() ? "on" : "off";
}

std::string port_or_dash(const json &port) {
    return port.is_null() ? "-" : port_name(port.get<int>());
}

std::string traps_that_are_on(const json &traps) {
    std::vector<std::string> names;
    for (const auto &[name, on] : traps.items()) {
        if (on.get<bool>()) {
            names.push_back(name);
        }
    }
    return names.empty() ? "none" : fmt::format("{}", fmt::join(names, ", "));
}

}  // namespace

std::string show_reserved(const json &answer) {
    std::string text = fmt::format("{:>5}  {}\n", "INDEX", "ADDRESS");
    for (const json &entry : answer["reserved"]) {
        text += fmt::format("{:>5}  {}\n", entry["index"].get<int>(), entry["mac"].get<std::string>());
    }
    text += fmt::format("{} of {} entries\n", answer["reserved"].size(), answer["capacity"].get<int>());
    text += fmt::format("trapped: {}\n", traps_that_are_on(answer["traps"]));
    return text + fmt::format("reserved multicast to the CPU {}, attack filter {}\n",
                              on_or_off(answer["reserved_multicast"]), on_or_off(answer["attack_filter"]));
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

std::string show_gpio(const json &answer) {
    std::string text;
    for (const char *name : {"direction", "output", "input"}) {
        text += fmt::format("{:<10} {:#010x}\n", name, answer[name].get<uint32_t>());
    }
    return text;
}

}  // namespace vdevice
