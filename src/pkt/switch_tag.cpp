// Translation of a switch tag that was built with interface numbers.
#include "pkt/switch_tag.h"

#include <adp/pkt.h>

#include "core/port_map.h"

namespace adp {
namespace {

// A tag built with interface numbers has the bits of the ports with these numbers.
TxTag with_physical_ports(const TxTag &tag) {
    TxTag physical = tag;
    physical.clear_ports();
    for (int32_t n = 0; n <= kLastTaggedPort; ++n) {
        const PhyPort port = phy_of(Intf(static_cast<uint32_t>(n)));
        // Contract: an interface of the second word whose port belongs into the first word is dropped.
        if (tag.has(n) && (n < kFirstHighPort || number(port) >= kFirstHighPort)) {
            physical.add(port);
        }
    }
    return physical;
}

}  // namespace
}  // namespace adp

using namespace adp;

void adp_bcmtag_dest_port_intf_2_phy(uint8_t tag[8]) {
    TxTag translated(tag);
    switch (static_cast<TxOpcode>(translated.opcode())) {
        case TxOpcode::kPorts:
            translated = with_physical_ports(translated);
            break;
        case TxOpcode::kVlanPort:
        case TxOpcode::kPort:
        case TxOpcode::kOnePort:
            translated.aim_at(phy_of(Intf(translated.destination())));
            break;
        default:
            return;
    }
    translated.write_to(tag);
}
