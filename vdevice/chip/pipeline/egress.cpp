// Copies of frames on their way out: form, queue, counters, wire, loopback, mirrors.
#include "vdevice/chip/pipeline/egress.h"

namespace vdevice::chip {
namespace {

/** How many frames one received frame may bring back by loopback. */
constexpr size_t kMaxLooped = 64;

/** The frame as the port sends it. A service's tag never reaches a customer. */
Frame form_of(const Passage &p, int port, const Tables &tables, TaggedHead &head) {
    if (port == kCpuPort) {
        return head.with_receive_tag(p.untagged(), p.ingress, tables.port(p.ingress).tags.tpid, p.tci);
    }
    const PortTags &tags = tables.port(port).tags;
    if (p.vlan->untagged.has(port) || tags.mode == DoubleTag::kExternal) {
        return p.untagged();
    }
    return head.with_vlan_tag(p.untagged(), tags.tpid, tables.tag_rules.on_egress(port, p.tci));
}

}  // namespace

void Egress::send(const Passage &p, int port) {
    transmit(port, form_of(p, port, tables_, head_), {p.priority, Origin::kSwitched});
}

void Egress::send_as_is(const Passage &p, int port) {
    transmit(port, p.frame, {p.priority, Origin::kSwitched});
}

void Egress::transmit(int port, const Frame &frame, Dispatch dispatch) {
    Port &settings = tables_.port(port);
    const size_t queue = tables_.queue_map.queue_of(port, dispatch.priority);
    // The chip's own tags may make a frame of full length longer; only the limit without jumbo frames is a port's own.
    if (!settings.jumbo && frame.size() > kMaxPlainFrameBytes) {
        lose(port, frame, dispatch, Lost::kTooLong);
    } else if (tables_.queues.holds(port) && settings.loopback == 0) {
        if (!tables_.queues.put(now_, port, queue, frame, dispatch)) {
            lose(port, frame, dispatch, Lost::kNoRoom);
        } else if (watcher_ != nullptr) {
            watcher_->queued(port, frame, dispatch);
        }
    } else {
        tables_.queues.pass(port, queue, frame.size());
        leave(port, frame, dispatch);
    }
}

void Egress::leave(int port, const Frame &frame, Dispatch dispatch) {
    Port &settings = tables_.port(port);
    ++settings.counters.tx_frames;
    settings.counters.tx_octets += frame.size();
    ++settings.counters.tx_casts[static_cast<size_t>(cast_of(Mac::at(frame.head, 0)))];
    if (watcher_ != nullptr) {
        watcher_->left(port, frame, dispatch);
    }
    if (settings.loopback != 0) {
        loop_back(port, frame, dispatch);
    } else {
        sink_.transmit(port, frame);
    }
    if (dispatch.origin == Origin::kSwitched) {
        tables_.mirrors.for_each_egress_copy(port, [&](int destination) {
            send_to_mirror(destination, frame, {dispatch.priority, Origin::kEgressMirror});
        });
    }
}

void Egress::loop_back(int port, const Frame &frame, Dispatch dispatch) {
    if (looped_.size() >= kMaxLooped) {
        tables_.count_drop(port, Drop::kLoopback);
        return lose(port, frame, dispatch, Lost::kLoopback);
    }
    std::vector<uint8_t> octets(frame.size());
    frame.copy_to(octets.data());
    looped_.push_back({port, std::move(octets)});
}

// A copy goes out as it is, whatever the VLANs of its port, and is not mirrored again. A mirror port that is down loses
// its copies; the frames themselves go their way.
void Egress::send_to_mirror(int port, const Frame &frame, Dispatch dispatch) {
    if (tables_.up.has(port)) {
        transmit(port, frame, dispatch);
    } else {
        lose(port, frame, dispatch, Lost::kMirrorDown);
    }
}

void Egress::copy_to_flow_mirror(uint32_t session, const Frame &frame) {
    if (const int destination = tables_.mirrors.flow_destination(session); destination != Mirror::kNone) {
        send_to_mirror(destination, frame, {kUnknownPriority, Origin::kFlowMirror});
    }
}

// Frames leave at times of their own, one after the other across all ports, so that the chip does the same however
// seldom it is told of the time.
void Egress::send_due(Time now) {
    EgressQueues &queues = tables_.queues;
    while (queues.next() && queues.next()->time <= now) {
        now_ = queues.next()->time;
        const int port = queues.next()->port;
        const QueuedFrame frame = queues.take_next();
        leave(port, split_frame(frame.octets), frame.dispatch);
    }
}

void Egress::flush_unsent(int port) {
    if (tables_.port(port).is_up() && tables_.port(port).loopback == 0) {
        return;
    }
    tables_.queues.port(port).for_each_waiting(
        [&](const QueuedFrame &frame) { lose(port, split_frame(frame.octets), frame.dispatch, Lost::kFlushed); });
    tables_.queues.flush(port);
    announce_departure();
}

/** The other reasons are counted where they arise. */
void Egress::lose(int port, const Frame &frame, Dispatch dispatch, Lost reason) {
    PortCounters &counters = tables_.port(port).counters;
    if (reason == Lost::kTooLong) {
        ++counters.tx_too_long;
    } else if (reason == Lost::kMirrorDown) {
        ++counters.tx_mirror_down;
    }
    if (watcher_ != nullptr) {
        watcher_->lost(port, frame, dispatch, reason);
    }
}

}  // namespace vdevice::chip
