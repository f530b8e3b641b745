// The list of subjects, and the help, which shows it.
#include <fmt/core.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "text/suggest.h"
#include "vdevice/inspect/subject.h"

namespace vdevice::inspect {

using nlohmann::json;

extern const Subject kPorts, kVlans, kMacs, kMcast, kLimits, kTrunks, kCounters, kLog, kEvents, kReserved, kMirrors,
    kGroups, kTranslations, kPriorities, kFields, kStorm, kMeters, kQueues, kGpio, kVersion, kMetrics, kCables, kCable,
    kPull, kPlug, kTrace, kClear, kWatch, kExplain, kFollow, kCapture, kState;

namespace {

json options_of(const Subject &subject) {
    json options = json::array();
    for (const Filter &filter : subject.filters) {
        options.push_back({{"name", filter.name}, {"value", filter.value}, {"help", filter.help}});
    }
    return options;
}

json row_of(const Subject &subject) {
    return {{"name", subject.name},
            {"arguments", subject.arguments},
            {"help", subject.help},
            {"options", options_of(subject)},
            {"counts", !subject.counts.empty()}};
}

json read_help(Device & /*device*/, const json &request) {
    if (const auto name = request.find("subject"); name != request.end()) {
        return {{"subjects", json::array({row_of(get(name->get<std::string>()))})}, {"of", *name}};
    }
    return list_subjects();
}

std::string show_row(const json &row) {
    const std::string usage = row["name"].get<std::string>() + " " + row["arguments"].get<std::string>();
    return fmt::format("  {:<26}  {}\n", usage, row["help"].get<std::string>());
}

std::string show_options(const json &row) {
    std::string text;
    for (const json &option : row["options"]) {
        const std::string usage = "--" + option["name"].get<std::string>() + " " + option["value"].get<std::string>();
        text += fmt::format("  {:<26}  {}\n", usage, option["help"].get<std::string>());
    }
    if (row["counts"].get<bool>()) {
        text += fmt::format("  {:<26}  {}\n", "--rate TIME", "the counts per second, over a time as 1s or 500ms");
        text += fmt::format("  {:<26}  {}\n", "--since FILE", "the counts since a reading that --json printed");
    }
    return text;
}

std::string show_help(const json &answer) {
    std::string text;
    for (const json &row : answer["subjects"]) {
        text += show_row(row) + (answer.contains("of") ? show_options(row) : "");
    }
    return text;
}

constexpr Subject kHelp{"help", "[SUBJECT]", "the commands with their arguments; of a SUBJECT, also its options",
                        read_help, show_help};

constexpr const Subject *kSubjects[] = {
    &kPorts,    &kVlans,   &kMacs,    &kMcast,        &kLimits,     &kTrunks, &kCounters, &kLog,    &kEvents,
    &kReserved, &kMirrors, &kGroups,  &kTranslations, &kPriorities, &kFields, &kStorm,    &kMeters, &kQueues,
    &kGpio,     &kState,   &kVersion, &kMetrics,      &kCables,     &kCable,  &kPull,     &kPlug,   &kTrace,
    &kClear,    &kWatch,   &kExplain, &kFollow,       &kCapture,    &kHelp,
};

}  // namespace

std::span<const Subject *const> subjects() {
    return kSubjects;
}

json list_subjects() {
    json rows = json::array();
    for (const Subject *subject : subjects()) {
        rows.push_back(row_of(*subject));
    }
    return {{"subjects", rows}};
}

const Subject *find(std::string_view name) {
    const auto *found = std::find_if(std::begin(kSubjects), std::end(kSubjects),
                                     [&](const Subject *subject) { return subject->name == name; });
    return found == std::end(kSubjects) ? nullptr : *found;
}

const Subject &get(std::string_view name) {
    if (const Subject *subject = find(name)) {
        return *subject;
    }
    std::vector<std::string_view> names;
    for (const Subject *subject : kSubjects) {
        names.emplace_back(subject->name);
    }
    const std::string question = text::did_you_mean(name, names, ", ");
    throw Refusal{"unknown command '" + std::string{name} + "'" +
                  (question.empty() ? ". The command 'help' lists them." : question)};
}

}  // namespace vdevice::inspect
