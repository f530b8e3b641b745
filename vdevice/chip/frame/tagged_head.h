// The tags that the chip puts into frames as they leave. They stand behind the addresses, in front of the payload.
#pragma once

#include <stdint.h>
#include <array>

#include "vdevice/chip/frame/frame.h"
#include "vdevice/chip/frame/switch_tag.h"

namespace vdevice::chip {

/** Room for a frame's addresses and the tags behind them. A tagged frame holds until the next one is tagged. */
class TaggedHead {
  public:
    Frame with_vlan_tag(const Frame &untagged, uint16_t tpid, uint16_t tci);
    /** For the CPU: the receive tag that names the ingress port, and a VLAN tag behind it. */
    Frame with_receive_tag(const Frame &untagged, int ingress_port, uint16_t tpid, uint16_t tci);

  private:
    std::array<uint8_t, kAddressBytes + kReceiveTagBytes + kVlanTagBytes> octets_;
};

}  // namespace vdevice::chip
