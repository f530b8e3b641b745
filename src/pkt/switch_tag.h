// The switch tag of frames from and to the CPU: its fields as data, independent of the byte order.
#pragma once

#include "core/number.h"
#include "pkt/bytes.h"

namespace adp {

/** Both tags follow the two MAC addresses. */
inline constexpr uint32_t kMacAddressesLength = 12;
inline constexpr uint32_t kSourceMacOffset = 6;

/** Tag of a sent frame: type, word 1, word 2. */
inline constexpr uint16_t kTxTagType = 0x8874;
inline constexpr uint32_t kTxTagLength = 10;
/** Tag of a received frame: a type, which is ignored, and one word. */
inline constexpr uint32_t kRxTagLength = 6;
inline constexpr uint32_t kRxTaggedHeaderLength = kMacAddressesLength + kRxTagLength;

/** A field of a 32-bit word: its lowest bit and its width, less than 32. */
struct TagField {
    uint32_t shift;
    uint32_t width;

    constexpr uint32_t mask() const { return (1u << width) - 1; }
    [[gnu::always_inline]] constexpr uint32_t get(uint32_t word) const { return word >> shift & mask(); }
    [[gnu::always_inline]] constexpr uint32_t put(uint32_t word, uint32_t value) const {
        return (word & ~(mask() << shift)) | (value & mask()) << shift;
    }
};

inline constexpr TagField kTxOpcode{29, 3};
inline constexpr TagField kTxFlags{25, 4};
inline constexpr TagField kTxDestination{0, 25};  // one port, or a bitmap of the ports 0..24
inline constexpr TagField kRxIngressPort{0, 6};

/** What the switch does with a frame from the CPU. Opcodes 0 and 2 are not used here. */
enum class TxOpcode : uint32_t {
    kSwitch = 1,
    kVlanPort = 3,
    kPorts = 4,
    kPort = 5,
    kOnePort = 6,
    kAllPorts = 7,
};

/** Physical ports below this have bits in the first word, others in the second. */
inline constexpr int32_t kFirstHighPort = 25;
inline constexpr int32_t kLastTaggedPort = 56;

/** The two words of a sent frame's tag; the second is a bitmap of the ports 25..56. */
class TxTag {
  public:
    constexpr TxTag() = default;
    constexpr TxTag(uint32_t opcode, uint32_t flags) : first_(kTxFlags.put(kTxOpcode.put(0, opcode), flags)) {}
    explicit constexpr TxTag(const uint8_t *words) : first_(read_be32(words)), second_(read_be32(words + 4)) {}

    constexpr void write_to(uint8_t *words) const {
        write_be32(words, first_);
        write_be32(words + 4, second_);
    }

    constexpr uint32_t first() const { return first_; }
    constexpr uint32_t opcode() const { return kTxOpcode.get(first_); }
    constexpr uint32_t destination() const { return kTxDestination.get(first_); }

    /** Replaces the destination by one port, cut to the width of the field. */
    constexpr void aim_at(PhyPort port) { first_ = kTxDestination.put(first_, static_cast<uint32_t>(number(port))); }

    /** Clears the bitmap. */
    constexpr void clear_ports() {
        first_ = kTxDestination.put(first_, 0);
        second_ = 0;
    }

    /** Whether the bitmap has a port of 0..56. */
    constexpr bool has(int32_t port) const {
        return ((port < kFirstHighPort ? first_ >> port : second_ >> (port - kFirstHighPort)) & 1) != 0;
    }

    /** Adds a port to the bitmap; false for a port that has no bit in it. */
    constexpr bool add(PhyPort port) {
        const int32_t n = number(port);
        if (n < 0 || n > kLastTaggedPort) {
            return false;
        }
        if (n < kFirstHighPort) {
            first_ |= 1u << n;
        } else {
            second_ |= 1u << (n - kFirstHighPort);
        }
        return true;
    }

  private:
    uint32_t first_ = 0;
    uint32_t second_ = 0;
};

}  // namespace adp
