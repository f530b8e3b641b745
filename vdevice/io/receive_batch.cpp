// Reads a batch of frames with recvmmsg().
#include "vdevice/io/receive_batch.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace vdevice::io {

ReceiveBatch::ReceiveBatch() : slots_(kFrames * kSlotBytes) {
    for (size_t i = 0; i < kFrames; ++i) {
        pieces_[i] = {&slots_[i * kSlotBytes + kRoomForTag], kSlotBytes - kRoomForTag};
        messages_[i].msg_hdr.msg_iov = &pieces_[i];
        messages_[i].msg_hdr.msg_iovlen = 1;
        messages_[i].msg_hdr.msg_control = &controls_[i];
    }
}

void ReceiveBatch::receive(int fd, size_t limit) {
    limit = std::min(limit, kFrames);
    for (size_t i = 0; i < limit; ++i) {
        messages_[i].msg_hdr.msg_controllen = sizeof(Control);
    }
    const auto read = [&] {
        return recvmmsg(fd, messages_.data(), static_cast<unsigned>(limit), MSG_DONTWAIT, nullptr);
    };
    int count = read();
    if (count < 0 && errno == ENETDOWN) {
        // An interface that went down reports that once, before the frames that wait; the link monitor reports the
        // link.
        count = read();
    }
    count_ = count < 0 ? 0 : static_cast<size_t>(count);
    for (size_t i = 0; i < count_; ++i) {
        restore_tag(i);
    }
}

void ReceiveBatch::restore_tag(size_t index) {
    uint8_t *frame = &slots_[index * kSlotBytes + kRoomForTag];
    frames_[index] = {frame, messages_[index].msg_len};
    msghdr &header = messages_[index].msg_hdr;
    for (cmsghdr *part = CMSG_FIRSTHDR(&header); part != nullptr; part = CMSG_NXTHDR(&header, part)) {
        if (part->cmsg_level == SOL_PACKET && part->cmsg_type == PACKET_AUXDATA) {
            tpacket_auxdata auxiliary{};
            std::memcpy(&auxiliary, CMSG_DATA(part), sizeof(auxiliary));
            frames_[index] = with_tag_of(frame, messages_[index].msg_len, auxiliary);
            return;
        }
    }
}

}  // namespace vdevice::io
