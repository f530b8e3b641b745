// The way of a frame through the chip, from the port that it comes in on: its steps, in their order.
#pragma once

#include "vdevice/chip/pipeline/egress.h"
#include "vdevice/chip/pipeline/forwarder.h"
#include "vdevice/chip/pipeline/ingress.h"

namespace vdevice::chip {

class Pipeline {
  public:
    Pipeline(Tables &tables, Sink &sink) : tables_{tables}, egress_{tables, sink} {}

    /** The port must exist. */
    void receive(Time now, int port, Bytes frame);
    /** Sends the queued frames that leave until now. */
    void depart(Time now);
    Egress &egress() { return egress_; }

  private:
    void process(Passage &p);
    /** Afterwards nothing is under way: frames have left or wait in queues. Of most frames none has come back. */
    void settle(Time now) {
        if (egress_.looped().empty()) {
            egress_.send_until(now);
        }
        if (!egress_.looped().empty()) {
            work_off_looped(now);
        }
    }
    void work_off_looped(Time now);

    Tables &tables_;
    Egress egress_;
    Ingress ingress_{tables_, egress_};
    Forwarder forwarder_{tables_, egress_};
};

}  // namespace vdevice::chip
