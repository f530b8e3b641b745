// The tags between the switch chip and its CPU. Both stand behind the source address: the transmit tag tells the
// chip what to do with a frame from the CPU, the receive tag tells the CPU which port a frame came in on.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <optional>

#include "vdevice/chip/frame/frame.h"
#include "vdevice/chip/frame/port_set.h"

namespace vdevice::chip {

constexpr uint16_t kSwitchTagType = 0x8874;

/** A field of a 32-bit tag word. */
struct TagField {
    unsigned shift;
    unsigned width;

    constexpr uint32_t mask() const { return (uint32_t{1} << width) - 1; }
    constexpr uint32_t get(uint32_t word) const { return (word >> shift) & mask(); }
    constexpr uint32_t put(uint32_t value) const { return (value & mask()) << shift; }
};

// Transmit tag: type, word 1, word 2.
constexpr size_t kTransmitTagBytes = 10;
constexpr size_t kTransmitWord1At = kAddressBytes + kTypeBytes;
constexpr size_t kTransmitWord2At = kTransmitWord1At + 4;
constexpr TagField kOpcode{29, 3};
constexpr TagField kDestination{0, 25};
constexpr int kWord1Ports = 25;  // word 1 carries the bits of ports 0..24, word 2 those of the ports from 25 on

// Receive tag: type, one word.
constexpr size_t kReceiveTagBytes = 6;
constexpr TagField kIngressPort{0, 6};

enum class Opcode : uint8_t {
    kNone = 0,
    kSwitched = 1, /**< forwarded like a frame that came in on the CPU port */
    kReserved = 2,
    kOnePort = 3,     /**< one port, the egress rule of the frame's VLAN applied */
    kPorts = 4,       /**< a set of ports, the egress rule of the frame's VLAN applied */
    kOnePortAsIs = 5, /**< one port, the frame unchanged */
    kOnePortRaw = 6,  /**< one port, the frame unchanged */
    kPortsRaw = 7,    /**< a set of ports, the frame unchanged */
};

struct TransmitTag {
    Opcode opcode = Opcode::kNone;
    uint32_t destination = 0;
    uint32_t word2 = 0;

    bool names_one_port() const {
        return opcode == Opcode::kOnePort || opcode == Opcode::kOnePortAsIs || opcode == Opcode::kOnePortRaw;
    }
    bool names_ports() const { return opcode == Opcode::kPorts || opcode == Opcode::kPortsRaw; }
    bool applies_egress_rule() const { return opcode == Opcode::kOnePort || opcode == Opcode::kPorts; }

    /** The set of ports that a bitmap opcode names. */
    PortSet ports() const {
        PortSet set;
        for (int port = 0; port < kWord1Ports; ++port) {
            if (((destination >> port) & 1) != 0) {
                set.add(port);
            }
        }
        for (int bit = 0; bit < PortSet::kWordBits; ++bit) {
            if (((word2 >> bit) & 1) != 0) {
                set.add(kWord1Ports + bit);
            }
        }
        return set;
    }
};

/** Nothing if the frame is too short for the tag and a type behind it, or carries another type. */
inline std::optional<TransmitTag> read_transmit_tag(Bytes frame) {
    if (frame.size() < kHeaderBytes + kTransmitTagBytes || read16(frame, kAddressBytes) != kSwitchTagType) {
        return std::nullopt;
    }
    const uint32_t word1 = read32(frame, kTransmitWord1At);
    return TransmitTag{static_cast<Opcode>(kOpcode.get(word1)), kDestination.get(word1),
                       read32(frame, kTransmitWord2At)};
}

}  // namespace vdevice::chip
