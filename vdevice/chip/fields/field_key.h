// The fields of one frame, as the field processor compares them with its rules.
#pragma once

#include <array>

#include "vdevice/chip/fields/field.h"
#include "vdevice/chip/frame/frame.h"
#include "vdevice/chip/frame/ip_packet.h"

namespace vdevice::chip {

/** A frame as it comes to the field processor. */
struct FieldFrame {
    int ingress;
    size_t octets; /**< its length on the wire, without the check sequence */
    const Header &header;
    uint16_t tci; /**< VLAN and priority in which it is being switched */
};

/** How many words of a key the field has; of the ingress ports there is one, as a number. */
constexpr size_t key_words(Field field) {
    switch (field) {
        case Field::kSourceIpv6:
        case Field::kDestinationIpv6:
            return 4;
        case Field::kSourceMac:
        case Field::kDestinationMac:
            return 2;
        default:
            return 1;
    }
}

/** Where the words of each field begin in a key, and behind the last one where they end. */
constexpr auto kFirstKeyWords = [] {
    std::array<uint8_t, kFields + 1> firsts{};
    for (size_t i = 0; i < kFields; ++i) {
        firsts[i + 1] = static_cast<uint8_t>(firsts[i] + key_words(static_cast<Field>(i)));
    }
    return firsts;
}();

constexpr size_t kKeyWords = kFirstKeyWords[kFields];

constexpr size_t first_key_word(Field field) {
    return kFirstKeyWords[static_cast<size_t>(field)];
}

class FieldKey {
  public:
    explicit FieldKey(const FieldFrame &frame);

    bool meets(const Qualifier &qualifier) const;

    /** A bit for each field that the frame has. */
    uint32_t present() const { return present_; }
    /** A word of the key, those of the first field first; 0 without the field. */
    uint32_t word(size_t index) const { return words_[index]; }
    int ingress() const { return static_cast<int>(words_[first_key_word(Field::kInPorts)]); }

  private:
    void set(Field field, uint32_t value);
    void set(Field field, Mac mac);
    void set_ipv6(Field field, Bytes address);
    /** @p octets is the packet as a whole. */
    void set_packet(const IpPacket &packet, Bytes octets);
    /** Marks the field as present and returns its words. */
    uint32_t *add(Field field) {
        present_ |= bit_of(field);
        return &words_[first_key_word(field)];
    }
    bool has(Field field) const { return (present_ & bit_of(field)) != 0; }
    bool is_equal(const Qualifier &qualifier) const;
    bool shares_port(const Qualifier &qualifier) const;

    static_assert(kFields <= 32, "present_ has a bit for each");
    uint32_t present_ = 0;
    std::array<uint32_t, kKeyWords> words_{};
};

}  // namespace vdevice::chip
