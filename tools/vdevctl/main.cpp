// vdevctl: sends a command to a running virtual device and prints its answer. Which commands there are is the device's
// matter: it reads their arguments, makes their text and lists them for the help.
#include <argp.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tools/vdevctl/client.h"
#include "vdevice/sockets/run_dir.h"

namespace {

using Words = std::vector<std::string>;

struct Options {
    std::string run_dir = vdevice::default_run_dir();
    bool json = false;
    bool help = false;
    Words words;
};

nlohmann::json ask(const std::string &run_dir, const Words &words, const char *form) {
    return vdevice::ask_device(
        run_dir, {{"command", words.front()}, {"arguments", Words(words.begin() + 1, words.end())}, {"form", form}});
}

std::string text_of(const nlohmann::json &answer) {
    const auto text = answer.find("text");
    if (text == answer.end() || !text->is_string()) {
        throw std::runtime_error{"the device gave an answer without a text. Is it of another version?"};
    }
    return text->get<std::string>();
}

std::string commands(const std::string &run_dir) {
    try {
        return "Commands:\n" + text_of(ask(run_dir, {"help"}, "text"));
    } catch (const std::runtime_error &error) {
        return std::string{"The device lists its commands, but vdevctl "} + error.what() + "\n";
    }
}

enum Key : int { kRunDir = 1, kJson, kHelp };

const argp_option kOptions[] = {{"run-dir", kRunDir, "DIR", 0, vdevice::kRunDirHelp, 0},
                                {"json", kJson, nullptr, 0, "answer in JSON", 0},
                                {"help", kHelp, nullptr, 0, "this text, and the commands of the device", 0},
                                {}};

void take_word(Options &options, const std::string &word) {
    if (word == "--json") {
        options.json = true;
    } else {
        options.words.push_back(word);
    }
}

error_t take_option(int key, char *argument, argp_state *state) {
    auto &options = *static_cast<Options *>(state->input);
    switch (key) {
        case kRunDir:
            options.run_dir = argument;
            return 0;
        case kJson:
            options.json = true;
            return 0;
        case kHelp:
            options.help = true;
            return 0;
        case ARGP_KEY_ARG:  // the command; what follows is its own, also a negative number
            options.words.emplace_back(argument);
            for (; state->next < state->argc; ++state->next) {
                take_word(options, state->argv[state->next]);
            }
            return 0;
        case ARGP_KEY_END:
            if (options.help) {  // only now is the run folder known
                argp_state_help(state, stdout, ARGP_HELP_LONG | ARGP_HELP_USAGE | ARGP_HELP_DOC);
            } else if (options.words.empty()) {
                argp_error(state, "a command is missing");
            }
            return 0;
        default:
            return ARGP_ERR_UNKNOWN;
    }
}

int run_program(int argc, char **argv) {
    const argp parser = {kOptions,
                         take_option,
                         "COMMAND [ARGUMENT...]",
                         "vdevctl: looks into a running virtual device and moves its cables.",
                         nullptr,
                         nullptr,
                         nullptr};
    Options options;
    if (argp_parse(&parser, argc, argv, ARGP_NO_HELP | ARGP_IN_ORDER, nullptr, &options) != 0) {
        return EXIT_FAILURE;
    }
    if (options.help) {
        std::cout << commands(options.run_dir);
        return EXIT_SUCCESS;
    }
    const nlohmann::json answer = ask(options.run_dir, options.words, options.json ? "json" : "text");
    std::cout << (options.json ? answer.dump(2) + "\n" : text_of(answer));
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char **argv) {
    argp_err_exit_status = EXIT_FAILURE;
    try {
        return run_program(argc, argv);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "vdevctl: %s\n", error.what());
    } catch (...) {
        std::fputs("vdevctl: an unknown failure.\n", stderr);
    }
    return EXIT_FAILURE;
}
