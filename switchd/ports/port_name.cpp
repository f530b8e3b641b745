// Reads and writes the names of the switch's interfaces.
#include "switchd/ports/port_name.h"

#include <adp/types.h>

#include <charconv>

namespace switchd {
namespace {

constexpr std::string_view kPort = "swp";
constexpr std::string_view kGroup = "agg";
constexpr char kTagMark = '.';
constexpr uint32_t kMaxVid = 4094;

/** A number from 1 to @p most, without a sign and without leading zeros: each port has one name. */
std::optional<uint32_t> number_in(std::string_view digits, uint32_t most) {
    uint32_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    const bool is_whole = error == std::errc{} && end == digits.data() + digits.size();
    return is_whole && digits.front() != '0' && number <= most ? std::optional{number} : std::nullopt;
}

std::optional<uint32_t> interface_of(std::string_view name) {
    if (name.starts_with(kPort)) {
        return number_in(name.substr(kPort.size()), ADP_USER_PORTS);
    }
    if (!name.starts_with(kGroup)) {
        return std::nullopt;
    }
    const auto group = number_in(name.substr(kGroup.size()), ADP_AGG_GROUPS);
    return group ? std::optional{ADP_AGG_INTF(*group)} : std::nullopt;
}

}  // namespace

std::optional<PortName> port_of_name(std::string_view name) {
    const size_t mark = name.find(kTagMark);
    const auto interface = interface_of(name.substr(0, mark));
    if (!interface || mark == std::string_view::npos) {
        return interface ? std::optional{PortName{*interface, 0}} : std::nullopt;
    }
    const auto vid = number_in(name.substr(mark + 1), kMaxVid);
    return vid ? std::optional{PortName{*interface, static_cast<uint16_t>(*vid)}} : std::nullopt;
}

std::string name_of(const PortName &port) {
    const bool is_group = port.intf >> ADP_INTF_TYPE_SHIFT == ADP_INTF_TYPE_AGG;
    std::string name{is_group ? kGroup : kPort};
    name += std::to_string(port.intf & ADP_INTF_INDEX_MASK);
    if (port.vid != 0) {
        name += kTagMark + std::to_string(port.vid);
    }
    return name;
}

}  // namespace switchd
