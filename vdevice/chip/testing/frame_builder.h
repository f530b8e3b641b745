// For tests: frames put together from their parts, as in kBroadcast + station(1) + vlan_tag(100) + kPayload.
#pragma once

#include "vdevice/chip/frame/frame.h"
#include "vdevice/chip/frame/switch_tag.h"
#include "vdevice/chip/testing/recording_sink.h"

namespace vdevice::chip::test {

inline Octets operator+(Octets left, const Octets &right) {
    for (const uint8_t octet : right) {
        left.push_back(octet);
    }
    return left;
}

inline Octets octets16(uint16_t value) {
    Octets octets(2);
    write16(octets.data(), value);
    return octets;
}

inline Octets octets32(uint32_t value) {
    Octets octets(4);
    write32(octets.data(), value);
    return octets;
}

inline const Octets kBroadcast(kMacBytes, 0xFF);
inline const Octets kPayload = octets16(0x0800) + Octets(46, 0xA5);

/** The unicast address number @p number. */
inline Octets station(uint8_t number) {
    return {0x02, 0, 0, 0, 0, number};
}

inline Octets vlan_tag(uint16_t tci) {
    return octets16(kVlanTpid) + octets16(tci);
}

inline Octets transmit_tag(unsigned opcode, uint32_t destination, uint32_t word2 = 0) {
    return octets16(kSwitchTagType) + octets32(kOpcode.put(opcode) | destination) + octets32(word2);
}

inline Octets receive_tag(uint32_t ingress_port) {
    return octets16(kSwitchTagType) + octets32(ingress_port);
}

}  // namespace vdevice::chip::test
