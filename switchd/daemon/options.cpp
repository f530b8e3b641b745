// Options of the daemon and of its client, which is the same program.
#include "switchd/daemon/options.h"

#include <argp.h>
#include <unistd.h>

#include <cstdlib>

#include "switchd/daemon/commands.h"
#include "switchd/daemon/status_text.h"
#include "vdevice/io/error.h"

namespace switchd {
namespace {

enum Key : int { kRunDir = 1, kConfig, kCheck, kLogLevel, kJson };

const argp_option kOptions[] = {
    {"config", kConfig, "FILE", 0,
     "configuration file, read again on SIGHUP; by default /etc/adp/switchd.toml, if it is there", 0},
    {"run-dir", kRunDir, "DIR", 0,
     "folder of the control socket; by default what the file says, $ADP_SWITCHD_DIR or /run/adp-switchd", 0},
    {"log-level", kLogLevel, "LEVEL", 0, "error, warning, notice or info; by default notice", 0},
    {"check", kCheck, nullptr, 0, "check the configuration file and end", 0},
    {"json", kJson, nullptr, 0, "a command's answer in JSON", 0},
    {}};

std::string documentation() {
    return "adp-switchd: Linux interfaces for the ports of a switch, and the kernel's bridges in its hardware. Without "
           "a "
           "command it is the daemon, in the foreground; with one it asks the running daemon.\vCommands:\n" +
           command_lines() + "\nSubjects of status: " + subject_names() + ".";
}

void set_level(Options &options, const char *text, const argp_state *state) {
    options.log_level = vdevice::log_level_named(text);
    if (!options.log_level) {
        argp_error(state, "the log level is %s, not '%s'", vdevice::kLogLevelHelp, text);
    }
}

/** What the words and options mean together. */
void check_options(const Options &options, const argp_state *state) {
    if (options.words.empty()) {
        if (options.json) {
            argp_error(state, "--json is for a command: 'adp-switchd status --json'");
        }
        return;
    }
    try {
        command_of(options.words.front(), options.words.size() - 1);
    } catch (const vdevice::io::Error &error) {
        argp_error(state, "%s", error.what());
    }
    if (!options.file.empty() || options.check || options.log_level) {
        argp_error(state, "--config, --check and --log-level are for the daemon, without a command");
    }
}

error_t take_option(int key, char *argument, argp_state *state) {
    auto &options = *static_cast<Options *>(state->input);
    switch (key) {
        case kRunDir:
            options.run_dir = argument;
            return 0;
        case kConfig:
            options.file = argument;
            return 0;
        case kCheck:
            options.check = true;
            return 0;
        case kLogLevel:
            set_level(options, argument, state);
            return 0;
        case kJson:
            options.json = true;
            return 0;
        case ARGP_KEY_ARG:
            options.words.emplace_back(argument);
            return 0;
        case ARGP_KEY_END:
            check_options(options, state);
            return 0;
        default:
            return ARGP_ERR_UNKNOWN;
    }
}

}  // namespace

std::string default_run_dir() {
    const char *given = secure_getenv(kRunDirVariable);
    return given != nullptr && *given != '\0' ? given : "/run/adp-switchd";
}

Options parse_options(int argc, char **argv) {
    argp_program_version = "adp-switchd " ADP_SWITCHD_VERSION;
    const std::string text = documentation();
    const argp parser = {kOptions, take_option, "[COMMAND [ARGUMENT...]]", text.c_str(), nullptr, nullptr, nullptr};
    Options options;
    if (argp_parse(&parser, argc, argv, 0, nullptr, &options) != 0) {
        exit(EXIT_FAILURE);
    }
    // A file that is named must be there; the default one need not.
    if (options.words.empty() && options.file.empty() && (options.check || access(kDefaultFile, F_OK) == 0)) {
        options.file = kDefaultFile;
    }
    return options;
}

}  // namespace switchd
