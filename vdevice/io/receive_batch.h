// Frames that one system call reads from a packet socket, with their VLAN tags back in place: for sockets without a
// ring, and for frames too long for one.
#pragma once

#include <linux/if_packet.h>
#include <sys/socket.h>

#include <stddef.h>
#include <stdint.h>
#include <array>
#include <vector>

#include "vdevice/chip/frame/frame.h"

namespace vdevice::io {

/**
 * The kernel strips the outer VLAN tag of a received frame and reports it apart; this puts it back, since the chip must
 * see the frame as on the cable. There must be room for the tag before the frame.
 */
template <typename Report>
chip::Bytes with_tag_of(uint8_t *frame, size_t octets, const Report &report) {
    if ((report.tp_status & TP_STATUS_VLAN_VALID) == 0 || octets < chip::kAddressBytes) {
        return {frame, octets};
    }
    const bool names_tpid = (report.tp_status & TP_STATUS_VLAN_TPID_VALID) != 0;
    uint8_t *whole = std::copy_n(frame, chip::kAddressBytes, frame - chip::kVlanTagBytes) - chip::kAddressBytes;
    chip::write16(whole + chip::kAddressBytes, names_tpid ? report.tp_vlan_tpid : chip::kVlanTpid);
    chip::write16(whole + chip::kAddressBytes + chip::kTypeBytes, report.tp_vlan_tci);
    return {whole, octets + chip::kVlanTagBytes};
}

/** One batch serves all ports in turn. */
class ReceiveBatch {
  public:
    static constexpr size_t kFrames = 64;

    ReceiveBatch();

    /** Reads the frames that wait in the socket, at most @p limit. */
    void receive(int fd, size_t limit = kFrames);

    size_t size() const { return count_; }
    chip::Bytes frame(size_t index) const { return frames_[index]; }

  private:
    // Longer than the longest frame, so that an oversized frame is seen to be one.
    static constexpr size_t kRoomForTag = chip::kVlanTagBytes;
    static constexpr size_t kSlotBytes = 9728;
    static_assert(kSlotBytes > kRoomForTag + chip::kMaxFrameBytes);

    union Control {
        cmsghdr header;
        uint8_t bytes[CMSG_SPACE(sizeof(tpacket_auxdata))];
    };

    void restore_tag(size_t index);

    std::vector<uint8_t> slots_;
    std::array<iovec, kFrames> pieces_{};
    std::array<Control, kFrames> controls_{};
    std::array<mmsghdr, kFrames> messages_{};
    std::array<chip::Bytes, kFrames> frames_;
    size_t count_ = 0;
};

}  // namespace vdevice::io
