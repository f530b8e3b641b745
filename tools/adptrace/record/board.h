// The port map in the recording.
#pragma once

#include <string>

namespace adptrace {

struct Process;

/** Writes the map if there is one and it is another one than the last that was written. @p line is memory for it. */
void write_changed_board(Process &process, std::string &line);

/** In the child of a fork. */
void forget_board();

}  // namespace adptrace
