// The CPU's interface to the chip: frames with a switch tag, in and out through the library.
#pragma once

#include <stdint.h>
#include <functional>
#include <string>
#include <vector>

#include "vdevice/chip/frame/frame.h"
#include "vdevice/io/packet_port.h"
#include "vdevice/io/receive_batch.h"

namespace switchd {

class CpuPort {
  public:
    /** A frame from the chip, with a VLAN tag but without the switch tag. */
    using Take = std::function<void(uint32_t port, vdevice::chip::Bytes frame)>;

    explicit CpuPort(const std::string &interface_name = "eth0");

    /** Throws an io::Error if the interface or the privilege is missing. May be called again when it is there anew. */
    void open();
    bool is_open() const { return port_.is_open(); }
    /** The interface is still the one that was opened. */
    bool is_current() const { return port_.is_current(); }
    int fd() const { return port_.fd(); }

    /** Hands over waiting frames, and at most so many that others have their turn. */
    void receive(const Take &take);
    /**
     * Sends a frame on a user port or a group as it is, with a tag of the VLAN put in unless that is 0. It waits for
     * flush(). False if the frame or the interface is none that can be sent on.
     */
    bool send(uint32_t intf, uint16_t vid, vdevice::chip::Bytes frame);
    void flush() { port_.flush(); }

    /** Received frames that were not the switch's. */
    uint64_t foreign_frames() const { return foreign_frames_; }
    uint64_t lost_frames() const { return port_.receive_losses(); }
    /** Frames that the interface did not take. */
    uint64_t unsent_frames() const { return port_.send_failures(); }

  private:
    void take_frame(vdevice::chip::Bytes frame, const Take &take);

    vdevice::io::PacketPort port_;
    vdevice::io::ReceiveBatch batch_;
    std::vector<uint8_t> received_;
    uint64_t foreign_frames_ = 0;
};

}  // namespace switchd
