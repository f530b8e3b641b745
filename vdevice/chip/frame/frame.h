// Ethernet frames as the chip reads and writes them (IEEE 802.3, IEEE 802.1Q), byte by byte in network order.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <algorithm>
#include <optional>
#include <span>

namespace vdevice::chip {

using Bytes = std::span<const uint8_t>;
using Vid = uint16_t;

constexpr size_t kMacBytes = 6;
constexpr size_t kAddressBytes = 2 * kMacBytes;
constexpr size_t kTypeBytes = 2;
constexpr size_t kHeaderBytes = kAddressBytes + kTypeBytes;
constexpr size_t kVlanTagBytes = 4;
constexpr size_t kCheckSequenceBytes = 4;  // behind every frame on the wire; what limits a rate counts it

/** The longest frame that the chip's buffers take, tags included and the check sequence not. */
constexpr size_t kMaxFrameBytes = 9600;

/** The longest frame on a port without jumbo frames, one VLAN tag included. */
constexpr size_t kMaxPlainFrameBytes = 1518;

constexpr uint16_t kVlanTpid = 0x8100;
constexpr uint16_t kVidMask = 0x0FFF;
constexpr Vid kMinVid = 1;
constexpr Vid kMaxVid = 4094;
constexpr bool is_vid(uint32_t number) {
    return number >= kMinVid && number <= kMaxVid;
}
constexpr uint16_t kPriorityMask = 0xF000;  // PCP and DEI, kept as they stand in the tag
constexpr unsigned kPcpShift = 13;
constexpr uint16_t kPcpMask = 0xE000;
constexpr uint32_t kPriorities = 8;  // 802.1p priorities 0 to 7
/** The 802.1p priority of a tag's control information. */
constexpr uint32_t priority_of(uint16_t tci) {
    return static_cast<uint32_t>(tci >> kPcpShift);
}

inline uint16_t read16(Bytes bytes, size_t offset) {
    return static_cast<uint16_t>((bytes[offset] << 8) | bytes[offset + 1]);
}

inline uint32_t read32(Bytes bytes, size_t offset) {
    return (uint32_t{read16(bytes, offset)} << 16) | read16(bytes, offset + 2);
}

inline void write16(uint8_t *to, uint16_t value) {
    to[0] = static_cast<uint8_t>(value >> 8);
    to[1] = static_cast<uint8_t>(value & 0xFF);
}

inline void write32(uint8_t *to, uint32_t value) {
    write16(to, static_cast<uint16_t>(value >> 16));
    write16(to + 2, static_cast<uint16_t>(value & 0xFFFF));
}

/** The word with the masked bits replaced by those of the value, which has no others. */
constexpr uint16_t with_bits(uint16_t word, uint16_t mask, uint32_t value) {
    return static_cast<uint16_t>((word & (0xFFFFU ^ mask)) | value);
}

/** A MAC address as a number, first byte most significant: cheap to compare and to hash. */
class Mac {
  public:
    constexpr Mac() = default;
    constexpr explicit Mac(uint64_t value) : value_{value} {}

    static Mac at(Bytes frame, size_t offset) {
        return Mac{(uint64_t{read16(frame, offset)} << 32) | read32(frame, offset + 2)};
    }

    static constexpr Mac from_bytes(const uint8_t *bytes) {
        uint64_t value = 0;
        for (size_t i = 0; i < kMacBytes; ++i) {
            value = (value << 8) | bytes[i];
        }
        return Mac{value};
    }

    constexpr uint64_t value() const { return value_; }

    constexpr uint8_t byte(size_t index) const { return static_cast<uint8_t>(value_ >> (8 * (kMacBytes - 1 - index))); }

    constexpr bool is_group() const { return (byte(0) & 1) != 0; }
    constexpr bool is_broadcast() const { return value_ == 0xFFFFFFFFFFFF; }
    /** 01:80:c2:00:00:00 to 0f: protocols between neighbours, which bridges do not pass on (IEEE 802.1Q). */
    constexpr bool is_reserved() const { return value_ >> 4 == 0x0180C200000; }

    friend constexpr bool operator==(Mac a, Mac b) { return a.value_ == b.value_; }
    friend constexpr bool operator<(Mac a, Mac b) { return a.value_ < b.value_; }

  private:
    uint64_t value_ = 0;
};

/**
 * A frame in two pieces, so that tags are taken out and put in without moving the payload: the addresses with the
 * tags that the chip inserted behind them, and the rest as it stands in the receive buffer.
 */
struct Frame {
    Bytes head;
    Bytes body;

    size_t size() const { return head.size() + body.size(); }

    void copy_to(uint8_t *to) const { std::copy(body.begin(), body.end(), std::copy(head.begin(), head.end(), to)); }
};

/** A frame of at least kAddressBytes, without its first @p tag_bytes behind the addresses. */
inline Frame split_frame(Bytes frame, size_t tag_bytes = 0) {
    return Frame{frame.first(kAddressBytes), frame.subspan(kAddressBytes + tag_bytes)};
}

/** What the chip reads of a frame. */
struct Header {
    Mac destination;
    Mac source;
    bool tagged = false; /**< a whole tag of the port's TPID follows the addresses */
    uint16_t tci = 0;    /**< the tag's control information: PCP, DEI and VID */
    Bytes payload;       /**< the frame from its own type on, behind the tag if there is one */

    Vid vid() const { return tci & kVidMask; }
    uint16_t priority() const { return tci & kPriorityMask; }
};

/** Takes whatever follows the addresses for the frame's own type. Nothing for a runt: a frame without a whole header.
 */
inline std::optional<Header> read_untagged_header(const Frame &frame) {
    if (frame.head.size() < kAddressBytes || frame.body.size() < kTypeBytes) {
        return std::nullopt;
    }
    return Header{Mac::at(frame.head, 0), Mac::at(frame.head, kMacBytes), false, 0, frame.body};
}

/** Nothing for a runt, here also a frame with a tag but no type behind it. */
inline std::optional<Header> read_header(const Frame &frame, uint16_t tpid) {
    std::optional<Header> header = read_untagged_header(frame);
    if (!header || read16(frame.body, 0) != tpid) {
        return header;
    }
    if (frame.body.size() < kVlanTagBytes + kTypeBytes) {
        return std::nullopt;
    }
    header->tagged = true;
    header->tci = read16(frame.body, kTypeBytes);
    header->payload = frame.body.subspan(kVlanTagBytes);
    return header;
}

}  // namespace vdevice::chip
