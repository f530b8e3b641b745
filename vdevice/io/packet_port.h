// A port of the device on a network interface: whole Ethernet frames, tags included, in and out in batches.
#pragma once

#include <linux/if_packet.h>
#include <sys/socket.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "vdevice/chip/frame.h"
#include "vdevice/io/unique_fd.h"

namespace vdevice::io {

/** Buffers for the frames of one receive call. One batch serves all ports in turn. */
class ReceiveBatch {
  public:
    static constexpr std::size_t kFrames = 64;

    ReceiveBatch();

    std::size_t size() const { return count_; }
    /** The frame with the VLAN tag back in its place if the kernel had taken it out. */
    chip::Bytes frame(std::size_t index) const { return frames_[index]; }

  private:
    friend class PacketPort;

    // A slot is longer than the longest frame, so that an oversized one is seen to be too long.
    static constexpr std::size_t kRoomForTag = chip::kVlanTagBytes;
    static constexpr std::size_t kSlotBytes = 9728;
    static_assert(kSlotBytes > kRoomForTag + chip::kMaxFrameBytes);

    union Control {
        cmsghdr header;
        std::uint8_t bytes[CMSG_SPACE(sizeof(tpacket_auxdata))];
    };

    void prepare();
    void restore_tag(std::size_t index);

    std::vector<std::uint8_t> slots_;
    std::array<iovec, kFrames> pieces_{};
    std::array<Control, kFrames> controls_{};
    std::array<mmsghdr, kFrames> messages_{};
    std::array<chip::Bytes, kFrames> frames_;
    std::size_t count_ = 0;
};

class PacketPort {
  public:
    explicit PacketPort(std::string interface_name) : interface_name_{std::move(interface_name)} {}

    const std::string &interface_name() const { return interface_name_; }
    int interface_index() const { return index_; }
    int fd() const { return socket_.get(); }
    bool is_open() const { return static_cast<bool>(socket_); }

    /** Throws an Error if there is no such interface or no privilege. */
    void open();
    void close();

    /** Takes the frames that are waiting, as many as the batch holds. */
    void receive(ReceiveBatch &batch);

    /** Copies the frame for the next flush; true if it is the first one waiting. */
    bool queue(const chip::Frame &frame);
    void flush();
    /** Frames that the interface did not take. */
    std::uint64_t send_failures() const { return send_failures_; }

  private:
    static constexpr std::size_t kQueueFrames = 64;
    static constexpr std::size_t kQueueBytes = std::size_t{256} * 1024;

    std::string interface_name_;
    int index_ = 0;
    UniqueFd socket_;
    std::vector<std::uint8_t> queue_bytes_;
    std::vector<iovec> queue_;
    std::size_t queued_bytes_ = 0;
    std::uint64_t send_failures_ = 0;
};

}  // namespace vdevice::io
