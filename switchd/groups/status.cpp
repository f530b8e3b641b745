// What others ask of the groups.
#include <algorithm>
#include <iterator>
#include <utility>

#include "switchd/groups/groups.h"

namespace switchd {
namespace {

/** What changes in a partner's state while it goes on collecting says nothing to a successor. */
constexpr uint8_t kTransient = lacp::state::kDistributing | lacp::state::kDefaulted | lacp::state::kExpired;

}  // namespace

std::set<uint32_t> Groups::in_use(const Group &group) const {
    std::set<uint32_t> ports;
    std::set_intersection(group.wanted.begin(), group.wanted.end(), group.trunk.members().begin(),
                          group.trunk.members().end(), std::inserter(ports, ports.end()));
    return ports;
}

std::set<uint32_t> Groups::idle_members() const {
    std::set<uint32_t> idle;
    for (const auto &[number, group] : groups_) {
        const auto used = in_use(group);
        for (const auto &[port, priority] : group.settings.members) {
            if (!used.contains(port)) {
                idle.insert(port);
            }
        }
    }
    return idle;
}

bool Groups::is_up(uint32_t group) const {
    const auto found = groups_.find(group);
    if (found == groups_.end()) {
        return false;
    }
    const auto used = in_use(found->second);
    const auto links = std::count_if(used.begin(), used.end(), [&](uint32_t port) { return is_linked(port); });
    return static_cast<uint32_t>(links) >= std::max(1U, found->second.settings.minimum_links);
}

SavedGroups Groups::saved() const {
    SavedGroups saved;
    for (const auto &[number, trunk] : removed_) {
        saved.groups.insert(number);
    }
    for (const auto &[number, group] : groups_) {
        saved.groups.insert(number);
        for (const uint32_t port : in_use(group)) {
            if (group.settings.mode == GroupMode::kLacp) {
                lacp::Info partner = system_->find(static_cast<uint16_t>(port))->partner;
                partner.set(kTransient, false);
                saved.members[port] = {number, partner};
            }
        }
    }
    return saved;
}

bool Groups::take_change() {
    Outside outside{idle_members(), {}, saved()};
    for (const auto &[number, group] : groups_) {
        if (is_up(number)) {
            outside.up.insert(number);
        }
    }
    const bool changed = again_ || outside != told_;
    told_ = std::move(outside);
    return changed;
}

std::optional<Groups::Time> Groups::next_deadline() const {
    std::optional<Time> next = system_ ? system_->next_deadline() : std::nullopt;
    for (const auto &[number, group] : groups_) {
        if (const auto end = group.retry.end(); end && (!next || *end < *next)) {
            next = end;
        }
    }
    return next;
}

std::map<uint32_t, AggregationStatus> Groups::status() const {
    std::map<uint32_t, AggregationStatus> list;
    for (const auto &[number, group] : groups_) {
        AggregationStatus &status = list[number];
        status.settings = group.settings;
        status.is_up = is_up(number);
        status.fault = group.trunk.fault();
        const bool has_lacp = group.settings.mode == GroupMode::kLacp;
        if (has_lacp) {
            status.partner = system_->group(static_cast<uint16_t>(number)).partner;
        }
        const auto used = in_use(group);
        for (const auto &[port, priority] : group.settings.members) {
            MemberStatus &member = status.members[port];
            member.is_up = is_linked(port);
            member.is_in_use = used.contains(port);
            if (const auto *lacp = system_->find(static_cast<uint16_t>(port)); has_lacp && lacp != nullptr) {
                member.lacp = *lacp;
            }
        }
    }
    return list;
}

}  // namespace switchd
