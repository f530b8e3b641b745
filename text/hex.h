// Octets as hexadecimal digits.
#pragma once

#include <stdint.h>
#include <span>
#include <string>

namespace text {

/** Two digits each, small letters, nothing between them. */
std::string hex(std::span<const uint8_t> octets);

}  // namespace text
