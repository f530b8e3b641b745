// One device with its sockets, its log and its configuration.
#pragma once

#include <map>
#include <string>

#include "vdevice/daemon/configuration.h"
#include "vdevice/daemon/log.h"
#include "vdevice/device/device.h"
#include "vdevice/inspect/streams.h"
#include "vdevice/io/event_loop.h"
#include "vdevice/process/control_server.h"
#include "vdevice/process/run_folder.h"
#include "vdevice/remote/server.h"
#include "vdevice/sockets/unique_fd.h"

namespace vdevice {

class Daemon {
  public:
    /** Opens everything, and makes the file's settings. Throws an io::Error if that fails. */
    Daemon(io::EventLoop &loop, const Settings &given, std::string file, Configuration configuration);

    bool has_file() const { return !file_.empty(); }
    /** Reads the file again. A file with a mistake changes nothing. */
    void reload();

  private:
    void serve_sockets();
    void tick();
    void note_rejected(const char *socket, uint64_t rejected, uint64_t &told);
    void note_unchangeable(const Configuration &changed);
    void change_cables(const std::map<int, cable::Conditions> &earlier);
    void note(LogLevel level, const std::string &text);

    io::EventLoop &loop_;
    Settings given_;
    std::string file_;
    Configuration configuration_;
    Settings settings_;
    Log log_;
    RunFolder folder_;
    Device device_;
    inspect::Streams streams_;
    ControlServer control_;
    remote::Server server_;
    UniqueFd clock_;
    uint64_t control_rejected_ = 0; /**< as it was noted last */
    uint64_t driver_rejected_ = 0;
};

}  // namespace vdevice
