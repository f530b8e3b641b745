// How a port reads and writes VLAN tags.
#pragma once

#include <cstdint>

#include "vdevice/chip/frame/frame.h"
#include "vdevice/chip/frame/switch_tag.h"

namespace vdevice::chip {

/** Stacked VLANs (IEEE 802.1Q, provider bridges); the numbers are those of the driver calls. */
enum class DoubleTag : std::uint8_t {
    kOff,
    kInternal, /**< towards the provider: the outer tag is the service's */
    kExternal, /**< towards the customer: all tags are the customer's own, and payload */
};

constexpr std::uint32_t kDoubleTagModes = 3;

struct PortTags {
    DoubleTag mode = DoubleTag::kOff;
    std::uint16_t tpid = kVlanTpid; /**< tag protocol identifier: the type of the outer tag */
};

/** Smaller numbers are lengths, and the switch tag's type must not be taken for a VLAN's. */
constexpr bool is_tpid(std::uint32_t number) {
    constexpr std::uint32_t kFirstType = 0x0600;
    constexpr std::uint32_t kLastType = 0xFFFF;
    return number >= kFirstType && number <= kLastType && number != kSwitchTagType;
}

}  // namespace vdevice::chip
