// What decides about a frame between the chip and the kernel: its addresses, its tag, its protocol.
#pragma once

#include <stdint.h>
#include <optional>

#include "switchd/kernel/kernel_state.h"
#include "vdevice/chip/frame/frame.h"

namespace switchd {

struct FrameHeader {
    Mac destination{};
    Mac source{};
    uint16_t type = 0;           /**< behind the tag */
    std::optional<uint16_t> vid; /**< of the tag, if there is one */
    vdevice::chip::Frame frame;  /**< without the tag */
    vdevice::chip::Frame whole;  /**< as it came */
    bool is_to_group() const { return (destination[0] & 1) != 0; }
};

/** Of a frame from the chip, which always has a tag, of whatever type. Nothing if it is too short. */
std::optional<FrameHeader> read_tagged(vdevice::chip::Bytes octets);
/** Of a frame from the kernel. */
std::optional<FrameHeader> read_frame(vdevice::chip::Bytes octets);

/** 01:80:c2:00:00:00 to 0f: protocols between neighbours, such as LLDP, which no bridge passes on (IEEE 802.1Q). */
bool is_link_local(const Mac &destination);
/** Groups of IPv4 that stations ask for: all but 224.0.0.0 to 224.0.0.255 (RFC 4541). */
bool is_ipv4_group(const Mac &destination);
/** The same of IPv6: all but ff02::1. */
bool is_ipv6_group(const Mac &destination);
/** Frames that the chip gives to the CPU alone: those between neighbours and bridges, IGMP and MLD. */
bool is_trapped(const FrameHeader &header);
/** The port access entities' own frames (IEEE 802.1X). */
bool is_eapol(const FrameHeader &header);
/** LACPDUs and markers (IEEE 802.1AX). */
bool is_lacp(const FrameHeader &header);

}  // namespace switchd
