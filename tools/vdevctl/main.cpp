// vdevctl: sends a command to a running virtual device and prints its answer. Which commands there are is the device's
// matter: it reads their arguments and options, makes their text and lists them for the help.
#include <argp.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>

#include "text/printable.h"
#include "tools/vdevctl/answer_text.h"
#include "tools/vdevctl/client.h"
#include "tools/vdevctl/explain.h"
#include "tools/vdevctl/options.h"
#include "tools/vdevctl/output.h"
#include "tools/vdevctl/state_diff.h"
#include "tools/vdevctl/stream.h"

namespace {

using nlohmann::json;
using vdevctl::Options;
using vdevctl::Words;

constexpr const char *kCapture = "capture";
constexpr const char *kExplain = "explain";
constexpr const char *kDiff = "--diff";

/** Whether the words ask for a comparison, whose exit status says more; also where they are wrong otherwise. */
bool is_comparison(int argc, char **argv) {
    return std::any_of(argv, argv + argc, [](const char *word) { return std::string_view{word}.starts_with(kDiff); });
}

/** Commands that print lines until they are interrupted. */
bool is_endless(const std::string &command) {
    return command == "watch" || command == "follow";
}

json request_for(const Words &words, bool as_json) {
    return {{"command", words.front()},
            {"arguments", Words(words.begin() + 1, words.end())},
            {"form", as_json ? "json" : "text"}};
}

std::string text_for(const std::string &run_dir, const Words &words) {
    return vdevctl::text_of(vdevice::ask_device(run_dir, request_for(words, false)));
}

std::string commands(const std::string &run_dir) {
    try {
        return "Commands:\n" + text_for(run_dir, {"help"});
    } catch (const std::runtime_error &error) {
        return "The device lists its commands, but vdevctl " + text::on_one_line(error.what()) + "\n";
    }
}

std::string versions(const std::string &run_dir) {
    std::string text = std::string{"vdevctl "} + vdevctl::kVersion + "\n";
    try {
        text += text_for(run_dir, {"version"});
    } catch (const std::runtime_error &) {
        text += "no device is running\n";
    }
    return text;
}

json reading_in(const std::string &file) {
    std::ifstream stream(file);
    if (!stream) {
        throw std::runtime_error{"cannot read " + file + ": " + std::generic_category().message(errno) + "."};
    }
    json reading = json::parse(stream, nullptr, false);
    if (!reading.is_object()) {
        throw std::runtime_error{"cannot compare with " + file + ": it is not a reading that --json printed."};
    }
    return reading;
}

json answer_to(const Options &options) {
    json request = request_for(options.words, options.json);
    if (options.words.front() == kExplain) {
        request = vdevctl::with_frame(options.run_dir, std::move(request));
    }
    if (options.rate) {
        request["since"] = vdevice::ask_device(options.run_dir, {{"command", options.words.front()}});
        request["per_second"] = true;
        std::this_thread::sleep_for(*options.rate);
    } else if (!options.since.empty()) {
        request["since"] = reading_in(options.since);
    }
    return vdevice::ask_device(options.run_dir, request);
}

std::string output(const Options &options) {
    if (options.help) {
        return commands(options.run_dir);
    }
    if (options.version) {
        return versions(options.run_dir);
    }
    const json answer = answer_to(options);
    return options.json ? vdevctl::json_text(answer) : vdevctl::text_of(answer);
}

void capture(const Options &options) {
    json request = request_for(options.words, true);
    const std::string file = vdevctl::take_operand(options.run_dir, request);
    if (file.empty()) {
        throw std::runtime_error{"a file is missing: 'vdevctl capture FILE', or - for standard output."};
    }
    vdevctl::capture(options.run_dir, request, options.limits, file);
}

}  // namespace

int main(int argc, char **argv) {
    const int failure = is_comparison(argc, argv) ? vdevctl::kCannotCompare : EXIT_FAILURE;
    argp_err_exit_status = failure;
    try {
        const Options options = vdevctl::parse_options(argc, argv);
        if (options.diff) {
            return vdevctl::compare_states(options);
        }
        const std::string command = options.words.empty() ? "" : options.words.front();
        if (is_endless(command)) {
            vdevctl::print_stream(options.run_dir, request_for(options.words, options.json), options.limits);
        } else if (command == kCapture) {
            capture(options);
        } else {
            vdevctl::print(output(options));
        }
        return EXIT_SUCCESS;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "vdevctl: %s\n", text::on_one_line(error.what()).c_str());
    } catch (...) {
        std::fputs("vdevctl: an unknown failure.\n", stderr);
    }
    return failure;
}
