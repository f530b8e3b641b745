// Where the chip's frames go: real interfaces in the daemon, a list in the tests.
#pragma once

#include "vdevice/chip/frame.h"

namespace vdevice::chip {

class Sink {
  public:
    virtual ~Sink() = default;
    /** The frame's bytes are valid during the call only. */
    virtual void transmit(int port, const Frame &frame) = 0;

  protected:
    Sink() = default;
    Sink(const Sink &) = default;
    Sink &operator=(const Sink &) = default;
};

}  // namespace vdevice::chip
