// Maps a ring and walks its slots.
#include "vdevice/io/receive_ring.h"

#include <sys/mman.h>
#include <sys/socket.h>

#include <atomic>

#include "vdevice/io/receive_batch.h"

namespace vdevice::io {
namespace {

constexpr size_t kSlotsAhead = 2;
constexpr size_t kLineBytes = 64;
constexpr size_t kLinesOfShortFrame = 3;  // header of the slot, headers and payload of a frame of 64 octets

bool set_option(int fd, int option, const auto &value) {
    return setsockopt(fd, SOL_PACKET, option, &value, sizeof(value)) == 0;
}

/** Ordered: the frame is read after the kernel handed over the slot, and the slot given back after that. */
std::atomic_ref<uint32_t> owner_of(tpacket2_hdr &slot) {
    return std::atomic_ref<uint32_t>{slot.tp_status};
}

}  // namespace

bool ReceiveRing::open(int fd, size_t slots) {
    close();
    tpacket_req layout{};
    layout.tp_frame_size = kSlotBytes;
    layout.tp_frame_nr = static_cast<unsigned>(slots);
    layout.tp_block_size = kSlotBytes * kSlotsInBlock;
    layout.tp_block_nr = static_cast<unsigned>(slots / kSlotsInBlock);
    constexpr int kLongFramesToSocket = 1;
    if (!set_option(fd, PACKET_VERSION, int{TPACKET_V2}) ||
        !set_option(fd, PACKET_RESERVE, static_cast<int>(chip::kVlanTagBytes)) ||
        !set_option(fd, PACKET_COPY_THRESH, kLongFramesToSocket) || !set_option(fd, PACKET_RX_RING, layout)) {
        return false;
    }
    void *memory = mmap(nullptr, slots * kSlotBytes, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (memory == MAP_FAILED) {
        // Otherwise the kernel would write frames into a ring that is not read.
        set_option(fd, PACKET_RX_RING, tpacket_req{});
        return false;
    }
    // Copies of the process, which make long answers, need no frames; without the rings they are made ten times as
    // fast.
    madvise(memory, slots * kSlotBytes, MADV_DONTFORK);
    memory_ = static_cast<uint8_t *>(memory);
    slots_ = slots;
    next_ = 0;
    return true;
}

void ReceiveRing::close() {
    if (memory_ != nullptr) {
        munmap(memory_, bytes());
        memory_ = nullptr;
    }
}

tpacket2_hdr &ReceiveRing::head() const {
    void *slot = memory_ + next_ * kSlotBytes;  // slots are aligned for every type
    return *static_cast<tpacket2_hdr *>(slot);
}

std::optional<Arrival> ReceiveRing::front() const {
    tpacket2_hdr &slot = head();
    const uint32_t status = owner_of(slot).load(std::memory_order_acquire);
    if ((status & TP_STATUS_USER) == 0) {
        return std::nullopt;
    }
    if ((status & TP_STATUS_COPY) != 0) {
        return Arrival::kInSocket;
    }
    return slot.tp_snaplen == slot.tp_len ? Arrival::kInRing : Arrival::kNowhere;
}

chip::Bytes ReceiveRing::take() const {
    tpacket2_hdr &slot = head();
    fetch_ahead();
    return with_tag_of(reinterpret_cast<uint8_t *>(&slot) + slot.tp_mac, slot.tp_snaplen, slot);
}

WallTime ReceiveRing::arrival() const {
    const tpacket2_hdr &slot = head();
    return WallTime{std::chrono::seconds{slot.tp_sec} + std::chrono::nanoseconds{slot.tp_nsec}};
}

// The kernel has written a frame on another processor. To get it from there takes as long as a good part of the chip's
// work on the frame before.
void ReceiveRing::fetch_ahead() const {
    const size_t ahead = next_ + kSlotsAhead;
    const uint8_t *slot = memory_ + (ahead < slots_ ? ahead : ahead - slots_) * kSlotBytes;
    for (size_t line = 0; line < kLinesOfShortFrame; ++line) {
        __builtin_prefetch(slot + line * kLineBytes);
    }
}

void ReceiveRing::release() {
    owner_of(head()).store(TP_STATUS_KERNEL, std::memory_order_release);
    next_ = next_ + 1 == slots_ ? 0 : next_ + 1;
}

}  // namespace vdevice::io
