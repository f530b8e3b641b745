// Decides which members are in use, and keeps the chip's trunks so.
#include "switchd/groups/groups.h"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

namespace switchd {
namespace {

constexpr lacp::Time kRetryTime = std::chrono::seconds(5);

std::set<uint32_t> group_ports_of(const GroupSettings &settings) {
    std::set<uint32_t> ports;
    for (const auto &[port, priority] : settings.members) {
        ports.insert(port);
    }
    return ports;
}

lacp::PortSettings lacp_settings(uint32_t number, const GroupSettings &group, uint16_t priority) {
    return {.key = static_cast<uint16_t>(number),
            .priority = priority,
            .is_active = group.is_active,
            .is_fast = group.is_fast};
}

uint16_t lacp_port(uint32_t port) {
    return static_cast<uint16_t>(port);
}

}  // namespace

void Groups::configure(const GroupsSettings &settings, Time now, const SavedGroups &predecessor) {
    if (!system_) {
        adp_set_trap_lacp_packet(1, 0, 0, 0);
    }
    if (!system_ || system_->id() != settings.system) {
        lacp_ports_.clear();
        system_.emplace(settings.system,
                        [this](uint16_t port, std::span<const uint8_t> frame) { transmit_(port, frame); });
    }
    remove_groups(settings, predecessor);
    set_groups(settings);
    set_ports(settings, now, predecessor);
    update(now);
}

void Groups::remove_groups(const GroupsSettings &settings, const SavedGroups &predecessor) {
    for (auto group = groups_.begin(); group != groups_.end();) {
        if (settings.groups.contains(group->first)) {
            ++group;
        } else {
            removed_.emplace(group->first, std::move(group->second.trunk));
            group = groups_.erase(group);
        }
    }
    for (const uint32_t number : predecessor.groups) {
        if (!settings.groups.contains(number) && !groups_.contains(number)) {
            removed_.emplace(number, Trunk(number));
        }
    }
    again_ = again_ || !removed_.empty();
}

void Groups::set_groups(const GroupsSettings &settings) {
    for (const auto &[number, wanted] : settings.groups) {
        auto found = groups_.find(number);
        if (found == groups_.end()) {
            auto removed = removed_.extract(number);
            found =
                groups_.emplace(number, Group{{}, removed ? std::move(removed.mapped()) : Trunk(number), {}, {}}).first;
            if (!removed) {
                found->second.trunk.create();
                again_ = true;
            }
        }
        found->second.settings = wanted;
        found->second.trunk.configure(group_ports_of(wanted), wanted.balance);
    }
}

void Groups::set_ports(const GroupsSettings &settings, Time now, const SavedGroups &predecessor) {
    std::set<uint32_t> wanted;
    for (const auto &[number, group] : settings.groups) {
        if (group.mode == GroupMode::kLacp) {
            wanted.merge(group_ports_of(group));
        }
    }
    for (const uint32_t port : lacp_ports_) {
        if (!wanted.contains(port)) {
            system_->remove_port(lacp_port(port), now);
        }
    }
    for (const auto &[number, group] : settings.groups) {
        for (const auto &[port, priority] : group.members) {
            if (group.mode != GroupMode::kLacp) {
                continue;
            }
            const auto saved = predecessor.members.find(port);
            const auto port_settings = lacp_settings(number, group, priority);
            if (saved != predecessor.members.end() && saved->second.group == number) {
                system_->resume_port(lacp_port(port), port_settings, saved->second.partner, now);
            } else {
                system_->set_port(lacp_port(port), port_settings, now);
            }
            const PortLink link = links_[port];
            system_->set_link(lacp_port(port), link.is_up, link.is_full_duplex, now);
        }
    }
    lacp_ports_ = std::move(wanted);
}

bool Groups::is_linked(uint32_t port) const {
    const auto link = links_.find(port);
    return link != links_.end() && link->second.is_up;
}

/** As many as the chip takes: those with a link, then those of the best priority. */
std::set<uint32_t> Groups::best_of(const std::map<uint32_t, uint16_t> &members) const {
    std::vector<std::tuple<bool, uint16_t, uint32_t>> ranks;
    ranks.reserve(members.size());
    for (const auto &[port, priority] : members) {
        ranks.emplace_back(!is_linked(port), priority, port);
    }
    std::sort(ranks.begin(), ranks.end());
    ranks.resize(std::min<size_t>(ranks.size(), ADP_AGG_ACTIVE_MAX));
    std::set<uint32_t> best;
    for (const auto &rank : ranks) {
        best.insert(std::get<uint32_t>(rank));
    }
    return best;
}

std::set<uint32_t> Groups::wanted_of(uint32_t number, const GroupSettings &settings) const {
    if (settings.mode == GroupMode::kStatic) {
        return best_of(settings.members);
    }
    const auto distributing = system_->group(static_cast<uint16_t>(number)).distributing;
    return {distributing.begin(), distributing.end()};
}

bool Groups::is_in_trunk(uint32_t port) const {
    const auto has_port = [&](const Trunk &trunk) { return trunk.members().contains(port); };
    return std::any_of(groups_.begin(), groups_.end(),
                       [&](const auto &group) { return has_port(group.second.trunk); }) ||
           std::any_of(removed_.begin(), removed_.end(), [&](const auto &trunk) { return has_port(trunk.second); });
}

void Groups::add_members(Group &group, Time now) {
    if (group.retry.end()) {
        return;
    }
    std::vector<uint32_t> added;
    for (const uint32_t port : group.wanted) {
        if (!is_in_trunk(port) && group.trunk.members().size() + added.size() < ADP_AGG_ACTIVE_MAX) {
            added.push_back(port);
        }
    }
    if (!added.empty() && !group.trunk.add(added)) {
        group.retry.start(now, kRetryTime);
    }
}

void Groups::update(Time now) {
    for (auto &[number, group] : groups_) {
        again_ = group.retry.has_ended(now) || again_;
        group.wanted = wanted_of(number, group.settings);
        add_members(group, now);
    }
}

void Groups::remove_idle(Time now) {
    again_ = false;
    // Removed once, whatever comes of it: the chip may have been switched on since a predecessor made the trunk.
    for (auto &[number, trunk] : removed_) {
        trunk.destroy();
    }
    const bool has_freed_ports = !removed_.empty();
    removed_.clear();
    for (auto &[number, group] : groups_) {
        std::vector<uint32_t> idle;
        std::set_difference(group.trunk.members().begin(), group.trunk.members().end(), group.wanted.begin(),
                            group.wanted.end(), std::back_inserter(idle));
        if (!idle.empty() && !group.retry.end() && !group.trunk.remove(idle)) {
            group.retry.start(now, kRetryTime);
        }
        group.trunk.clear_strangers();
        if (has_freed_ports) {
            group.retry.stop();  // what was refused may have been their membership elsewhere
        }
    }
    update(now);
}

void Groups::set_link(uint32_t port, bool is_up, bool is_full_duplex, Time now) {
    PortLink &link = links_[port];
    const PortLink before = std::exchange(link, {is_up, is_full_duplex});
    for (auto &[number, group] : groups_) {
        if (before.is_up != is_up && group.trunk.members().contains(port)) {
            // One that is up again and not wanted must not be programmed: remove_idle() is about to remove it.
            if (!is_up || group.wanted.contains(port)) {
                group.trunk.change_link(port, is_up);
            }
        }
    }
    if (system_) {
        system_->set_link(lacp_port(port), is_up, is_full_duplex, now);
        update(now);
    }
}

bool Groups::receive(uint32_t port, std::span<const uint8_t> frame, Time now) {
    if (!system_ || !lacp_ports_.contains(port)) {
        return false;
    }
    const bool is_taken = system_->receive(lacp_port(port), frame, now);
    update(now);
    return is_taken;
}

void Groups::tick(Time now) {
    if (system_) {
        system_->tick(now);
        update(now);
    }
}

}  // namespace switchd
