// The way of a frame out of the chip: through the queues of its port, or past them.
#include "vdevice/chip/switch.h"

namespace vdevice::chip {

void Switch::transmit(int port, const Frame &frame, uint32_t priority) {
    put_out(port, frame, {priority, Origin::kSwitched});
}

void Switch::put_out(int port, const Frame &frame, Dispatch dispatch) {
    const size_t queue = queue_map_.queue_of(port, dispatch.priority);
    // The chip's own tags may make a frame of full length longer; only the limit without jumbo frames is a port's own.
    if (!at(port).jumbo && frame.size() > kMaxPlainFrameBytes) {
        ++at(port).counters.tx_too_long;
    } else if (queues_.holds(port) && at(port).loopback == 0) {
        queues_.put(now_, port, queue, frame, dispatch);
    } else {
        queues_.pass(port, queue, frame.size());
        leave(port, frame, dispatch);
    }
}

void Switch::leave(int port, const Frame &frame, Dispatch dispatch) {
    PortCounters &counters = at(port).counters;
    ++counters.tx_frames;
    counters.tx_octets += frame.size();
    ++counters.tx_casts[static_cast<size_t>(cast_of(Mac::at(frame.head, 0)))];
    if (at(port).loopback != 0) {
        loop_back(port, frame);
    } else {
        sink_.transmit(port, frame);
    }
    if (dispatch.origin == Origin::kSwitched) {
        mirror_egress(port, frame, dispatch.priority);
    }
}

}  // namespace vdevice::chip
