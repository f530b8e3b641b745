// The folder in which the device's sockets lie: how the daemon and the programs that talk to it find each other.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <string>

namespace vdevice {

inline std::string default_run_dir() {
    if (const char *from_environment = std::getenv("VDEVICE_DIR"); from_environment != nullptr) {
        return from_environment;
    }
    return "/tmp/vdevice-" + std::to_string(getuid());
}

inline std::string driver_socket(const std::string &run_dir) {
    return run_dir + "/driver";
}
inline std::string control_socket(const std::string &run_dir) {
    return run_dir + "/control";
}

/** Makes the folder, for its owner only; throws an io::Error if it is somebody else's. */
void prepare_run_dir(const std::string &run_dir);

}  // namespace vdevice
