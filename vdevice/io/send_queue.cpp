// Sends a batch of frames with sendmmsg().
#include "vdevice/io/send_queue.h"

#include <cerrno>
#include <utility>

namespace vdevice::io {

SendQueue::SendQueue() : octets_(kOctets) {
    for (size_t i = 0; i < kFrames; ++i) {
        messages_[i].msg_hdr.msg_iov = &pieces_[i];
        messages_[i].msg_hdr.msg_iovlen = 1;
    }
}

void SendQueue::add(const chip::Frame &frame) {
    uint8_t *place = &octets_[used_];
    frame.copy_to(place);
    used_ += frame.size();
    pieces_[count_++] = {place, frame.size()};
}

size_t SendQueue::send(int fd) {
    size_t refused = 0;
    size_t sent = 0;
    while (sent < count_) {
        const int count = sendmmsg(fd, &messages_[sent], static_cast<unsigned>(count_ - sent), MSG_DONTWAIT);
        if (count > 0) {
            sent += static_cast<size_t>(count);
        } else if (errno != EINTR) {
            // The first frame was refused (interface down, too long, no buffers): it is lost, go on with the next.
            ++refused;
            ++sent;
        }
    }
    clear();
    return refused;
}

size_t SendQueue::clear() {
    used_ = 0;
    return std::exchange(count_, 0);
}

}  // namespace vdevice::io
