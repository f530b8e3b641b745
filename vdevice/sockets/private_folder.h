// The run folder must be one user's alone: whoever could put a socket there would be taken for the device.
#pragma once

#include <string>

namespace vdevice {

/**
 * 0 if the path is a folder that belongs to this user or to root, and that nobody else may write to; EPERM if it is
 * not, for instance a link; otherwise why it cannot be looked at, as errno has it.
 */
int check_private_folder(const std::string &path);

/** Makes the folder if there is none; gives what check_private_folder() says of it. */
int make_private_folder(const std::string &path);

}  // namespace vdevice
