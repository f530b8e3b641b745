// The list of subjects, and the help, which shows it.
#include <fmt/core.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "vdevice/inspect/subject.h"

namespace vdevice::inspect {

using nlohmann::json;

extern const Subject kPorts, kVlans, kMacs, kMcast, kLimits, kTrunks, kCounters, kLog, kEvents, kReserved, kMirrors,
    kGroups, kTranslations, kPriorities, kFields, kStorm, kMeters, kQueues, kGpio, kVersion, kPull, kPlug, kTrace;

namespace {

json read_help(Device & /*device*/, const json & /*request*/) {
    json rows = json::array();
    for (const Subject *subject : subjects()) {
        rows.push_back({{"name", subject->name}, {"arguments", subject->arguments}, {"help", subject->help}});
    }
    return {{"subjects", rows}};
}

std::string show_help(const json &answer) {
    std::string text;
    for (const json &row : answer["subjects"]) {
        const std::string usage = row["name"].get<std::string>() + " " + row["arguments"].get<std::string>();
        text += fmt::format("  {:<26}  {}\n", usage, row["help"].get<std::string>());
    }
    return text;
}

constexpr Subject kHelp{"help", "", "the commands with their arguments", read_help, show_help};

constexpr const Subject *kSubjects[] = {
    &kPorts,  &kVlans,    &kMacs,    &kMcast,   &kLimits,       &kTrunks,     &kCounters, &kLog,
    &kEvents, &kReserved, &kMirrors, &kGroups,  &kTranslations, &kPriorities, &kFields,   &kStorm,
    &kMeters, &kQueues,   &kGpio,    &kVersion, &kPull,         &kPlug,       &kTrace,    &kHelp,
};

}  // namespace

std::span<const Subject *const> subjects() {
    return kSubjects;
}

const Subject *find(std::string_view name) {
    const auto *found = std::find_if(std::begin(kSubjects), std::end(kSubjects),
                                     [&](const Subject *subject) { return subject->name == name; });
    return found == std::end(kSubjects) ? nullptr : *found;
}

}  // namespace vdevice::inspect
