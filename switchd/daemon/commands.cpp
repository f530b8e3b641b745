// Looks commands up.
#include "switchd/daemon/commands.h"

#include <algorithm>
#include <iterator>

#include "text/printable.h"
#include "text/suggest.h"
#include "vdevice/io/error.h"

namespace switchd {
namespace {

using vdevice::io::Error;

std::string unknown(std::string_view name) {
    constexpr size_t kShown = 32;
    std::vector<std::string_view> names;
    std::transform(std::begin(kCommands), std::end(kCommands), std::back_inserter(names),
                   [](const Command &command) { return command.name; });
    const std::string question = text::did_you_mean(name, names, ", ");
    return "unknown command '" + text::on_one_line(name.substr(0, kShown)) + "'" +
           (question.empty() ? "; 'adp-switchd --help' lists them." : question);
}

std::string usage(const Command &command) {
    return std::string{command.name} + (*command.arguments == '\0' ? "" : " ") + command.arguments;
}

}  // namespace

const Command &command_of(std::string_view name, size_t arguments) {
    const auto *const found = std::find_if(std::begin(kCommands), std::end(kCommands),
                                           [&](const Command &command) { return command.name == name; });
    if (found == std::end(kCommands)) {
        throw Error{unknown(name)};
    }
    if (arguments < found->least || arguments > found->most) {
        throw Error{std::string{arguments < found->least ? "an argument is missing" : "too many arguments"} +
                    ": 'adp-switchd " + usage(*found) + "'."};
    }
    return *found;
}

std::string command_lines() {
    constexpr size_t kColumn = 28;
    std::string lines;
    for (const Command &command : kCommands) {
        std::string line = "    " + usage(command);
        line.resize(std::max(line.size() + 1, kColumn), ' ');
        lines += line + command.help + "\n";
    }
    return lines;
}

}  // namespace switchd
