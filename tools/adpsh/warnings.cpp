// Warnings about the port map: ports that it does not have, and a map that was never filled.
#include "tools/adpsh/warnings.h"

#include "tools/adpsh/convert.h"

#include <adp/adp.h>

#include <fmt/format.h>

#include <algorithm>

namespace adpsh {

namespace {

constexpr size_t kWordBits = 32;

/** A set of interfaces that the library translates. Sets of physical ports are passed by address. */
bool is_interface_set(const Slot &slot) {
    const calls::Param &parameter = *slot.parameter;
    return parameter.direction == calls::Direction::kIn && parameter.element.kind == calls::Kind::kU32 &&
           parameter.counted_by == calls::kNotCounted && parameter.extent == kPortSetWords && !slot.is_null;
}

std::string beyond_map(const Slot &slot) {
    std::string ports;
    size_t count = 0;
    for (size_t port = size_t{adp_max_phy_port_num} + 1; port < kPortSetWords * kWordBits; ++port) {
        const uint8_t *const word = slot.storage.data() + port / kWordBits * sizeof(uint32_t);
        if ((calls::load(calls::Kind::kU32, word) >> (port % kWordBits) & 1) != 0) {
            ports += fmt::format("{}{}", count++ == 0 ? "" : ", ", port);
        }
    }
    if (count == 0) {
        return {};
    }
    return fmt::format("'{}': port{} {} {} beyond the map, which has user ports 1 to {}: the library leaves {} out",
                       slot.parameter->name, count == 1 ? "" : "s", ports, count == 1 ? "is" : "are",
                       adp_max_phy_port_num, count == 1 ? "it" : "them");
}

/** About a user port that a call rejected. */
std::string no_such_port(const Outcome &outcome, const Slot &slot) {
    const calls::Param &parameter = *slot.parameter;
    if (outcome.result == 0 || !parameter.element.is_interface || parameter.direction != calls::Direction::kValue) {
        return {};
    }
    const int64_t intf = calls::load(parameter.element.kind, slot.storage.data());
    if (intf >> ADP_INTF_TYPE_SHIFT != ADP_INTF_TYPE_USER_PORT || intf <= adp_max_phy_port_num) {
        return {};
    }
    return fmt::format("'{}': port {} is beyond the map, which has user ports 1 to {}", parameter.name, intf,
                       adp_max_phy_port_num);
}

bool takes_interfaces(const Outcome &outcome) {
    const auto &slots = outcome.arguments->slots();
    return std::any_of(slots.begin(), slots.end(), [](const Slot &slot) {
        return slot.parameter->is_read() && (slot.parameter->element.is_interface || is_interface_set(slot));
    });
}

/** Whether the map explains what the call did: a set loses its ports in silence, any other call fails. */
bool may_miss_the_map(const Outcome &outcome) {
    const auto &slots = outcome.arguments->slots();
    return takes_interfaces(outcome) &&
           (outcome.result != 0 || std::any_of(slots.begin(), slots.end(), is_interface_set));
}

}  // namespace

std::vector<std::string> warnings_of(const Outcome &outcome) {
    static bool has_told_of_the_map = false;
    std::vector<std::string> warnings;
    if (intf_to_phy_port == nullptr) {
        if (!has_told_of_the_map && may_miss_the_map(outcome)) {
            has_told_of_the_map = true;
            warnings.emplace_back(
                "the port map of this process is empty, so that no interface has a port: fill it with 'map', or start "
                "adpsh with --map");
        }
        return warnings;
    }
    for (const Slot &slot : outcome.arguments->slots()) {
        std::string warning = is_interface_set(slot) ? beyond_map(slot) : no_such_port(outcome, slot);
        if (!warning.empty()) {
            warnings.push_back(std::move(warning));
        }
    }
    return warnings;
}

}  // namespace adpsh
