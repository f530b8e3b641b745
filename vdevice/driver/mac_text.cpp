// MAC addresses as text, and back.
#include "vdevice/driver/mac_text.h"

namespace vdevice::driver {
namespace {

constexpr char kDigits[] = "0123456789abcdef";
constexpr size_t kPairStride = 3;  // two digits and the colon behind them
constexpr size_t kTextLength = chip::kMacBytes * kPairStride - 1;
constexpr unsigned kDigitBits = 4;

std::optional<uint8_t> digit_value(char digit) {
    if (digit >= '0' && digit <= '9') {
        return static_cast<uint8_t>(digit - '0');
    }
    const char lower = static_cast<char>(digit | 0x20);
    if (lower >= 'a' && lower <= 'f') {
        return static_cast<uint8_t>(lower - 'a' + 10);
    }
    return std::nullopt;
}

}  // namespace

std::string to_text(chip::Mac mac) {
    std::string text;
    for (size_t i = 0; i < chip::kMacBytes; ++i) {
        if (i != 0) {
            text += ':';
        }
        text += kDigits[mac.byte(i) >> kDigitBits];
        text += kDigits[mac.byte(i) & 0xF];
    }
    return text;
}

std::optional<chip::Mac> parse_mac(std::string_view text) {
    if (text.size() != kTextLength) {
        return std::nullopt;
    }
    uint64_t value = 0;
    for (size_t at = 0; at < kTextLength; at += kPairStride) {
        const auto high = digit_value(text[at]);
        const auto low = digit_value(text[at + 1]);
        const bool separated = at + 2 == kTextLength || text[at + 2] == ':';
        if (!high || !low || !separated) {
            return std::nullopt;
        }
        value = (value << 8) | static_cast<uint64_t>((*high << kDigitBits) | *low);
    }
    return chip::Mac{value};
}

}  // namespace vdevice::driver
