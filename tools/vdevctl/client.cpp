// The device as a peer on a control socket.
#include "tools/vdevctl/client.h"

#include <nlohmann/json.hpp>

#include "vdevice/process/control_client.h"
#include "vdevice/sockets/run_dir.h"

namespace vdevice {

nlohmann::json ask_device(const std::string &run_dir, const nlohmann::json &request) {
    return ask({control_socket(run_dir), "the device", "vdeviced",
                "Start it, or name its folder with --run-dir or in VDEVICE_DIR."},
               request);
}

}  // namespace vdevice
