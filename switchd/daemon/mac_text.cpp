// Two digits an octet.
#include "switchd/daemon/mac_text.h"

#include <charconv>

#include "text/hex.h"

namespace switchd {

std::optional<Mac> mac_of_text(std::string_view text) {
    constexpr size_t kStride = 3;  // two digits, and the colon behind them
    constexpr int kBase = 16;
    Mac mac{};
    if (text.size() != mac.size() * kStride - 1) {
        return std::nullopt;
    }
    for (size_t i = 0; i < mac.size(); ++i) {
        const char *const digits = text.data() + i * kStride;
        const auto [end, error] = std::from_chars(digits, digits + 2, mac[i], kBase);
        const bool is_separated = i + 1 == mac.size() || digits[2] == ':';
        if (error != std::errc{} || end != digits + 2 || !is_separated) {
            return std::nullopt;
        }
    }
    return mac;
}

std::string text_of_mac(const Mac &mac) {
    std::string text;
    for (const uint8_t octet : mac) {
        text += (text.empty() ? "" : ":") + text::hex({&octet, 1});
    }
    return text;
}

bool is_station_address(const Mac &mac) {
    constexpr uint8_t kGroup = 1;
    return mac != Mac{} && (mac[0] & kGroup) == 0;
}

}  // namespace switchd
