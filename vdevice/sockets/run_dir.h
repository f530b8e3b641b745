// The run folder, which holds the device's sockets: how the daemon and the programs that talk to it find each other.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <string>

namespace vdevice {

inline constexpr char kRunDirVariable[] = "VDEVICE_DIR";

/** A program that runs with another user's rights takes that user's folder, whatever its caller's environment says. */
inline std::string default_run_dir() {
    const char *given = secure_getenv(kRunDirVariable);
    return given != nullptr && *given != '\0' ? given : "/tmp/vdevice-" + std::to_string(geteuid());
}

/** For the help of programs with an option for it. */
inline constexpr char kRunDirHelp[] =
    "folder of the device's sockets; by default $VDEVICE_DIR, else /tmp/vdevice-<uid>";

inline std::string driver_socket(const std::string &run_dir) {
    return run_dir + "/driver";
}
inline std::string control_socket(const std::string &run_dir) {
    return run_dir + "/control";
}

}  // namespace vdevice
