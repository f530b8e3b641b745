// Frames of link aggregation control (IEEE 802.1AX): LACPDUs and marker PDUs, as octets and as values.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <array>
#include <compare>
#include <span>
#include <variant>

namespace switchd::lacp {

using Mac = std::array<uint8_t, 6>;

/** Of two systems the one with the lower identifier decides which ports are used. */
struct SystemId {
    uint16_t priority = 0;
    Mac mac{};

    auto operator<=>(const SystemId &) const = default;
};

/** Bits of a port's state in a LACPDU. */
namespace state {
constexpr uint8_t kActive = 0x01;
constexpr uint8_t kShortTimeout = 0x02;
constexpr uint8_t kAggregation = 0x04;
constexpr uint8_t kSynchronization = 0x08;
constexpr uint8_t kCollecting = 0x10;
constexpr uint8_t kDistributing = 0x20;
constexpr uint8_t kDefaulted = 0x40;
constexpr uint8_t kExpired = 0x80;
}  // namespace state

/** What a LACPDU says about one end of a link. */
struct Info {
    SystemId system;
    uint16_t key = 0;
    uint16_t port_priority = 0;
    uint16_t port = 0;
    uint8_t state = 0;

    [[nodiscard]] bool has(uint8_t bit) const { return (state & bit) != 0; }
    void set(uint8_t bit, bool on) { state = static_cast<uint8_t>(on ? state | bit : state & ~bit); }
    bool operator==(const Info &) const = default;
};

struct Lacpdu {
    Info actor; /**< the sender */
    Info partner;

    bool operator==(const Lacpdu &) const = default;
};

/** Asks the other end to send it back behind all frames that it has in hand. */
struct Marker {
    bool is_response = false;
    uint16_t port = 0;
    Mac system{};
    uint32_t transaction = 0;

    bool operator==(const Marker &) const = default;
};

/** Frames that are neither. The last two are counted, as IEEE 802.1AX defines their counters. */
enum class Unusable : uint8_t {
    kNotSlowProtocol, /**< to another address, with another type */
    kUnknown,         /**< another slow protocol, or another type at the slow protocols' address */
    kIllegal          /**< no slow protocol has this number, or lengths are wrong */
};

using Pdu = std::variant<Lacpdu, Marker, Unusable>;

/** Without the frame check sequence. */
constexpr size_t kFrameSize = 124;
using Frame = std::array<uint8_t, kFrameSize>;

/**
 * The frame begins with its destination address; it has no tag. Lengths are checked. Version, types within the PDU and
 * reserved octets are not: later versions of the protocol change them, and may be longer.
 */
Pdu pdu_of(std::span<const uint8_t> frame);
Frame frame_of(const Lacpdu &pdu, const Mac &source);
Frame frame_of(const Marker &marker, const Mac &source);

}  // namespace switchd::lacp
