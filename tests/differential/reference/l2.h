/**
 * @file l2.h
 * What the calls on MAC addresses share: the key of an address, and narrowed arguments.
 */
#pragma once

#include <stdint.h>
#include <array>

#include "tests/differential/reference/tables.h"

namespace reference {

using Key = std::array<uint8_t, 8>;

inline Key key_of(const uint8_t *mac) {
    return {mac[0], mac[1], mac[2], mac[3], mac[4], mac[5], 0, 0};
}

inline uint32_t low16(uint32_t word) {
    return word & 0xFFFF;
}
inline uint32_t low8(uint32_t word) {
    return word & 0xFF;
}

}  // namespace reference
