// Frames that wait for a port's shaper. They leave at times of their own, one after the other across all ports, so that
// the chip does the same however seldom it is told of the time.
#include "vdevice/chip/switch.h"

namespace vdevice::chip {

std::optional<Time> Switch::next_departure() const {
    const auto &next = queues_.next();
    return next ? std::optional{next->time} : std::nullopt;
}

void Switch::depart(Time now) {
    send_until(now);
    announce_departure();
}

/** Afterwards it is @p now for all that goes on in the chip. */
void Switch::send_until(Time now) {
    while (queues_.next() && queues_.next()->time <= now) {
        now_ = queues_.next()->time;
        const int port = queues_.next()->port;
        const QueuedFrame frame = queues_.take_next();
        leave(port, split_frame(frame.octets), frame.dispatch);
    }
    now_ = now;
}

void Switch::announce_departure() {
    if (const std::optional<Time> next = next_departure(); next != announced_) {
        announced_ = next;
        sink_.departure_changed();
    }
}

/** What waits on a port that is down is lost, and so it is on a looped one, which has no queues. */
void Switch::flush_unsent(int port) {
    if (!at(port).is_up() || at(port).loopback != 0) {
        queues_.flush(port);
        announce_departure();
    }
}

Status Switch::set_shaper(Time now, int port, const RateLimit &limit) {
    if (!has_port(port)) {
        return Status::kNoPort;
    }
    send_until(now);
    const Status status = queues_.set_shaper(now, port, limit);
    announce_departure();
    return status;
}

Status Switch::set_scheduler(Time now, int port, const SchedulerSettings &settings) {
    if (!has_port(port)) {
        return Status::kNoPort;
    }
    send_until(now);
    const Status status = queues_.set_scheduler(now, port, settings);
    announce_departure();
    return status;
}

}  // namespace vdevice::chip
