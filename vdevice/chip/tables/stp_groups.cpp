// The groups and their VLANs. Which VLANs exist does not matter here: a tree's protocol assigns all ids.
#include "vdevice/chip/tables/stp_groups.h"

#include <algorithm>

namespace vdevice::chip {

StpGroups::StpGroups(const ChipPorts &ports) : ports_{ports} {
    reset();
}

void StpGroups::reset() {
    groups_.fill(Group{});
    groups_[kDefault] = new_group();
    group_of_.fill(kDefault);
}

StpGroups::Group StpGroups::new_group() const {
    Group group;
    group.exists = true;
    group.states.fill(StpState::kForwarding);
    group.forwarding = ports_.all;
    return group;
}

Status StpGroups::check(int64_t group) const {
    if (group < 0 || group >= kGroups) {
        return Status::kStgRange;
    }
    return at(static_cast<int>(group)).exists ? Status::kOk : Status::kStgMissing;
}

Status StpGroups::create(int64_t group) {
    const Status status = check(group);
    if (status != Status::kStgMissing) {
        return status == Status::kOk ? Status::kStgExists : status;
    }
    at(group) = new_group();
    return Status::kOk;
}

Status StpGroups::destroy(int64_t group) {
    if (const Status status = check(group); status != Status::kOk) {
        return status;
    }
    if (group == kDefault) {
        return Status::kStgIsDefault;
    }
    at(group) = Group{};
    std::replace(group_of_.begin(), group_of_.end(), static_cast<uint8_t>(group), uint8_t{kDefault});
    return Status::kOk;
}

Status StpGroups::add_vlan(int64_t group, uint32_t vid) {
    if (const Status status = check(group); status != Status::kOk) {
        return status;
    }
    if (!is_vid(vid)) {
        return Status::kVlanRange;
    }
    group_of_[vid] = static_cast<uint8_t>(group);
    return Status::kOk;
}

Status StpGroups::remove_vlan(int64_t group, uint32_t vid) {
    if (const Status status = check(group); status != Status::kOk) {
        return status;
    }
    if (!is_vid(vid)) {
        return Status::kVlanRange;
    }
    if (group == kDefault) {
        return Status::kStgIsDefault;
    }
    if (group_of_[vid] != group) {
        return Status::kStgNotMember;
    }
    group_of_[vid] = kDefault;
    return Status::kOk;
}

Status StpGroups::set_state(int64_t group, int64_t port, uint32_t state) {
    Status status = check(group);
    if (status == Status::kOk) {
        status = ports_.check_user_port(port);
    }
    if (status != Status::kOk) {
        return status;
    }
    if (state >= kStpStates) {
        return Status::kStgState;
    }
    Group &changed = at(group);
    const auto new_state = static_cast<StpState>(state);
    changed.states[static_cast<size_t>(port)] = new_state;
    changed.forwarding.remove(static_cast<int>(port));
    if (new_state == StpState::kForwarding) {
        changed.forwarding.add(static_cast<int>(port));
    }
    return Status::kOk;
}

std::vector<int> StpGroups::list() const {
    std::vector<int> groups;
    for (int group = 0; group < kGroups; ++group) {
        if (at(group).exists) {
            groups.push_back(group);
        }
    }
    return groups;
}

std::vector<Vid> StpGroups::vlans(int group) const {
    std::vector<Vid> vids;
    for (Vid vid = kMinVid; vid <= kMaxVid; ++vid) {
        if (group_of_[vid] == group) {
            vids.push_back(vid);
        }
    }
    return vids;
}

}  // namespace vdevice::chip
