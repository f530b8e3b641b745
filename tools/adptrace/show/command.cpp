// The commands `show` and `stat`. What they print goes out line by line: a reader that has seen enough ends them
// quietly.
#include "tools/adptrace/command.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

#include "tools/adptrace/recording/recording.h"
#include "tools/adptrace/show/options.h"
#include "tools/adptrace/show/show_parts.h"
#include "tools/adptrace/show/timeline.h"

namespace adptrace {
namespace {

bool has_coloured_terminal() {
    const char *const terminal = std::getenv("TERM");
    const char *const no_colour = std::getenv("NO_COLOR");
    return isatty(STDOUT_FILENO) == 1 && terminal != nullptr && std::string_view(terminal) != "dumb" &&
           (no_colour == nullptr || *no_colour == '\0');
}

/** A reader that has seen enough is no failure, also where SIGPIPE is ignored. */
[[noreturn]] void end_for_want_of_output() {
    if (errno == EPIPE) {
        std::_Exit(EXIT_SUCCESS);
    }
    throw Refusal(std::string("the output cannot be written: ") + std::strerror(errno) + ".");
}

void print(const std::string &text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) {
        end_for_want_of_output();
    }
}

int finish() {
    if (std::fflush(stdout) != 0) {
        end_for_want_of_output();
    }
    return EXIT_SUCCESS;
}

void write_file(const std::string &name, const std::string &text) {
    std::FILE *const file = std::fopen(name.c_str(), "we");
    const bool is_written = file != nullptr && std::fwrite(text.data(), 1, text.size(), file) == text.size();
    const bool is_closed = file != nullptr && std::fclose(file) == 0;
    if (!is_written || !is_closed) {
        throw Refusal(name + " cannot be written: " + std::strerror(errno) + ".");
    }
}

int run_show(std::span<const std::string> arguments) {
    Options options = show_options(arguments);
    options.show.style.has_colours = has_coloured_terminal();
    if (is_in_parts(options)) {
        show_parts(options, {print, [] { finish(); }});
        return finish();
    }
    const Recording recording = Recording::of_file(options.file);
    if (!options.timeline.empty()) {
        const Timeline timeline = timeline_of(recording, options.show.filter);
        write_file(options.timeline, timeline.svg);
        print(options.timeline + ": " + timeline.summary + "\n");
        return finish();
    }
    show(recording, options.show, print);
    return finish();
}

int run_stat(std::span<const std::string> arguments) {
    const Options options = stat_options(arguments);
    const Recording recording = Recording::of_file(options.file);
    print((options.is_json ? stat_json : stat_text)(recording, options.show.filter, options.order));
    return finish();
}

}  // namespace

extern const Command kShow = {"show", "[OPTION...] FILE", "Shows a recording, a line a call, or draws it", kShowHelp,
                              run_show};
extern const Command kStat = {"stat", "[OPTION...] FILE", "Counts calls, their errors, time and driver calls",
                              kStatHelp, run_stat};

}  // namespace adptrace
