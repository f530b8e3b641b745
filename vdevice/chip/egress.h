// The forms in which one frame leaves: without a VLAN tag, with one, or wrapped for the CPU. Each is built when the
// first port asks for it and then serves every other port.
#pragma once

#include <array>
#include <cstdint>

#include "vdevice/chip/frame.h"
#include "vdevice/chip/switch_tag.h"

namespace vdevice::chip {

class EgressForms {
  public:
    /** @p tci carries the VLAN and priority that the chip gave the frame. The frame must outlive this object. */
    EgressForms(Bytes addresses, Bytes payload, std::uint16_t tci)
        : addresses_{addresses}, payload_{payload}, tci_{tci} {}

    Frame untagged() const { return Frame{addresses_, payload_}; }
    Frame tagged();
    /** Receive tag naming the ingress port, then the VLAN tag, then the frame's own type and payload. */
    Frame for_cpu(int ingress_port);

  private:
    Bytes addresses_;
    Bytes payload_;
    std::uint16_t tci_;
    bool tagged_built_ = false;
    std::array<std::uint8_t, kAddressBytes + kVlanTagBytes> tagged_head_;
    std::array<std::uint8_t, kAddressBytes + kReceiveTagBytes + kVlanTagBytes> cpu_head_;
};

}  // namespace vdevice::chip
