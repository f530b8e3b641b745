// The switch tag of frames from and to the CPU: its fields as data, read and written byte by byte, so that they are
// right on either byte order.
#ifndef PKT_SWITCH_TAG_H
#define PKT_SWITCH_TAG_H

#include "pkt/bytes.h"
#include "port/number.h"

namespace adp {

/** Both tags stand behind the two MAC addresses. */
inline constexpr uint32_t kMacAddressesLength = 12;
inline constexpr uint32_t kSourceMacOffset = 6;

/** Tag of a sent frame: type, word 1, word 2. */
inline constexpr uint16_t kTxTagType = 0x8874;
inline constexpr uint32_t kTxTagLength = 10;
/** Tag of a received frame: a type that is not looked at, and one word. */
inline constexpr uint32_t kRxTagLength = 6;
inline constexpr uint32_t kRxTaggedHeaderLength = kMacAddressesLength + kRxTagLength;

/** A field of a tag: the 32-bit word that holds it (its offset from the tag's first word), its lowest bit, its width.
 */
struct TagField {
    uint32_t offset;
    uint32_t shift;
    uint32_t width;

    constexpr uint32_t mask() const { return width == 32 ? 0xFFFFFFFFu : (1u << width) - 1; }
    constexpr uint32_t get(const uint8_t *words) const { return read_be32(words + offset) >> shift & mask(); }
    constexpr void set(uint8_t *words, uint32_t value) const {
        const uint32_t rest = read_be32(words + offset) & ~(mask() << shift);
        write_be32(words + offset, rest | (value & mask()) << shift);
    }
};

inline constexpr uint32_t kTxWordsLength = 8;
inline constexpr TagField kTxOpcode{0, 29, 3};
inline constexpr TagField kTxFlags{0, 25, 4};
inline constexpr TagField kTxDestination{0, 0, 25};  // one port, or a bitmap of the ports 0..24
inline constexpr TagField kTxHighPorts{4, 0, 32};    // bitmap of the ports 25..56
inline constexpr TagField kRxIngressPort{0, 0, 6};

/** What the switch does with a frame from the CPU. Opcodes 0 and 2 are not used here. */
enum class TxOpcode : uint32_t {
    kSwitch = 1,
    kVlanPort = 3,
    kPorts = 4,
    kPort = 5,
    kOnePort = 6,
    kAllPorts = 7,
};

/** Physical ports below this stand in the first word's bitmap, the others in the second's. */
inline constexpr int32_t kFirstHighPort = 25;
inline constexpr int32_t kLastTaggedPort = 56;

/** The two words of a sent frame's tag. */
class TxTag {
  public:
    constexpr TxTag() = default;
    constexpr TxTag(uint32_t opcode, uint32_t flags) {
        kTxOpcode.set(words_, opcode);
        kTxFlags.set(words_, flags);
    }

    constexpr const uint8_t *words() const { return words_; }

    /** Replaces the destination by one port; only the field's low bits of the number have room. */
    constexpr void aim_at(PhyPort port) { kTxDestination.set(words_, static_cast<uint32_t>(port.value())); }

    /** Adds a port to the bitmap; false for a port that has no bit in it. */
    constexpr bool add(PhyPort port) {
        const int32_t number = port.value();
        if (number < 0 || number > kLastTaggedPort) {
            return false;
        }
        const TagField &field = number < kFirstHighPort ? kTxDestination : kTxHighPorts;
        const auto bit = static_cast<uint32_t>(number < kFirstHighPort ? number : number - kFirstHighPort);
        field.set(words_, field.get(words_) | 1u << bit);
        return true;
    }

  private:
    uint8_t words_[kTxWordsLength] = {};
};

}  // namespace adp

#endif
