// Where the chip's frames go, and who hears of its ports: real interfaces in the daemon, a list in the tests.
#pragma once

#include "vdevice/chip/frame/frame.h"

namespace vdevice::chip {

class Sink {
  public:
    virtual ~Sink() = default;
    /** The frame's bytes are valid during the call only. */
    virtual void transmit(int port, const Frame &frame) = 0;
    /** The port was enabled or disabled, or its link came or went. */
    virtual void port_changed(int /*port*/) {}
    /** The chip's next departure is at another time than before, or there is none any more. */
    virtual void departure_changed() {}

  protected:
    Sink() = default;
    Sink(const Sink &) = default;
    Sink &operator=(const Sink &) = default;
};

}  // namespace vdevice::chip
