// Room for waiting frames, and the order of departures across ports.
#include "vdevice/chip/queues/egress_queues.h"

namespace vdevice::chip {

bool EgressQueues::put(Time now, int port, size_t queue, const Frame &frame, Dispatch dispatch) {
    PortQueues &queues = at(port);
    if (frame.size() > kOctets - octets_ || !queues.has_room(queue, frame.size())) {
        queues.count_drop(queue);
        return false;
    }
    octets_ += frame.size();
    queues.put(now, queue, frame, dispatch);
    update(port);
    return true;
}

QueuedFrame EgressQueues::take_next() {
    const int port = next_->port;
    QueuedFrame frame = at(port).take();
    octets_ -= frame.octets.size();
    update(port);
    return frame;
}

void EgressQueues::flush(int port) {
    if (waiting_.has(port)) {
        octets_ -= at(port).flush();
        update(port);
    }
}

Status EgressQueues::set_shaper(Time now, int port, const RateLimit &limit) {
    if (limit.rate > TokenBucket::kMaxRate || limit.depth > TokenBucket::kMaxDepth) {
        return Status::kBadArgument;
    }
    at(port).set_shaper(now, limit);
    update(port);
    return Status::kOk;
}

Status EgressQueues::set_scheduler(Time now, int port, const SchedulerSettings &settings) {
    const Status status = settings.check();
    if (status == Status::kOk) {
        at(port).set_scheduler(now, settings);
        update(port);
    }
    return status;
}

void EgressQueues::set_line_speed(int port, uint32_t speed) {
    at(port).set_line_speed(speed);
    update(port);
}

void EgressQueues::update(int port) {
    held_.put(port, at(port).holds());
    waiting_.put(port, at(port).is_waiting());
    next_.reset();
    waiting_.for_each([&](int number) {
        const Time time = *at(number).departure();
        if (!next_ || time < next_->time) {
            next_ = {time, number};
        }
    });
}

}  // namespace vdevice::chip
