// What of the kernel's settings is not in hardware, and why.
#pragma once

#include <compare>
#include <string>
#include <vector>

namespace switchd {

struct Remark {
    std::string subject;  /**< an interface, a bridge or a VLAN */
    std::string sentence; /**< goes on behind the subject: what becomes of it instead, and why */

    auto operator<=>(const Remark &) const = default;
};

using Remarks = std::vector<Remark>;

}  // namespace switchd
