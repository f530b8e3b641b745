// Watches the links of network interfaces: the kernel reports each change.
#pragma once

#include <functional>
#include <string>

#include "vdevice/sockets/unique_fd.h"

namespace vdevice::io {

struct LinkChange {
    std::string name;
    int index = 0;
    bool exists = true; /**< false: the interface is gone from this namespace */
    bool link = false;  /**< up, and its peer is up too */
};

class LinkMonitor {
  public:
    using Handler = std::function<void(const LinkChange &)>;

    /** The handler gets every interface once, soon after, then each change. */
    explicit LinkMonitor(Handler handler);

    int fd() const { return socket_.get(); }
    void read_changes();

  private:
    void request_all();

    Handler handler_;
    UniqueFd socket_;
};

}  // namespace vdevice::io
