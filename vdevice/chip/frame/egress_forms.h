// The forms in which one frame leaves: without a VLAN tag, with one, or wrapped for the CPU.
#pragma once

#include <stdint.h>
#include <array>

#include "vdevice/chip/frame/frame.h"
#include "vdevice/chip/frame/switch_tag.h"

namespace vdevice::chip {

class EgressForms {
  public:
    /**
     * @p tci carries the VLAN and priority that the chip gave the frame, @p cpu_tpid is the type of the VLAN tag that
     * the CPU gets to see. The frame must outlive this object.
     */
    EgressForms(Bytes addresses, Bytes payload, uint16_t tci, uint16_t cpu_tpid = kVlanTpid)
        : addresses_{addresses}, payload_{payload}, tci_{tci}, cpu_tpid_{cpu_tpid} {}

    uint16_t tci() const { return tci_; }
    uint32_t priority() const { return priority_of(tci_); }
    Frame untagged() const { return Frame{addresses_, payload_}; }
    /** With the tag as a port writes it. The frame holds until the next one is asked for. */
    Frame tagged(uint16_t tpid, uint16_t tci);
    /** Receive tag naming the ingress port, then the VLAN tag, then the frame's own type and payload. */
    Frame for_cpu(int ingress_port);

  private:
    Bytes addresses_;
    Bytes payload_;
    uint16_t tci_;
    uint16_t cpu_tpid_;
    std::array<uint8_t, kAddressBytes + kVlanTagBytes> tagged_head_;
    std::array<uint8_t, kAddressBytes + kReceiveTagBytes + kVlanTagBytes> cpu_head_;
};

}  // namespace vdevice::chip
