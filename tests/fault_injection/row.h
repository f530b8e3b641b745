/**
 * @file row.h
 * The rows in the files of tests/fault_injection/rows: for each function its arguments and what must happen.
 *
 *     adp_double_tag_get $intf
 *         | given: user_port_dtag_mode_get.mode=3
 *         | port: user_port_dtag_mode_get 102 <mode=3>
 *         | other: 201
 *
 * A row begins in the first column; indented lines continue it. `define NAME = text` names a part of a plan.
 */
#pragma once

#include <stddef.h>
#include <istream>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace fault_injection {

struct Row {
    std::string where;    /**< file and line */
    std::string function; /**< the first word of the call */
    std::string call;     /**< the call as adpsh reads it, with $intf where the state's interface goes */
    std::map<std::string, std::string> clauses;

    [[nodiscard]] bool has(const std::string &clause) const { return clauses.count(clause) != 0; }
    /** The clause's text, empty if there is none. */
    [[nodiscard]] std::string clause(const std::string &name) const;
    [[nodiscard]] bool takes_interface() const;
    /** Whether the row is for a state: for any, unless the clause `in` names some. */
    [[nodiscard]] bool wants(const std::string &state) const;
};

struct Family {
    std::string name;
    std::vector<Row> rows;
    std::map<std::string, std::string> definitions;
};

/** The names of the files with rows, without their endings. */
std::vector<std::string> family_names();
/** Reads one file; throws std::runtime_error with the place of what cannot be read. */
Family read_family(const std::string &name);
/** Reads rows as they would stand in a file. */
Family parse_family(const std::string &name, std::istream &text);

/** The text without blanks at either end. */
std::string trimmed(std::string_view text);
/** The pieces between separators that stand outside all brackets, trimmed, without empty ones. */
std::vector<std::string> split(std::string_view text, char separator);
/** The position of the bracket that closes the one at @p open; throws std::runtime_error when there is none. */
size_t closing(std::string_view text, size_t open);

}  // namespace fault_injection
