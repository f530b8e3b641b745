// Options are rows of a table.
#include "tools/adptrace/replay/options.h"

#include <charconv>
#include <string_view>

#include "text/suggest.h"
#include "tools/adptrace/command.h"

namespace adptrace::replay {

const char *const kHelp =
    "      --library=FILE         This libadp, instead of the one that is found by its name\n"
    "      --driver=FILE          This driver, instead of the virtual device's; again for the services\n"
    "      --driver=recorded      No driver: the recording gives its answers\n"
    "      --driver-only          Makes the calls of driver and services, and none of the library: a new device comes "
    "to\n"
    "                             the state of the recorded one. It goes on at differences, and shows the first\n"
    "      --keep-going           Goes on at differences, and shows all\n"
    "      --crash                Makes a call that had not returned, too\n"
    "      --send-frames          Sends the frames that the library sends; otherwise it is told that they are sent\n"
    "      --process=ID           Of this process, instead of the first\n"
    "      --until=LINE           Calls that began up to this line of the recording\n"
    "      --until-call=NUMBER    Up to this call\n"
    "\nFILE is - for standard input. The exit status is 0 if nothing differs, 1 if something does, 2 for other "
    "trouble.\n";

namespace {

constexpr std::string_view kRecorded = "recorded";

using Setter = void (*)(CommandLine &, const std::string &);

struct Option {
    std::string_view name;
    std::string_view value; /**< what it takes, empty for nothing */
    Setter set;
};

uint64_t natural_of(const std::string &word) {
    uint64_t number = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error != std::errc{} || end != word.data() + word.size() || number == 0) {
        throw Refusal("'" + word + "' is no number from 1 on.");
    }
    return number;
}

void add_driver(CommandLine &line, const std::string &file) {
    if (file == kRecorded) {
        line.is_driver_recorded = true;
    } else {
        line.drivers.push_back(file);
    }
}

constexpr Option kOptions[] = {
    {"--library", "FILE", [](CommandLine &line, const std::string &word) { line.library = word; }},
    {"--driver", "FILE", add_driver},
    {"--driver-only", "", [](CommandLine &line, const std::string &) { line.is_driver_only = true; }},
    {"--keep-going", "", [](CommandLine &line, const std::string &) { line.is_to_keep_going = true; }},
    {"--crash", "", [](CommandLine &line, const std::string &) { line.is_to_crash = true; }},
    {"--send-frames", "", [](CommandLine &line, const std::string &) { line.is_to_send_frames = true; }},
    {"--process", "ID", [](CommandLine &line, const std::string &word) { line.process = natural_of(word); }},
    {"--until", "LINE", [](CommandLine &line, const std::string &word) { line.until_line = natural_of(word); }},
    {"--until-call", "NUMBER", [](CommandLine &line, const std::string &word) { line.until_call = natural_of(word); }}};

const Option &option_named(const std::string &name) {
    std::vector<std::string_view> names;
    for (const Option &option : kOptions) {
        if (option.name == name) {
            return option;
        }
        names.push_back(option.name);
    }
    throw Refusal("there is no option " + name + text::did_you_mean(name, names) + "; --help lists them.");
}

/** @return how many words it took */
size_t read_option(CommandLine &line, std::span<const std::string> words) {
    const size_t equals = words[0].find('=');
    const Option &option = option_named(words[0].substr(0, equals));
    const bool has_value = equals != std::string::npos;
    if (option.value.empty() && has_value) {
        throw Refusal(std::string(option.name) + " takes no value.");
    }
    if (option.value.empty() || has_value) {
        option.set(line, has_value ? words[0].substr(equals + 1) : std::string());
        return 1;
    }
    if (words.size() == 1) {
        throw Refusal(std::string(option.name) + " needs " + std::string(option.value) + ".");
    }
    option.set(line, words[1]);
    return 2;
}

void check(const CommandLine &line) {
    if (line.file.empty()) {
        throw Refusal("it needs the FILE of a recording, or - for standard input.");
    }
    if (line.is_driver_recorded && (line.is_driver_only || !line.drivers.empty())) {
        throw Refusal("--driver=recorded means no driver, so it does not go with --driver-only or another driver.");
    }
    if (line.until_line && line.until_call) {
        throw Refusal("--until and --until-call do not go together.");
    }
}

}  // namespace

CommandLine command_line_of(std::span<const std::string> words) {
    CommandLine line;
    while (!words.empty()) {
        const std::string &word = words[0];
        if (word != "-" && word.starts_with('-')) {
            words = words.subspan(read_option(line, words));
            continue;
        }
        if (!line.file.empty()) {
            throw Refusal("it takes one FILE, not '" + line.file + "' and '" + word + "'.");
        }
        line.file = word;
        words = words.subspan(1);
    }
    check(line);
    return line;
}

}  // namespace adptrace::replay
