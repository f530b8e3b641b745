// From the tags of a frame on the wire to its VLAN and priority in the chip, and back: tag protocol identifiers, double
// tags, VLANs by subnet and translation.
#pragma once

#include <stdint.h>
#include <optional>

#include "vdevice/chip/tables/classified.h"
#include "vdevice/chip/tables/port.h"
#include "vdevice/chip/tables/subnet_table.h"
#include "vdevice/chip/tables/vid_map.h"

namespace vdevice::chip {

/** The header as a port reads it: on a port towards a customer the tags are part of the payload. */
std::optional<Header> read_header(const PortTags &tags, const Frame &frame);

struct TagRules {
    explicit TagRules(const ChipPorts &ports) : ingress{ports}, egress{ports}, double_tags{ports}, subnets{ports} {}

    /** The VLAN and priority of a frame that came in on the port, with these settings. */
    Classified classify(int port, const Port &settings, const Header &header) const;
    /** The tag's control information as the port sends it. */
    uint16_t on_egress(int port, uint16_t tci) const;

    VidMap ingress;
    VidMap egress;
    VidMap double_tags; /**< service VLANs by the customer's VLAN */
    SubnetTable subnets;
};

}  // namespace vdevice::chip
