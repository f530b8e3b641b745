// A folder that belongs to one user alone.
#pragma once

#include <string>

namespace vdevice {

/** Makes the folder if there is none; throws an io::Error if it is somebody else's, or others may write to it. */
void make_private_folder(const std::string &path);

}  // namespace vdevice
