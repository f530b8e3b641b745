// The CPU's frames: the switch's CPU port, an interface for each port, and what goes between them.
#pragma once

#include <stdint.h>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "switchd/daemon/configuration.h"
#include "switchd/frames/cpu_port.h"
#include "switchd/frames/frame_path.h"
#include "switchd/frames/relay.h"
#include "switchd/ports/interfaces.h"
#include "vdevice/io/event_loop.h"

namespace switchd {

/** The address of the CPU's interface, unless the configuration gives one. Throws a vdevice::io::Error. */
Mac base_mac_of(const Configuration &configuration);

/** Since any moment; it never goes back. */
Time now();

class Traffic {
  public:
    /** @param keeper_path  see Interfaces */
    Traffic(vdevice::io::EventLoop &loop, const Configuration &configuration, const Mac &base_mac,
            const std::string &keeper_path, Relay::LacpHandler on_lacp);
    ~Traffic();
    Traffic(const Traffic &) = delete;
    Traffic &operator=(const Traffic &) = delete;

    void configure(const Configuration &configuration);

    Interfaces &interfaces() { return interfaces_; }
    const Interfaces &interfaces() const { return interfaces_; }
    FramePath &path() { return path_; }
    const FramePath &path() const { return path_; }
    const CpuPort &cpu_port() const { return cpu_port_; }

    /** Sends a frame of the daemon's own as it is. */
    void send(uint32_t intf, std::span<const uint8_t> frame) {
        cpu_port_.send(intf, 0, frame);
        cpu_port_.flush();
    }
    /**
     * To be called once a second: opens the CPU's interface again when another one has taken its place. Throws a
     * vdevice::io::Error while there is none.
     */
    void reopen();

  private:
    vdevice::io::EventLoop &loop_;
    CpuPort cpu_port_;
    FramePath path_;
    Interfaces interfaces_;
    Relay relay_;
    int watched_ = -1; /**< the CPU port's descriptor in the loop */
};

}  // namespace switchd
