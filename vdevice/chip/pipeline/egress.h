// The way of a frame out of the chip: in the form that its port sends, through the port's queues or past them, to the
// wire or back into the port. Mirrors get their copies here.
#pragma once

#include <stdint.h>
#include <optional>
#include <vector>

#include "vdevice/chip/frame/tagged_head.h"
#include "vdevice/chip/pipeline/passage.h"
#include "vdevice/chip/pipeline/sink.h"
#include "vdevice/chip/pipeline/tables.h"
#include "vdevice/chip/pipeline/watcher.h"

namespace vdevice::chip {

/** A frame on its way back into the port that it should have left by. */
struct LoopedFrame {
    int port;
    std::vector<uint8_t> octets;
};

class Egress {
  public:
    Egress(Tables &tables, Sink &sink) : tables_{tables}, sink_{sink} {}

    /** Null for none. */
    void set_watcher(Watcher *watcher) { watcher_ = watcher; }
    Watcher *watcher() const { return watcher_; }

    /** Sends a copy by a chosen port in the port's form: a VLAN's tag or none, to the CPU the receive tag. */
    void send(const Passage &p, int port);
    /** Sends a copy as the CPU has made it. */
    void send_as_is(const Passage &p, int port);
    /** Sends a copy to the mirrors of what comes in on the port. */
    void mirror_ingress(int port, Bytes frame) {
        tables_.mirrors.for_each_ingress_copy(port, [&](int destination) {
            send_to_mirror(destination, split_frame(frame), {kUnknownPriority, Origin::kIngressMirror});
        });
    }
    /** Sends a copy of a frame that a rule has selected to where the session's flow mirror goes, if anywhere. */
    void copy_to_flow_mirror(uint32_t session, const Frame &frame);

    /** Sends the queued frames that leave until now. Afterwards it is @p now for all that goes on in the chip. */
    void send_until(Time now) {
        if (const auto &next = tables_.queues.next(); next && next->time <= now) {
            send_due(now);
        }
        now_ = now;
    }
    /** Tells the sink if the next departure is at another time than it was told. */
    void announce_departure() {
        const auto &next = tables_.queues.next();
        if (const auto time = next ? std::optional{next->time} : std::nullopt; time != announced_) {
            announced_ = time;
            sink_.departure_changed();
        }
    }
    /** Loses what waits on a port that is down, or in loopback, which has no queues. */
    void flush_unsent(int port);
    /** What one received frame has brought back so far. Up to a limit, it grows while it is worked off. */
    std::vector<LoopedFrame> &looped() { return looped_; }

  private:
    /** Of copies that are made before the chip has given the frame a priority. */
    static constexpr uint32_t kUnknownPriority = 0;

    void send_due(Time now);
    void transmit(int port, const Frame &frame, Dispatch dispatch);
    void leave(int port, const Frame &frame, Dispatch dispatch);
    void loop_back(int port, const Frame &frame, Dispatch dispatch);
    void send_to_mirror(int port, const Frame &frame, Dispatch dispatch);
    void lose(int port, const Frame &frame, Dispatch dispatch, Lost reason);

    Tables &tables_;
    Sink &sink_;
    Watcher *watcher_ = nullptr;
    Time now_{};
    TaggedHead head_;
    std::optional<Time> announced_; /**< the departure that the sink was told of */
    std::vector<LoopedFrame> looped_;
};

}  // namespace vdevice::chip
