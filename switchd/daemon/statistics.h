// The hardware's counters.
#pragma once

#include <stdint.h>
#include <nlohmann/json_fwd.hpp>
#include <vector>

namespace switchd {

/** {"name": "swp3", "rx_octets": ...}: all counters of a port or a group. Throws a vdevice::io::Error if they cannot be
 * read. */
nlohmann::json counters_of(uint32_t intf);

/** The answer to "statistics", of these interfaces. */
nlohmann::json statistics(const std::vector<uint32_t> &interfaces);

}  // namespace switchd
