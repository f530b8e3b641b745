// The interfaces of the switch by name: "swp3" and "agg1", and "swp3.100" for their frames with a tag.
#pragma once

#include <stdint.h>
#include <compare>
#include <optional>
#include <string>
#include <string_view>

namespace switchd {

/** What an interface stands for. */
struct PortName {
    uint32_t intf = 0; /**< as libadp numbers it: a user port or an aggregation interface */
    uint16_t vid = 0;  /**< of the tag that its frames have on the wire; 0 for the port itself */

    auto operator<=>(const PortName &) const = default;
};

/** Nothing if no port of the switch is named so. */
std::optional<PortName> port_of_name(std::string_view name);
std::string name_of(const PortName &port);

}  // namespace switchd
