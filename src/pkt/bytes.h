// Big-endian reads and writes, byte by byte.
#pragma once

#include <stdint.h>

namespace adp {

constexpr uint32_t read_be16(const uint8_t *bytes) {
    return static_cast<uint32_t>(bytes[0] << 8 | bytes[1]);
}

constexpr uint32_t read_be32(const uint8_t *bytes) {
    return read_be16(bytes) << 16 | read_be16(bytes + 2);
}

constexpr void write_be16(uint8_t *bytes, uint32_t value) {
    bytes[0] = static_cast<uint8_t>(value >> 8);
    bytes[1] = static_cast<uint8_t>(value);
}

constexpr void write_be32(uint8_t *bytes, uint32_t value) {
    write_be16(bytes, value >> 16);
    write_be16(bytes + 2, value);
}

}  // namespace adp
