// The links of the ports, from the driver's link scan, in the daemon's own thread.
#pragma once

#include <stdint.h>
#include <functional>
#include <vector>

#include "vdevice/io/event_loop.h"
#include "vdevice/sockets/unique_fd.h"

namespace switchd {

class Links {
  public:
    /** A user port's link came or went. */
    using Handler = std::function<void(uint32_t port, bool is_up)>;

    /** The port map must be there. Throws an io::Error if the driver's link scan cannot be had. One lives at a time. */
    Links(vdevice::io::EventLoop &loop, uint32_t user_ports, Handler handler);
    ~Links();
    Links(const Links &) = delete;
    Links &operator=(const Links &) = delete;

    bool is_up(uint32_t port) const { return up_.at(port); }

  private:
    void read_all();
    void take_changes();
    void set(uint32_t port, bool is_up);

    Handler handler_;
    std::vector<bool> up_; /**< by user port */
    vdevice::UniqueFd changes_;
    vdevice::UniqueFd clock_; /**< where there is no link scan to register with */
};

}  // namespace switchd
