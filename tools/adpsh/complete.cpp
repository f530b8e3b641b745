// Completion: names of commands and calls, and behind a call what its next parameter takes.
#include "tools/adpsh/complete.h"

#include "calls/exported.h"
#include "tools/adpsh/builtins.h"
#include "tools/adpsh/device.h"
#include "tools/adpsh/parameter.h"
#include "tools/adpsh/parser.h"
#include "tools/adpsh/topics.h"

#include <adp/adp.h>

namespace adpsh {

namespace {

using Names = std::vector<std::string>;

template <typename Rows>
void add_names(const Rows &rows, Names &names) {
    for (const auto &row : rows) {
        names.emplace_back(row.name);
    }
}

void append(const Names &more, Names &names) {
    names.insert(names.end(), more.begin(), more.end());
}

/** What `help` knows. */
Names helped() {
    Names names;
    add_names(builtins(), names);
    add_names(topics(), names);
    add_names(exported::calls(), names);
    add_names(exported::tables(), names);
    add_names(exported::constants(), names);
    for (const exported::Structure &structure : exported::structures()) {
        names.emplace_back(structure.layout->name);
    }
    return names;
}

Names interfaces() {
    Names names;
    for (uint32_t group = 1; group <= ADP_AGG_GROUPS; ++group) {
        names.push_back("agg" + std::to_string(group));
    }
    return names;
}

/** Values for a parameter, as far as the headers or the device know them. */
Names values_for(const exported::Call &call, const calls::Param &parameter) {
    Names names;
    for (const exported::Constant *const constant : constants_of(call, parameter)) {
        names.emplace_back(constant->name);
    }
    if (parameter.element.is_interface) {
        append(interfaces(), names);
    }
    if (std::string_view(parameter.name).find("vid") != std::string_view::npos && names.empty()) {
        append(device_vlans(), names);
    }
    return names;
}

Names behind_call(const exported::Call &call, const Command &command, bool has_beginning) {
    size_t given = 0;
    for (const Argument &argument : command.arguments) {
        given += argument.name.empty() ? size_t{1} : size_t{0};
    }
    Names names;
    for (const calls::Param &parameter : call.params) {
        if (parameter.is_read() && given-- == 0) {
            names = values_for(call, parameter);
            break;
        }
    }
    if (names.empty() && has_beginning) {
        add_names(exported::constants(), names);
    }
    return names;
}

Names behind(const Command &command, bool has_beginning) {
    Names names;
    const bool is_first = command.arguments.empty();
    if (command.name == "help" || command.name == "?") {
        return is_first ? helped() : names;
    }
    if (command.name == "calls" || command.name == "show") {
        command.name == "calls" ? add_names(exported::calls(), names) : add_names(exported::tables(), names);
        return is_first ? names : Names();
    }
    if (command.name == "device") {
        return is_first ? device_subjects() : names;
    }
    if (command.name == "trace") {
        return is_first ? Names{"on", "off"} : names;
    }
    const exported::Call *const call = exported::find_call(command.name);
    return call == nullptr ? names : behind_call(*call, command, has_beginning);
}

/** Behind NAME=. */
Names behind_name(const Command &command, std::string_view name) {
    const exported::Call *const call = exported::find_call(command.name);
    if (call != nullptr) {
        for (const calls::Param &parameter : call->params) {
            if (name == parameter.name) {
                return values_for(*call, parameter);
            }
        }
    }
    return {};
}

/** NAME, if the text ends with NAME=. */
std::string_view name_before(std::string_view text) {
    if (text.empty() || text.back() != '=') {
        return {};
    }
    text.remove_suffix(1);
    return text.substr(text.find_last_of(" \t") + 1);
}

}  // namespace

std::vector<std::string> completions(std::string_view before, std::string_view beginning) {
    if (!before.empty() && before.back() == '|') {  // another flag of the same argument
        before = before.substr(0, before.find_last_of(" \t") + 1);
    }
    const std::string_view named = name_before(before);
    before.remove_suffix(named.empty() ? 0 : named.size() + 1);
    const auto parsed = parse_line(before);
    const Command *const command = std::get_if<Command>(&parsed);
    Names names;
    if (command == nullptr) {
        add_names(exported::constants(), names);  // inside brackets
    } else if (command->name.empty()) {
        add_names(builtins(), names);
        add_names(exported::calls(), names);
    } else {
        names = named.empty() ? behind(*command, !beginning.empty()) : behind_name(*command, named);
    }
    Names fitting;
    for (std::string &name : names) {
        if (std::string_view(name).substr(0, beginning.size()) == beginning) {
            fitting.push_back(std::move(name));
        }
    }
    return fitting;
}

}  // namespace adpsh
