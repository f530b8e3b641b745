// The port map: ports that the driver refuses, and ports that two rows have.
#include "tools/adpsh/audit.h"

#include <netlink_api.h>

#include <fmt/format.h>

#include <algorithm>

namespace adpsh {

void audit_port_map(const AuditTables &tables, Audit &audit) {
    audit.begin("port map");
    if (tables.port_map == nullptr || tables.last_row == nullptr) {
        return audit.leave_out(tables.port_map == nullptr ? "intf_to_phy_port" : "adp_max_phy_port_num");
    }
    const auto rows = tables.rows();
    if (!rows.empty() && *tables.last_row >= kMostRows) {
        audit.difference("adp_max_phy_port_num",
                         fmt::format("{}, and a set of ports has {}: the rows after that are not compared",
                                     *tables.last_row, kMostRows));
    }
    size_t answered = 0;
    for (size_t row = 0; row < rows.size(); ++row) {
        const uint32_t phy = rows[row].phy;
        const auto first =
            std::find_if(rows.begin(), rows.end(), [phy](const adp_port_row_t &other) { return other.phy == phy; });
        const auto earlier = static_cast<size_t>(first - rows.begin());
        if (earlier < row) {
            audit.difference(port_text(row), fmt::format("has physical port {}, as {} has", phy, port_text(earlier)));
            continue;
        }
        uint32_t enabled = 0;
        answered += audit.check(port_text(row), fmt::format("user_port_enable_get on physical port {}", phy),
                                user_port_enable_get(0, 0, static_cast<int32_t>(phy), &enabled))
                        ? 1U
                        : 0U;
    }
    audit.compared(answered, "row of the port map", "rows of the port map");
}

}  // namespace adpsh
