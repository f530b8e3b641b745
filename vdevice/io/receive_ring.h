// Memory into which the kernel writes a port's frames and from which the device reads them, without a system call for
// each (packet(7), version 2 of the ring).
#pragma once

#include <linux/if_packet.h>

#include <stddef.h>
#include <stdint.h>
#include <chrono>
#include <optional>

#include "vdevice/chip/frame/frame.h"

namespace vdevice::io {

/** The kernel tells by this clock when a frame came in. */
using WallTime = std::chrono::time_point<std::chrono::system_clock, std::chrono::nanoseconds>;

/** Where a received frame is. */
enum class Arrival : uint8_t {
    kInRing,
    kInSocket, /**< too long for a slot, it waits in the socket as without a ring */
    kNowhere,  /**< lost: the socket had no room either */
};

class ReceiveRing {
  public:
    /** Longer frames, which are few, come through the socket. */
    static constexpr size_t kSlotBytes = 2048;
    static constexpr size_t kSlots = 2048;
    static constexpr size_t kSlotsInBlock = 16;
    static constexpr size_t kMostSlots = 65536;
    static constexpr bool may_have(size_t slots) {
        return slots != 0 && slots <= kMostSlots && slots % kSlotsInBlock == 0;
    }

    ReceiveRing() = default;
    ~ReceiveRing() { close(); }
    ReceiveRing(const ReceiveRing &) = delete;
    ReceiveRing &operator=(const ReceiveRing &) = delete;

    /** Gives a ring to a packet socket that does not receive yet; false if the kernel refuses. */
    bool open(int fd, size_t slots = kSlots);
    void close();
    bool is_open() const { return memory_ != nullptr; }

    /** Where the first frame is that was not released; nothing if there is none. */
    std::optional<Arrival> front() const;
    /** The first frame, with its VLAN tag back in place. It must be in the ring; call it once for each frame. */
    chip::Bytes take() const;
    /** When the first frame came in. */
    WallTime arrival() const;
    /** Gives the first frame's slot back to the kernel. */
    void release();

  private:
    tpacket2_hdr &head() const;
    void fetch_ahead() const;
    size_t bytes() const { return slots_ * kSlotBytes; }

    uint8_t *memory_ = nullptr;
    size_t slots_ = 0;
    size_t next_ = 0;
};

}  // namespace vdevice::io
