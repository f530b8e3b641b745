/**
 * @file builtins.h
 * The shell's own commands.
 */
#pragma once

#include "tools/adpsh/parser.h"
#include "tools/adpsh/report.h"

#include <span>
#include <string_view>

namespace adpsh {

class Session;

struct Builtin {
    std::string_view name;
    std::string_view arguments;
    std::string_view help;
    Answer (*run)(Session &session, const Command &command);  ///< null for echo, which takes the line unparsed
};

std::span<const Builtin> builtins();
const Builtin *find_builtin(std::string_view name);

// Implemented in files of their own.
Answer run_help(Session &session, const Command &command);
Answer run_calls(Session &session, const Command &command);
Answer run_show(Session &session, const Command &command);
Answer run_audit(Session &session, const Command &command);
Answer run_device(Session &session, const Command &command);

/** Fills the port map for the default board. Throws a LineError. */
void fill_map();

/** The words after a command, at most so many. Throws a LineError for more, or for anything else. */
std::vector<std::string> words_of(const Command &command, size_t most);

}  // namespace adpsh
