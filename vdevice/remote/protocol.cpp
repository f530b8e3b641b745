// The paths of the run folder and of the driver socket.
#include "vdevice/remote/protocol.h"

#include <unistd.h>

#include <cstdlib>

namespace vdevice::remote {

std::string run_directory() {
    const char *given = std::getenv("VDEVICE_DIR");
    return given != nullptr && *given != '\0' ? given : "/tmp/vdevice-" + std::to_string(getuid());
}

std::string driver_socket() {
    return run_directory() + "/driver";
}

}  // namespace vdevice::remote
