// Digit by digit.
#include "text/hex.h"

#include <string_view>

namespace text {

std::string hex(std::span<const uint8_t> octets) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string digits;
    digits.reserve(2 * octets.size());
    for (const uint8_t octet : octets) {
        digits += kDigits[octet >> 4];
        digits += kDigits[octet & 0xFU];
    }
    return digits;
}

}  // namespace text
