// What vdevctl prints.
#pragma once

#include <string>

namespace vdevctl {

/**
 * Prints on standard output; throws a std::runtime_error with a sentence if that fails. A reader that has gone away
 * ends the program without a word.
 */
void print(const std::string &text);

}  // namespace vdevctl
