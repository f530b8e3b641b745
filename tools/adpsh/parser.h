/**
 * @file parser.h
 * Parses one line of the shell's language: a function without state, I/O and knowledge of calls.
 *
 *     CALL argument...            argument = [NAME =] value
 *     value = WORD | "text" | [ value, ... ] | { argument, ... }
 *
 * Items inside brackets are separated by commas or blanks; '#' opens a comment where a token could begin.
 */
#pragma once

#include <stddef.h>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace adpsh {

struct Argument;

/** A value as written; its meaning depends on the parameter. */
struct Value {
    enum class Form { kWord, kText, kList, kBraces };
    Form form = Form::kWord;
    std::string text;             ///< the word, or the text without its quotes
    std::vector<Argument> items;  ///< what the brackets hold
};

/** A value, with a name when it was written NAME=VALUE. */
struct Argument {
    std::string name;
    Value value;
};

/** A parsed line; a blank one has an empty name. */
struct Command {
    std::string name;
    std::vector<Argument> arguments;
};

/** Why and where a line cannot be parsed. */
struct Error {
    std::string text;
    size_t column = 0;  ///< counts from 1
};

constexpr size_t kMaxLine = 512 * 1024;
constexpr size_t kMaxDepth = 16;

std::variant<Command, Error> parse_line(std::string_view line);

/** A value as it would be typed, for messages; long values are cut. */
std::string written(const Value &value);

}  // namespace adpsh
