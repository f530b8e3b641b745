// The egress queues of all ports. A port whose rate is not limited sends at once and uses none of them; behind a
// shaper, or a line with a speed, frames wait, in memory that all ports share, and are dropped when there is no room.
#pragma once

#include <stddef.h>
#include <optional>
#include <vector>

#include "vdevice/chip/frame/port_set.h"
#include "vdevice/chip/queues/port_queues.h"

namespace vdevice::chip {

class EgressQueues {
  public:
    static constexpr size_t kOctets = 2 * 1024 * 1024; /**< that all queues hold together */

    struct Departure {
        Time time;
        int port;
    };

    explicit EgressQueues(int ports) : ports_(static_cast<size_t>(ports)) {}

    const PortQueues &port(int port) const { return ports_[static_cast<size_t>(port)]; }
    size_t waiting_octets() const { return octets_; }

    /** Whether the port's frames must go through its queues. */
    bool holds(int port) const { return held_.has(port); }
    /** Counts a frame that leaves without waiting. */
    void pass(int port, size_t queue, size_t octets) { at(port).count(queue, octets); }
    /** Puts a copy of the frame into a queue; false if there is no room. */
    bool put(Time now, int port, size_t queue, const Frame &frame, Dispatch dispatch);

    /** The next frame that leaves; of two at the same time that of the lower port. */
    const std::optional<Departure> &next() const { return next_; }
    QueuedFrame take_next();
    void flush(int port);
    void clear_counters(int port) { at(port).clear_counters(); }

    /** The port must exist. A rate of 0 is none. */
    Status set_shaper(Time now, int port, const RateLimit &limit);
    /** The port must exist. */
    Status set_scheduler(Time now, int port, const SchedulerSettings &settings);
    /** The port must exist. Mbit/s. */
    void set_line_speed(int port, uint32_t speed);

  private:
    PortQueues &at(int port) { return ports_[static_cast<size_t>(port)]; }
    void update(int port);

    std::vector<PortQueues> ports_;
    size_t octets_ = 0;
    PortSet held_;
    PortSet waiting_;
    std::optional<Departure> next_;
};

}  // namespace vdevice::chip
