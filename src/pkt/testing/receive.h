// Shared by the receive tests: frames as the switch delivers them.
#pragma once

#include "tests/support/library_test.h"

namespace receive_test {

using Bytes = std::vector<uint8_t>;

inline const Bytes kAddresses = {0x02, 0, 0, 0, 0, 1, 0x02, 0, 0, 0, 0, 2};

inline Bytes concat(std::initializer_list<Bytes> parts) {
    Bytes result;
    for (const Bytes &part : parts) {
        result.insert(result.end(), part.begin(), part.end());
    }
    return result;
}

/** The receive tag; all bits but the six of the port are noise that must be ignored. */
inline Bytes rx_tag(uint8_t port) {
    return {0x12, 0x34, 0xFF, 0xFF, 0xFF, static_cast<uint8_t>(0xC0 | port)};
}

/** A received frame: addresses, receive tag, and what follows. */
inline Bytes received(uint8_t port, std::initializer_list<Bytes> rest) {
    return concat({kAddresses, rx_tag(port), concat(rest)});
}

/** The same frame once its tag is stripped. */
inline Bytes stripped(const Bytes &frame) {
    Bytes result = frame;
    result.erase(result.begin() + 12, result.begin() + 18);
    return result;
}

inline const Bytes kVlan100 = {0x81, 0x00, 0x20, 0x64};  // priority 1, VLAN 100
inline const Bytes kVlan7 = {0x81, 0x00, 0x00, 0x07};
inline const Bytes kOuter = {0x91, 0x00, 0x00, 0xC8};
inline const Bytes kIpv4Type = {0x08, 0x00};
inline const Bytes kIpv6Type = {0x86, 0xDD};

}  // namespace receive_test
