// vdevctl: sends a command to a running virtual device and prints its answer. Which commands there are is the device's
// matter: it reads their arguments, makes their text and lists them for the help.
#include <CLI/CLI.hpp>
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

int run_program(int argc, char **argv) {
    Options options;
    CLI::App app{"vdevctl: looks into a running virtual device and moves its cables."};
    app.add_option("--run-dir", options.run_dir, "folder of the device's sockets (VDEVICE_DIR)")->capture_default_str();
    app.add_flag("--json", options.json, "answer in JSON");
    app.add_option("COMMAND", options.words, "a command of the device, and its arguments")->required();
    app.failure_message([](const CLI::App *, const CLI::Error &error) {
        return "vdevctl: " + std::string{error.what()} + ". Run it with --help to see what it takes.\n";
    });
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp &) {
        std::cout << app.help() << commands(options.run_dir);
        return EXIT_SUCCESS;
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    const nlohmann::json answer = ask(options.run_dir, options.words, options.json ? "json" : "text");
    std::cout << (options.json ? answer.dump(2) + "\n" : text_of(answer));
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char **argv) {
    try {
        return run_program(argc, argv);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "vdevctl: %s\n", error.what());
    } catch (...) {
        std::fputs("vdevctl: an unknown failure.\n", stderr);
    }
    return EXIT_FAILURE;
}
