// Recognises the protocols by address, type and what follows it.
#include "vdevice/chip/tables/traps.h"

namespace vdevice::chip {
namespace {

constexpr Mac kBridges{0x0180C2000000};
constexpr Mac kSlowProtocols{0x0180C2000002};
constexpr Mac kNearestNonTpmrBridge{0x0180C2000003};
constexpr Mac kNearestBridge{0x0180C200000E};

/** Both are "slow protocols": one address, one type, told apart by the octet behind it. */
bool is_slow_protocol(const Traps &traps, const Header &header) {
    constexpr uint16_t kSlowType = 0x8809;
    constexpr uint8_t kLacpSubtype = 1;
    constexpr uint8_t kOamSubtype = 3;
    if (!(header.destination == kSlowProtocols) || header.payload.size() <= kTypeBytes ||
        read16(header.payload, 0) != kSlowType) {
        return false;
    }
    const uint8_t subtype = header.payload[kTypeBytes];
    return (traps.lacp && subtype == kLacpSubtype) || (traps.oam && subtype == kOamSubtype);
}

/** LLDP is sent to one of three addresses, by how far it shall reach. */
bool is_lldp(const Header &header) {
    constexpr uint16_t kLldpType = 0x88CC;
    return read16(header.payload, 0) == kLldpType &&
           (header.destination == kBridges || header.destination == kNearestNonTpmrBridge ||
            header.destination == kNearestBridge);
}

/** A BPDU has a length where others have their type, and both ends are the bridge protocol's (IEEE 802.1D, LLC). */
bool is_bpdu(const Header &header) {
    constexpr uint16_t kMaxLengthField = 1500;
    constexpr uint16_t kBridgeSaps = 0x4242;
    return header.destination == kBridges && header.payload.size() >= 2 * kTypeBytes &&
           read16(header.payload, 0) <= kMaxLengthField && read16(header.payload, kTypeBytes) == kBridgeSaps;
}

}  // namespace

bool is_trapped(const Traps &traps, const Header &header) {
    // Most frames are not between neighbours.
    if (!header.destination.is_reserved()) {
        return false;
    }
    return is_slow_protocol(traps, header) || (traps.lldp && is_lldp(header)) || (traps.bpdu && is_bpdu(header));
}

}  // namespace vdevice::chip
