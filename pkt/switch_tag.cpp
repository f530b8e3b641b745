// Translation of a switch tag that was built with interface numbers.
#include "pkt/switch_tag.h"

#include <adp/pkt.h>

#include "port/map.h"

namespace adp {
namespace {

// A tag built with interface numbers has interface kFirstHighPort + bit at each bit of its second word.
void translate_bitmap(uint8_t *tag) {
    TxTag physical;
    for (uint32_t bit = 0; bit < kTxDestination.width; ++bit) {
        if ((kTxDestination.get(tag) >> bit & 1) != 0) {
            physical.add(phy_of(Intf(bit)));
        }
    }
    for (uint32_t bit = 0; bit < kTxHighPorts.width; ++bit) {
        const PhyPort port = phy_of(Intf(kFirstHighPort + bit));
        // Only ports of the second word stay: one that translates to the first word is dropped.
        if ((kTxHighPorts.get(tag) >> bit & 1) != 0 && port.value() >= kFirstHighPort) {
            physical.add(port);
        }
    }
    kTxDestination.set(tag, kTxDestination.get(physical.words()));
    kTxHighPorts.set(tag, kTxHighPorts.get(physical.words()));
}

}  // namespace
}  // namespace adp

void adp_bcmtag_dest_port_intf_2_phy(uint8_t tag[8]) {
    using namespace adp;
    switch (static_cast<TxOpcode>(kTxOpcode.get(tag))) {
        case TxOpcode::kPorts:
            translate_bitmap(tag);
            break;
        case TxOpcode::kVlanPort:
        case TxOpcode::kPort:
        case TxOpcode::kOnePort:
            kTxDestination.set(tag, static_cast<uint32_t>(phy_of(Intf(kTxDestination.get(tag))).value()));
            break;
        default:
            break;
    }
}
