// Watches the links of network interfaces: the kernel reports each change.
#pragma once

#include <stdint.h>
#include <functional>
#include <span>
#include <string>

#include "vdevice/sockets/unique_fd.h"

namespace vdevice::io {

struct LinkChange {
    std::string name;
    int index = 0;
    bool exists = true; /**< false: the interface is gone from this namespace */
    bool link = false;  /**< up, and its peer is up too */
};

/**
 * The kernel drops reports that are not read in time. Then all interfaces are read again, once the reports that are
 * left have been read: before that the kernel goes on dropping, and says so only once.
 */
class LinkMonitor {
  public:
    using Handler = std::function<void(const LinkChange &)>;

    /**
     * The change handler gets every interface once, soon after, then each change. The other one is called each time
     * that every interface was reported: one that was not reported since the time before is gone.
     */
    LinkMonitor(Handler on_change, std::function<void()> on_complete);

    int fd() const { return socket_.get(); }
    /**
     * Reads the reports that wait; false if there may be more. They are handled in their order: a handler that calls it
     * gets no newer ones in between.
     */
    bool read_changes();
    /** To be called once a second: asks for all interfaces again if reports were lost. */
    void tick();
    /** Lets the next tick() ask for all interfaces. */
    void refresh() { stale_ = true; }
    /** How often reports were lost. */
    uint64_t losses() const { return losses_; }

  private:
    enum class Received { kReports, kNothing, kLoss };

    Received receive();
    void handle(std::span<const char> reports);
    void request_all();

    Handler on_change_;
    std::function<void()> on_complete_;
    UniqueFd socket_;
    uint32_t sequence_ = 0; /**< of the last request */
    bool stale_ = false;    /**< something was missed since the last request, or it failed */
    bool reading_ = false;
    uint64_t losses_ = 0;
};

}  // namespace vdevice::io
