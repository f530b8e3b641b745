// Shared by the receive tests: frames as the switch delivers them, and calls that parse them.
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

/** A frame and its descriptor for __adp_receive_frame(). */
class ParseTest : public library_test::LibraryTest {
  protected:
    adp_status_t parse(Bytes frame, int32_t check = 0, int vlan_tag_offset = -1) {
        bytes = std::move(frame);
        desc = {};
        desc.frame = bytes.data();
        desc.length = static_cast<uint32_t>(bytes.size());
        if (vlan_tag_offset >= 0) {
            desc.vlan_tag = bytes.data() + vlan_tag_offset;
        }
        return __adp_receive_frame(&desc, check);
    }

    /** Offset of a header from the frame's start; -1 when it was not found. */
    long at(const uint8_t *header) const { return header == nullptr ? -1 : header - bytes.data(); }

    Bytes bytes;
    adp_rx_frame_t desc = {};
};

}  // namespace receive_test
