// Bitmaps of ports and interfaces: bit n of word n / 32 stands for number n.
#pragma once

#include <adp/types.h>

namespace adp {

inline constexpr uint32_t kWordBits = 32;
/** The positions of a two-word bitmap that are used: the CPU port and the 26 user ports. */
inline constexpr uint32_t kBitmapPositions = ADP_USER_PORTS + 1;
inline constexpr uint32_t kPortSetBits = 8 * kWordBits;

[[gnu::always_inline]] constexpr bool has_bit(const uint32_t *words, uint32_t n) {
    return (words[n / kWordBits] >> (n % kWordBits) & 1) != 0;
}

[[gnu::always_inline]] constexpr void set_bit(uint32_t *words, uint32_t n) {
    words[n / kWordBits] |= 1u << (n % kWordBits);
}

/** Sets bit n of the words unless it lies outside them. */
template <uint32_t kWords>
constexpr void set_bit_inside(uint32_t (&words)[kWords], uint32_t n) {
    if (n < kWords * kWordBits) {
        set_bit(words, n);
    }
}

/** The physical ports of a 256-bit set of interfaces; unmapped ones are dropped. */
adp_port_set_t phy_set_of(const uint32_t *intfs);

/** The interfaces of a 256-bit set of physical ports; unmapped ones are dropped. */
adp_port_set_t intf_set_of(const uint32_t *ports);

}  // namespace adp
