// The steps in their order, for a received frame and for those that it brings back by loopback.
#include "vdevice/chip/pipeline/pipeline.h"

namespace vdevice::chip {

void Pipeline::receive(Time now, int port, Bytes frame) {
    settle(now);
    Passage passage{now, port, frame};
    process(passage);
    // What is within its port's rate leaves at once.
    settle(now);
    egress_.announce_departure();
}

void Pipeline::depart(Time now) {
    settle(now);
    egress_.announce_departure();
}

// A looped frame may be looped again, by another port and endlessly, and a mirror's copy of a queued frame may come
// back, too: the list grows while it is worked off, but only up to its limit.
void Pipeline::work_off_looped(Time now) {
    std::vector<LoopedFrame> &looped = egress_.looped();
    size_t next = 0;
    do {
        while (next < looped.size()) {
            const LoopedFrame frame = std::move(looped[next++]);
            Passage passage{now, frame.port, frame.octets, true};
            process(passage);
        }
        egress_.send_until(now);
    } while (next < looped.size());
    looped.clear();
}

/** The steps of a frame's way, in their order. A step that ends the way is false. */
void Pipeline::process(Passage &p) {
    Watcher *watcher = egress_.watcher();
    if (watcher != nullptr) {
        watcher->begun();
    }
    [[maybe_unused]] const bool is_forwarded = ingress_.accept(p)            // 1 the port takes it
                                               && ingress_.unwrap(p)         // 2 from the CPU: what it wants
                                               && ingress_.read(p)           // 3 header, no attack
                                               && ingress_.classify(p)       // 4 VLAN and priority, rules
                                               && forwarder_.pass_traps(p)   // 5 not for the CPU alone
                                               && forwarder_.enter_vlan(p)   // 6 the VLAN has the port
                                               && forwarder_.admit(p)        // 7 spanning tree, source learned
                                               && forwarder_.snoop(p)        // 8 not for the snooping software
                                               && forwarder_.limit_storm(p)  // 9 destination looked up, storm limits
                                               && forwarder_.forward(p);     // 10 ports chosen, a copy to each
    if (p.drop) {
        tables_.count_drop(p.ingress, *p.drop);
    }
    if (watcher != nullptr) {
        watcher->passed(p);
    }
}

}  // namespace vdevice::chip
