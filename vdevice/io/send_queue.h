// Frames that wait to be given to an interface together.
#pragma once

#include <sys/socket.h>

#include <stddef.h>
#include <stdint.h>
#include <array>
#include <vector>

#include "vdevice/chip/frame/frame.h"

namespace vdevice::io {

class SendQueue {
  public:
    SendQueue();

    bool empty() const { return count_ == 0; }
    bool has_room(size_t octets) const { return count_ < kFrames && octets <= octets_.size() - used_; }
    /** Copies the frame, for which there must be room. */
    void add(const chip::Frame &frame);
    /** Gives all frames to the packet socket. Returns how many of them it did not take. */
    size_t send(int fd);
    /** Forgets the frames. Returns how many there were. */
    size_t clear();

  private:
    static constexpr size_t kFrames = 64;
    static constexpr size_t kOctets = size_t{256} * 1024;

    std::vector<uint8_t> octets_;
    size_t used_ = 0;
    std::array<iovec, kFrames> pieces_{};
    std::array<mmsghdr, kFrames> messages_{};
    size_t count_ = 0;
};

}  // namespace vdevice::io
