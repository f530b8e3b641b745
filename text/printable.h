// Texts of other programs, made fit to be shown.
#pragma once

#include <string>
#include <string_view>

namespace text {

/**
 * A text on one line: control characters, invisible ones and octets that are not UTF-8 are written as "\n" or "\x1b".
 * A backslash is written as "\\", so that no text can be mistaken for another.
 */
std::string on_one_line(std::string_view text);

/** The lines of a whole answer, without anything that a terminal would obey; backslashes stay as they are. */
std::string printable_lines(std::string_view text);

}  // namespace text
