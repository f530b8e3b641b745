// adpsh: a shell for the switch adaptation layer. It executes the library's calls by name.
#include "calls/exported.h"
#include "tools/adpsh/builtins.h"
#include "tools/adpsh/reader.h"
#include "tools/adpsh/session.h"
#include "vdevice/sockets/run_dir.h"

#include <argp.h>
#include <unistd.h>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>

namespace {

struct Options {
    adpsh::SessionOptions session;
    bool keep_going = false;
    bool map = false;
    std::string script;
    std::vector<std::string> commands;
    bool is_unquoted = false;  ///< the last of them was given in single words
};

enum Key : int { kJson = 1, kTrace, kKeepGoing, kScript, kCommand, kMap, kRunDir };

const argp_option kOptions[] = {
    {"json", kJson, nullptr, 0, "One JSON object for every executed line", 0},
    {"trace", kTrace, nullptr, 0, "Show the driver calls of each call", 0},
    {"keep-going", kKeepGoing, nullptr, 0, "Continue after a line that cannot be executed", 0},
    {"script", kScript, "FILE", 0, "Read the lines from a file", 0},
    {"command", kCommand, "LINE", 0, "Execute this line and those that follow it", 0},
    {"map", kMap, nullptr, 0, "Fill the port map for the default board first, as the line 'map' does", 0},
    {"run-dir", kRunDir, "DIR", 0, vdevice::kRunDirHelp, 0},
    {}};

constexpr char kHelp[] =
    "A shell for the switch adaptation layer: executes the library's calls by name.\v"
    "Lines that stand on the command line are executed; without them and --script the lines come from standard input. "
    "A "
    "script ends with status 1 at the first line "
    "that cannot be executed, whatever status the calls return, and at its end if an audit has found something. Try "
    "the "
    "line: help";

/**
 * Whether an argument is not a line of its own but belongs to the line before, whose quotes somebody forgot: what no
 * line begins with, a word that is no command, and a word behind a command that takes one.
 */
bool continues(const std::string &line, const std::string &argument) {
    const bool is_name = !argument.empty() && (std::isalpha(static_cast<unsigned char>(argument[0])) != 0 ||
                                               argument[0] == '_' || argument[0] == '#' || argument[0] == '?');
    if (!is_name) {
        return true;
    }
    if (argument.find_first_of(" \t") != std::string::npos) {
        return false;
    }
    const adpsh::Builtin *const before = adpsh::find_builtin(line);
    const bool is_command = adpsh::find_builtin(argument) != nullptr || exported::find_call(argument) != nullptr;
    return !is_command || (before != nullptr && !before->arguments.empty());
}

void take_line(Options &options, const std::string &argument) {
    if (options.is_unquoted && continues(options.commands.back(), argument)) {
        options.commands.back() += " " + argument;
    } else {
        options.commands.push_back(argument);
        options.is_unquoted = argument.find_first_of(" \t") == std::string::npos;
    }
}

error_t take_option(int key, char *argument, argp_state *state) {
    auto &options = *static_cast<Options *>(state->input);
    switch (key) {
        case kJson:
            options.session.json = true;
            return 0;
        case kTrace:
            options.session.trace = true;
            return 0;
        case kKeepGoing:
            options.keep_going = true;
            return 0;
        case kScript:
            options.script = argument;
            return 0;
        case kMap:
            options.map = true;
            return 0;
        case kRunDir:
            ::setenv("VDEVICE_DIR", argument, 1);  // where the driver library looks, too
            return 0;
        case ARGP_KEY_ARG:
            take_line(options, argument);
            return 0;
        case kCommand:
            options.is_unquoted = false;
            options.commands.emplace_back(argument);
            return 0;
        default:
            return ARGP_ERR_UNKNOWN;
    }
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
    session_options.at_terminal = at_terminal;
    adpsh::Session session(session_options);
    if (options.map) {
        adpsh::fill_map();
    }
    if (at_terminal && !session_options.json) {
        std::puts(adpsh::kHint.data());
    }
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
    return good && !session.has_failed() ? 0 : 1;
}

/** What the options' parser prints before it ends the program must have arrived, too. */
void check_output() {
    if (std::ferror(stdout) == 0 && std::fflush(stdout) != 0) {
        std::fprintf(stderr, "adpsh: cannot write to standard output: %s\n", std::strerror(errno));
        std::_Exit(1);
    }
}

}  // namespace

int main(int argc, char **argv) {
    std::atexit(check_output);
    argp_err_exit_status = 1;
    argp_program_version = "adpsh " ADPSH_VERSION;
    try {
        const argp parser = {kOptions, take_option, "[LINE...]", kHelp, nullptr, nullptr, nullptr};
        Options options;
        if (argp_parse(&parser, argc, argv, 0, nullptr, &options) != 0) {
            return 1;
        }
        return start(options);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "adpsh: %s\n", error.what());
        return 1;
    }
}
