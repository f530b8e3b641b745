// The selection logic: which ports of a group may be used together.
#pragma once

#include <stdint.h>
#include <compare>
#include <optional>
#include <span>

#include "switchd/lacp/port.h"

namespace switchd::lacp {

/** So many ports of a group are in use at most. */
constexpr size_t kMostSelected = 8;

/** The system, and the group of it, that the ports of a group lead to. */
struct PartnerGroup {
    SystemId system;
    uint16_t key = 0;

    auto operator<=>(const PartnerGroup &) const = default;
};

/**
 * Selects among the ports of a group.
 *
 * A port can be selected while its partner is known, can aggregate and is another system. The group's partner is that
 * of its first such port, and stays until no port leads to it; then that of the best port. Ports that lead to others
 * are not selected. If more than kMostSelected lead to it, the end with the lower system identifier says by its ports'
 * priorities and numbers which are used, so that both ends use the same; the others stand by.
 */
void select_ports(std::span<Port *const> ports, std::optional<PartnerGroup> &partner);

}  // namespace switchd::lacp
