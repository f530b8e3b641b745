// adptrace: the list of its commands, and their help.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "text/printable.h"
#include "text/suggest.h"
#include "tools/adptrace/command.h"

namespace {

using adptrace::Command;

constexpr int kTrouble = 2;
constexpr const Command *kCommands[] = {&adptrace::kRecord, &adptrace::kShow, &adptrace::kStat,
                                        &adptrace::kReplay, &adptrace::kDiff, &adptrace::kReduce};

int usage() {
    std::printf(
        "Usage: adptrace COMMAND [ARGUMENT...]\n"
        "adptrace: Records which calls a program makes of libadp, and which libadp makes of the driver; shows, "
        "replays and compares recordings.\n\n"
        "  -h, --help                 Print this, or with a command its options\n"
        "      --version              Print the version\n\n"
        "Commands:\n");
    for (const Command *command : kCommands) {
        std::printf("    %-8s  %s\n", command->name, command->help);
    }
    return EXIT_SUCCESS;
}

int help_of(const Command &command) {
    std::printf("Usage: adptrace %s %s\n%s\n\n%s", command.name, command.arguments, command.help, command.options);
    return EXIT_SUCCESS;
}

const Command &command_named(const std::string &name) {
    std::vector<std::string_view> names;
    for (const Command *command : kCommands) {
        if (name == command->name) {
            return *command;
        }
        names.emplace_back(command->name);
    }
    throw adptrace::Refusal("there is no command '" + name + "'" + text::did_you_mean(name, names) +
                            "; adptrace --help lists them.");
}

int run(const std::vector<std::string> &words) {
    if (words.empty()) {
        usage();
        return kTrouble;
    }
    if (words[0] == "--help" || words[0] == "-h" || words[0] == "help") {
        return usage();
    }
    if (words[0] == "--version") {
        std::printf("adptrace %s\n", ADPTRACE_VERSION);
        return EXIT_SUCCESS;
    }
    const Command &command = command_named(words[0]);
    if (words.size() > 1 && (words[1] == "--help" || words[1] == "-h")) {
        return help_of(command);
    }
    return command.run(std::span(words).subspan(1));
}

}  // namespace

int main(int argc, char **argv) {
    try {
        return run(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const std::exception &error) {
        std::fprintf(stderr, "adptrace: %s\n", text::on_one_line(error.what()).c_str());
        return kTrouble;
    }
}
