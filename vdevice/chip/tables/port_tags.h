// How a port reads and writes VLAN tags.
#pragma once

#include <stdint.h>

#include "vdevice/chip/frame/frame.h"
#include "vdevice/chip/frame/switch_tag.h"

namespace vdevice::chip {

/** Stacked VLANs (IEEE 802.1Q, provider bridges); the numbers are those of the driver calls. */
enum class DoubleTag : uint8_t {
    kOff,
    kInternal, /**< towards the provider: the outer tag is the service's */
    kExternal, /**< towards the customer: all tags are the customer's, and part of the payload */
};

constexpr uint32_t kDoubleTagModes = 3;

struct PortTags {
    DoubleTag mode = DoubleTag::kOff;
    uint16_t tpid = kVlanTpid; /**< tag protocol identifier: the type of the outer tag */
};

/** Smaller numbers are lengths, and the switch tag's type must not be taken for a VLAN's. */
constexpr bool is_tpid(uint32_t number) {
    constexpr uint32_t kFirstType = 0x0600;
    constexpr uint32_t kLastType = 0xFFFF;
    return number >= kFirstType && number <= kLastType && number != kSwitchTagType;
}

}  // namespace vdevice::chip
