// The port map in the recording.
#pragma once

#include <string>

namespace adptrace::record {

struct Process;

/** Before a call: writes the map if there is one and none was written. @p line is memory for it. */
void write_first_board(Process &process, std::string &line);

/** After a call: writes the map if it is another one than that which was written last. */
void write_changed_board(Process &process, std::string &line);

/** In the child of a fork. */
void forget_board();

}  // namespace adptrace::record
