// Frames and what leads to them.
#include "tests/differential/frames.h"

#include <adp/adp.h>

#include <cstring>
#include <new>

#include "tests/differential/values.h"

namespace differential {

void fill_frame(Random &random, std::vector<uint8_t> &frame) {
    constexpr uint16_t kTypes[] = {0x8100, 0x8100, 0x8100, 0x9100, 0x0800, 0x86DD, 0x0806};
    constexpr size_t kFirstType = 18;
    constexpr size_t kTypeStep = 4;
    constexpr size_t kTypeCount = 4;
    constexpr size_t kPort = 17;
    for (uint8_t &byte : frame) {
        byte = static_cast<uint8_t>(random.next());
    }
    if (frame.size() > kPort) {
        frame[kPort] = static_cast<uint8_t>(random.below(32) | (frame[kPort] & 0xC0));
    }
    for (size_t n = 0; n < kTypeCount; ++n) {
        const size_t at = kFirstType + n * kTypeStep;
        if (at + 2 <= frame.size()) {
            const uint16_t type = random.one_of(kTypes);
            frame[at] = static_cast<uint8_t>(type >> 8);
            frame[at + 1] = static_cast<uint8_t>(type);
        }
    }
    // Sometimes the protocol byte of a header behind no, one or two tags is that of UDP, or 0 for options.
    constexpr size_t kProtocols[] = {14 + 9, 18 + 9, 22 + 9, 14 + 6, 18 + 6, 22 + 6};
    constexpr size_t kTagBytes = 6;
    for (const size_t offset : kProtocols) {
        if (offset + kTagBytes < frame.size() && random.one_in(3)) {
            frame[offset + kTagBytes] = random.one_in(2) ? 17 : 0;
        }
    }
}

namespace {

constexpr uint32_t kLongest = 100;

/** Makes the frame that the record leads to, and gives its length. */
uint32_t fill_pointed(Random &random, Slot &slot) {
    std::memset(slot.data(), 0, slot.bytes());
    slot.pointed.resize(random.below(kLongest));
    fill_frame(random, slot.pointed);
    slot.pointed.reserve(1);
    return static_cast<uint32_t>(slot.pointed.size());
}

}  // namespace

void fill_received(Random &random, Slot &slot) {
    constexpr size_t kTagAt = 18;
    const uint32_t length = fill_pointed(random, slot);
    auto *const record = new (slot.storage.data()) adp_rx_frame_t{};
    record->frame = slot.pointed.data();
    record->length = length | (random.one_in(8) ? 0x30000 : 0);
    if (length > kLongest / 4 && random.one_in(2)) {
        record->vlan_tag = slot.pointed.data() + kTagAt;
    }
}

void fill_sent(Random &random, Slot &slot) {
    const uint32_t length = fill_pointed(random, slot);
    auto *const record = new (slot.storage.data()) adp_tx_frame_t{};
    record->frame = random.one_in(16) ? nullptr : slot.pointed.data();
    record->length = length;
    record->source = any_interface(random);
}

void fill_list(Random &random, Slot &slot) {
    constexpr uint32_t kMostNodes = 5;
    slot.elements = 1;
    auto *const head = new (slot.storage.data()) adp_list_link_t{};
    head->next = head->prev = head;
    slot.nodes.resize(random.below(kMostNodes));
    for (adp_tx_dest_t &node : slot.nodes) {
        node = {{head, head->prev}, any_interface(random)};
        head->prev->next = &node.link;
        head->prev = &node.link;
    }
}

}  // namespace differential
