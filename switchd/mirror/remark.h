// What of the kernel's settings is not in hardware, and why.
#pragma once

#include <compare>
#include <string>
#include <vector>

namespace switchd {

struct Remark {
    std::string subject;  /**< an interface, a bridge or a VLAN */
    std::string sentence; /**< what the hardware does instead */

    auto operator<=>(const Remark &) const = default;
};

using Remarks = std::vector<Remark>;

}  // namespace switchd
