// What every daemon asks of its process at the start.
#pragma once

#include "vdevice/sockets/unique_fd.h"

namespace vdevice {

/**
 * Makes the signals that end a daemon arrive as events (signalfd(2)), and ignores the signal of broken sockets. SIGHUP
 * is among them; without @p has_file not if it is ignored: under 'nohup' a daemon outlives its terminal, as one with a
 * file to read again does anyway. Throws an io::Error.
 */
UniqueFd open_signals(bool has_file);

/** Each client, port and timer needs a descriptor. */
void allow_many_descriptors();

}  // namespace vdevice
