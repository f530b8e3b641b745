// Multicast groups: those that the shell's lines have made against the driver's.
#include "tools/adpsh/audit.h"

#include "calls/describe.h"

#include <netlink_api.h>

#include <fmt/format.h>

#include <algorithm>
#include <cstring>

namespace adpsh {

namespace {

std::string physical_text(const adp_ports_t &ports) {
    return calls::ports_text(ports, std::size(ports));
}

}  // namespace

void audit_multicast(const MulticastGroups &groups, const std::vector<adp_l2_entry_t> &addresses, Audit &audit) {
    audit.begin("multicast");
    for (const auto &[group, ports] : groups.all()) {
        const auto &[vid, mac] = group;
        uint8_t key[NETLINK_MAC_KEY_BYTES] = {};
        std::copy(mac.begin(), mac.end(), key);
        netlink_mcast_entry_t entry = {};
        const std::string place = address_text(key, vid);
        if (audit.check(place, "User_mcast_port_get", User_mcast_port_get(0, 0, key, vid, &entry)) &&
            std::memcmp(entry.ports, ports.word, sizeof entry.ports) != 0) {
            audit.difference(place, fmt::format("by the lines it has the physical ports {}, in the driver {}",
                                                physical_text(ports.word), physical_text(entry.ports)));
        }
    }
    for (const adp_l2_entry_t &entry : addresses) {
        MulticastGroups::Key key{entry.vid, {}};
        std::copy(std::begin(entry.mac), std::end(entry.mac), key.second.begin());
        if ((entry.mac[0] & 1) != 0 && groups.all().count(key) == 0) {
            audit.difference(address_text(entry.mac, entry.vid),
                             fmt::format("in the driver with the physical ports {}, no line has made it",
                                         physical_text(entry.ports)));
        }
    }
    audit.compared(groups.all().size(), "multicast group of this shell", "multicast groups of this shell");
}

}  // namespace adpsh
