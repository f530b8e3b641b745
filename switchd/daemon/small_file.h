// Files of a few lines in the run folder, which tell the next daemon what a killed one knew.
#pragma once

#include <string>

namespace switchd {

/** Empty if there is no such file, or one that is larger than any of these. */
std::string text_in(const std::string &path);
/** Replaces the file as a whole; one that cannot be written is removed, so that nobody reads what is no longer so. */
void write_text(const std::string &path, const std::string &text);

}  // namespace switchd
