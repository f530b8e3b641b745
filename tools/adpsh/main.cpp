// adpsh: a shell for the switch adaptation layer. It executes the library's calls by name.
#include "tools/adpsh/reader.h"
#include "tools/adpsh/session.h"

#include <CLI/CLI.hpp>

#include <unistd.h>
#include <cstdio>
#include <fstream>
#include <iostream>

namespace {

struct Options {
    adpsh::SessionOptions session;
    bool keep_going = false;
    std::string script;
    std::vector<std::string> commands;
};

void describe(CLI::App &app, Options &options) {
    app.add_flag("--json", options.session.json, "One JSON object for every executed line");
    app.add_flag("--trace", options.session.trace, "Show the driver calls of each call");
    app.add_flag("--keep-going", options.keep_going, "Continue after a line that cannot be executed");
    app.add_option("--script", options.script, "Read the lines from a file")->option_text("FILE");
    app.add_option("--command", options.commands, "Execute these lines")->option_text("LINE ...");
    app.footer(
        "Without --script and --command the lines come from standard input. A script ends with status 1 at the\n"
        "first line that cannot be executed, whatever status the calls return. Try the line: help");
}

bool run(adpsh::Session &session, adpsh::Reader &reader, bool keep_going) {
    bool all_executed = true;
    while (!session.is_over()) {
        const std::optional<std::string> line = reader.next();
        if (!line) {
            break;
        }
        if (!session.run(*line)) {
            all_executed = false;
            if (!keep_going) {
                break;
            }
        }
    }
    return all_executed || keep_going;
}

int start(const Options &options) {
    const bool at_terminal = options.script.empty() && options.commands.empty() && ::isatty(STDIN_FILENO) == 1;
    adpsh::SessionOptions session_options = options.session;
    session_options.numbered = !at_terminal;
    adpsh::Session session(session_options);
    bool good = true;
    if (!options.commands.empty()) {
        good = run(session, *adpsh::list_reader(options.commands), options.keep_going);
    }
    if (good && !options.script.empty()) {
        std::ifstream script(options.script);
        if (!script) {
            std::fprintf(stderr, "adpsh: cannot read %s\n", options.script.c_str());
            return 1;
        }
        good = run(session, *adpsh::stream_reader(script), options.keep_going);
    }
    if (options.commands.empty() && options.script.empty()) {
        const auto reader = at_terminal ? adpsh::terminal_reader() : adpsh::stream_reader(std::cin);
        good = run(session, *reader, options.keep_going || at_terminal);
    }
    return good ? 0 : 1;
}

}  // namespace

int main(int argc, char **argv) {
    try {
        CLI::App app{"A shell for the switch adaptation layer: executes the library's calls by name."};
        Options options;
        describe(app, options);
        CLI11_PARSE(app, argc, argv);
        return start(options);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "adpsh: %s\n", error.what());
        return 1;
    }
}
