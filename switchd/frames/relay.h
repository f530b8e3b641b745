// Moves frames between the CPU port and the interfaces, as the frame path decides.
#pragma once

#include <stdint.h>
#include <functional>
#include <vector>

#include "switchd/frames/cpu_port.h"
#include "switchd/frames/frame_path.h"
#include "switchd/ports/interfaces.h"

namespace switchd {

class Relay {
  public:
    /** An LACPDU or a marker that came in on a user port, without a tag. */
    using LacpHandler = std::function<void(uint32_t port, const vdevice::chip::Frame &frame)>;

    Relay(FramePath &path, CpuPort &cpu_port, Interfaces &interfaces, LacpHandler on_lacp)
        : path_{path}, cpu_port_{cpu_port}, interfaces_{interfaces}, on_lacp_{std::move(on_lacp)} {}

    /** To be called when frames wait: one call leaves time for others. */
    void from_chip(Time now);
    void from_interface(Interface &interface, Time now);

  private:
    void deliver(uint32_t port, const ToInterface &destination);

    FramePath &path_;
    CpuPort &cpu_port_;
    Interfaces &interfaces_;
    LacpHandler on_lacp_;
    std::vector<PortName> unflushed_;
};

}  // namespace switchd
