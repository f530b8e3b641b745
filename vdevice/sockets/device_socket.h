// The end of a device's socket that a program holds.
#pragma once

#include <chrono>
#include <string>

#include "vdevice/sockets/unique_fd.h"

namespace vdevice {

/** A Unix stream socket that does not wait. Its descriptor is none of the standard ones, also where these are closed.
 */
UniqueFd unix_socket();

/**
 * Connects to the device that serves the path. Gives 0, or why not, as errno has it: EPERM if the folder or the server
 * is another user's than this one and root. The socket is stored before anything is waited for.
 */
int connect_to_device(UniqueFd &socket, const std::string &path, std::chrono::steady_clock::time_point end);

/** What a failure of connect_to_device() is to a person. */
std::string connect_problem(int error);

}  // namespace vdevice
