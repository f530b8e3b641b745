// Options of vdevctl itself, which may stand before the command and behind it; all others are the device's.
#include "tools/vdevctl/options.h"

#include <argp.h>

#include <charconv>
#include <cstdlib>
#include <string_view>

namespace vdevctl {

const char *const kVersion = VDEVCTL_VERSION;

namespace {

enum Key : int { kRunDir = 1, kJson, kHelp, kVersionKey, kRate, kSince, kDiff, kCount, kFor };

const argp_option kOptions[] = {
    {"run-dir", kRunDir, "DIR", 0, vdevice::kRunDirHelp, 0},
    {"json", kJson, nullptr, 0, "answer in JSON", 0},
    {"rate", kRate, "TIME", 0, "the counts per second, from two readings so far apart: 1s, 500ms, 2m", 0},
    {"since", kSince, "FILE", 0, "the counts since an earlier reading, which --json printed to FILE", 0},
    {"diff", kDiff, "FILE", 0,
     "state: what differs between the state that --json printed to FILE and the device, or a second FILE", 0},
    {"count", kCount, "N", 0, "watch, follow, capture: end after so many lines or frames", 0},
    {"for", kFor, "TIME", 0, "watch, follow, capture: end after so long: 10s, 500ms, 2m", 0},
    {"help", kHelp, nullptr, 0, "this text, and the commands of the device", 0},
    {"version", kVersionKey, nullptr, 0, "the versions of vdevctl and of the device, if one runs", 0},
    {}};

struct Unit {
    std::string_view name;
    int64_t milliseconds;
};

constexpr Unit kUnits[] = {{"s", 1000}, {"", 1000}, {"ms", 1}, {"m", 60000}};
constexpr int64_t kMaxRate = 3600000;

std::optional<std::chrono::milliseconds> time_of(std::string_view text) {
    int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const std::string_view unit = text.substr(static_cast<size_t>(end - text.data()));
    for (const Unit &known : kUnits) {
        if (error == std::errc{} && unit == known.name && number > 0 && number <= kMaxRate / known.milliseconds) {
            return std::chrono::milliseconds{number * known.milliseconds};
        }
    }
    return std::nullopt;
}

std::chrono::milliseconds read_time(const argp_state *state, const char *option, const char *text) {
    const auto time = time_of(text);
    if (!time) {
        argp_error(state, "--%s takes a time from 1ms to 60m, not '%s'", option, text);
    }
    return *time;
}

uint64_t read_count(const argp_state *state, std::string_view text) {
    uint64_t count = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    if (error != std::errc{} || end != text.data() + text.size()) {
        argp_error(state, "--count takes a number, not '%s'", text.data());
    }
    return count;
}

void set_option(Options &options, int key, const char *argument, const argp_state *state) {
    switch (key) {
        case kRunDir:
            options.run_dir = argument;
            break;
        case kJson:
            options.json = true;
            break;
        case kHelp:
            options.help = true;
            break;
        case kVersionKey:
            options.version = true;
            break;
        case kSince:
            options.since = argument;
            break;
        case kDiff:
            options.diff = argument;
            break;
        case kRate:
            options.rate = read_time(state, "rate", argument);
            break;
        case kFor:
            options.limits.time = read_time(state, "for", argument);
            break;
        case kCount:
            options.limits.count = read_count(state, argument);
            break;
        default:
            break;
    }
}

/** The command 'cable' has an option --rate of its own, which the device reads. */
bool is_of_command(const Options &options, int key) {
    return key == kRate && options.words.front() == "cable";
}

/** Takes an option of vdevctl that stands behind the command, "--rate 1s" or "--rate=1s"; false for any other word. */
bool take_own_option(Options &options, argp_state *state) {
    const std::string_view word = state->argv[state->next];
    const size_t equals = word.find('=');
    for (const argp_option *option = kOptions; option->name != nullptr; ++option) {
        if (word.substr(0, equals) != std::string("--") + option->name || is_of_command(options, option->key)) {
            continue;
        }
        const char *argument = equals == std::string_view::npos ? nullptr : word.data() + equals + 1;
        if (option->arg != nullptr && argument == nullptr) {
            if (++state->next == state->argc) {
                argp_error(state, "option '%s' requires an argument", word.data());
            }
            argument = state->argv[state->next];
        } else if (option->arg == nullptr && argument != nullptr) {
            argp_error(state, "option '--%s' doesn't allow an argument", option->name);
        }
        set_option(options, option->key, argument, state);
        return true;
    }
    return false;
}

/** The command; what follows is its own, also a negative number, unless it is an option of vdevctl. */
void take_command(Options &options, const char *command, argp_state *state) {
    options.words.emplace_back(command);
    for (; state->next < state->argc; ++state->next) {
        if (!take_own_option(options, state)) {
            options.words.emplace_back(state->argv[state->next]);
        }
    }
}

error_t take_option(int key, char *argument, argp_state *state) {
    auto &options = *static_cast<Options *>(state->input);
    switch (key) {
        case kRunDir:
        case kJson:
        case kHelp:
        case kVersionKey:
        case kRate:
        case kSince:
        case kDiff:
        case kCount:
        case kFor:
            set_option(options, key, argument, state);
            return 0;
        case ARGP_KEY_ARG:
            take_command(options, argument, state);
            return 0;
        case ARGP_KEY_END:
            if (options.help) {  // only now is the run folder known
                argp_state_help(state, stdout, ARGP_HELP_LONG | ARGP_HELP_USAGE | ARGP_HELP_DOC);
            } else if (options.words.empty() && !options.version) {
                argp_error(state, "a command is missing");
            } else if (options.rate && !options.since.empty()) {
                argp_error(state, "--rate and --since exclude each other");
            }
            return 0;
        default:
            return ARGP_ERR_UNKNOWN;
    }
}

}  // namespace

Options parse_options(int argc, char **argv) {
    const argp parser = {kOptions,
                         take_option,
                         "COMMAND [ARGUMENT...] [OPTION...]",
                         "vdevctl: looks into a running virtual device and moves its cables.\v"
                         "'vdevctl help COMMAND' shows the options of a command.",
                         nullptr,
                         nullptr,
                         nullptr};
    Options options;
    if (argp_parse(&parser, argc, argv, ARGP_NO_HELP | ARGP_IN_ORDER, nullptr, &options) != 0) {
        exit(EXIT_FAILURE);
    }
    return options;
}

}  // namespace vdevctl
