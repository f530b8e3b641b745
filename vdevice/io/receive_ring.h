// Memory that the kernel writes a port's frames into and that the device reads them from, without a system call for any
// of them (packet(7), version 2 of the ring).
#pragma once

#include <linux/if_packet.h>

#include <stddef.h>
#include <stdint.h>
#include <optional>

#include "vdevice/chip/frame/frame.h"

namespace vdevice::io {

/** Where a frame is that has come in. */
enum class Arrival : uint8_t {
    kInRing,
    kInSocket, /**< it does not fit into a slot, and waits in the socket as if there were no ring */
    kNowhere,  /**< there was no room for it in the socket either */
};

class ReceiveRing {
  public:
    /** Frames of up to this many octets are taken from the ring; few are longer. */
    static constexpr size_t kSlotBytes = 2048;
    static constexpr size_t kSlots = 2048;
    static constexpr size_t kSlotsInBlock = 16;

    ReceiveRing() = default;
    ~ReceiveRing() { close(); }
    ReceiveRing(const ReceiveRing &) = delete;
    ReceiveRing &operator=(const ReceiveRing &) = delete;

    /**
     * Gives a packet socket that does not receive yet a ring; false if the kernel refuses it. The number of slots is a
     * multiple of kSlotsInBlock.
     */
    bool open(int fd, size_t slots = kSlots);
    void close();
    bool is_open() const { return memory_ != nullptr; }

    /** Where the first frame is that has not been released, if there is one. */
    std::optional<Arrival> front() const;
    /** The first frame, with its VLAN tag back in its place. It must be in the ring, and is asked for once. */
    chip::Bytes take() const;
    /** Gives the first frame's slot back to the kernel. */
    void release();

  private:
    tpacket2_hdr &head() const;
    size_t bytes() const { return slots_ * kSlotBytes; }

    uint8_t *memory_ = nullptr;
    size_t slots_ = 0;
    size_t next_ = 0;
};

}  // namespace vdevice::io
