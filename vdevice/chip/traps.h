// Protocol frames that are handed to the CPU instead of being switched. Each protocol has a switch of its own.
#pragma once

#include <cstdint>

#include "vdevice/chip/frame.h"

namespace vdevice::chip {

struct Traps {
    bool lacp = false;          /**< Link Aggregation Control Protocol, IEEE 802.1AX */
    bool oam = false;           /**< operation, administration and maintenance, IEEE 802.3 clause 57 */
    std::uint32_t self_mac = 0; /**< frames to the device's own address: kept without effect */
};

/** Both are "slow protocols": one address, one type, told apart by the octet behind it. */
inline bool is_trapped(const Traps &traps, const Header &header) {
    constexpr Mac kSlowProtocols{0x0180C2000002};
    constexpr std::uint16_t kSlowType = 0x8809;
    constexpr std::uint8_t kLacpSubtype = 1;
    constexpr std::uint8_t kOamSubtype = 3;
    if (!(header.destination == kSlowProtocols) || header.payload.size() <= kTypeBytes ||
        read16(header.payload, 0) != kSlowType) {
        return false;
    }
    const std::uint8_t subtype = header.payload[kTypeBytes];
    return (traps.lacp && subtype == kLacpSubtype) || (traps.oam && subtype == kOamSubtype);
}

}  // namespace vdevice::chip
