// The words for the reasons to drop.
#include "vdevice/chip/tables/port.h"

namespace vdevice::chip {

const Wording &wording(Drop reason) {
    static constexpr std::array<Wording, kDropReasons> kRows = {{
        {"port_down", "came in on a port that is disabled or has no link"},
        {"runt", "no whole Ethernet header"},
        {"oversize", "longer than the port takes"},
        {"vlan_missing", "its VLAN does not exist"},
        {"not_member", "the ingress port is not a member of its VLAN"},
        {"same_port", "its destination is behind the port it came in on"},
        {"egress_not_member", "its destination's port is not a member of its VLAN"},
        {"egress_down", "its destination's port is disabled or has no link"},
        {"no_destination", "flooded or redirected, but no other such port is up"},
        {"no_switch_tag", "from the CPU without a whole switch tag"},
        {"bad_opcode", "from the CPU with an unknown opcode"},
        {"directed_to_cpu", "from the CPU, directed to the CPU port itself"},
        {"directed_to_unknown", "from the CPU, directed to a port that the chip does not have"},
        {"unknown_source", "from an address that the port's learning mode does not let pass"},
        {"isolated", "its destination's port is not in the ingress port's egress set"},
        {"rule", "by a rule of the field processor, or because the port's frames must meet one"},
        {"meter", "over the rate of a rule's meter"},
        {"loopback", "from the wire of a port in loopback, or looped back too often"},
        {"filtered", "from or to an address that is filtered"},
        {"learn_limit", "from an address that a limit does not let be learned"},
        {"unknown_group", "to an IP multicast group without an entry"},
        {"dos_same_mac", "its source address is its destination address"},
        {"dos_land", "an IP packet from its own destination"},
        {"dos_null_scan", "a TCP segment without a flag"},
        {"dos_syn_fin", "a TCP segment that opens and closes at once"},
        {"dos_xmas_scan", "a TCP segment with FIN, PSH and URG alone"},
        {"dos_fragment", "a TCP fragment made to hide the segment's flags"},
        {"stp_blocked", "the port does not forward in the spanning-tree group of its VLAN"},
        {"stp_egress", "its destination's port does not forward in that group"},
        {"policed", "over the port's ingress limit"},
        {"storm", "over one of the port's storm limits"},
    }};
    return kRows[static_cast<size_t>(reason)];
}

}  // namespace vdevice::chip
