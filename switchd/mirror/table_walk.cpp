// A walk over the chip's table of addresses, an entry a call.
#include "switchd/mirror/table_walk.h"

#include <adp/port.h>
#include <adp/stg.h>

#include <algorithm>

namespace switchd {

TableWalk::Step TableWalk::next(adp_l2_entry_t &entry) {
    entry = {};
    const adp_status_t status =
        index_ < ADP_L2_CACHE_SIZE ? adp_get_nextvalid_mac_addr(index_, &entry, 0, 0) : ADP_E_DRIVER;
    // A driver that does not move on must not hold us here.
    if (status != ADP_OK || entry.index < index_) {
        index_ = 0;
        return status == ADP_FAIL ? Step::kFailed : Step::kEnd;
    }
    index_ = entry.index + 1;
    return Step::kEntry;
}

Mac mac_of(const adp_l2_entry_t &entry) {
    Mac mac;
    std::copy_n(entry.mac, mac.size(), mac.begin());
    return mac;
}

uint32_t intf_of(const adp_l2_entry_t &entry) {
    return (entry.flags & ADP_MAC_FOUND_TRUNK) != 0
               ? ADP_AGG_INTF(static_cast<uint32_t>(entry.trunk) + 1)
               : static_cast<uint32_t>(adp_phy_2_intf_id(static_cast<uint32_t>(entry.port)));
}

IntfSet ports_of(const adp_l2_entry_t &entry, uint32_t user_ports) {
    constexpr uint32_t kWordBits = 32;
    constexpr uint32_t kPorts = sizeof(adp_ports_t) * 8;
    IntfSet set = 0;
    for (uint32_t intf = 0; intf <= user_ports; ++intf) {
        const auto port = static_cast<uint32_t>(adp_intf_2_phy_id(intf));
        if (port < kPorts && (entry.ports[port / kWordBits] >> port % kWordBits & 1) != 0) {
            set |= set_of(intf);
        }
    }
    return set;
}

}  // namespace switchd
