// What a replay is asked for.
#include "tools/adptrace/replay/options.h"

#include <string_view>

#include "tools/adptrace/command.h"
#include "tools/adptrace/options.h"

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

void add_driver(CommandLine &line, const std::string &file) {
    if (file == kRecorded) {
        line.is_driver_recorded = true;
    } else {
        line.drivers.push_back(file);
    }
}

void check(const CommandLine &line) {
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
    using Word = const std::string &;
    const Option options[] = {{"--library", "FILE", [&](Word word) { line.library = word; }},
                              {"--driver", "FILE", [&](Word word) { add_driver(line, word); }},
                              {"--driver-only", "", [&](Word) { line.is_driver_only = true; }},
                              {"--keep-going", "", [&](Word) { line.is_to_keep_going = true; }},
                              {"--crash", "", [&](Word) { line.is_to_crash = true; }},
                              {"--send-frames", "", [&](Word) { line.is_to_send_frames = true; }},
                              {"--process", "ID", [&](Word word) { line.process = natural_of(word); }},
                              {"--until", "LINE", [&](Word word) { line.until_line = natural_of(word); }},
                              {"--until-call", "NUMBER", [&](Word word) { line.until_call = natural_of(word); }}};
    line.file = only_file(read_options(words, options));
    check(line);
    return line;
}

}  // namespace adptrace::replay
