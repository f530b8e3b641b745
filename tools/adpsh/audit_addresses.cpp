// Reads the driver's L2 table, entry by entry.
#include "tools/adpsh/audit.h"

#include <netlink_api.h>

#include <fmt/format.h>

namespace adpsh {

namespace {

// More than any chip has: the end of a table that never ends.
constexpr uint32_t kMostAddresses = 65536;

}  // namespace

std::vector<adp_l2_entry_t> read_addresses(Audit &audit) {
    std::vector<adp_l2_entry_t> entries;
    uint32_t index = 0;
    while (index < kMostAddresses) {
        adp_l2_entry_t entry = {};
        if (user_netlink_mac_nextValidAddr_get(0, index, &entry, 0) != 0) {
            break;
        }
        if (entry.index < index || entry.index >= kMostAddresses) {
            audit.difference("user_netlink_mac_nextValidAddr_get",
                             fmt::format("gave entry {}, asked for the next one from {} on: the rest is not compared",
                                         entry.index, index));
            break;
        }
        entries.push_back(entry);
        index = entry.index + 1;
    }
    audit.compared(entries.size(), "address of the driver", "addresses of the driver");
    return entries;
}

}  // namespace adpsh
