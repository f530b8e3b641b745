// The VLAN table. Every change first checks its whole range, then writes, so that a refusal changes nothing.
#include "vdevice/chip/tables/vlan_table.h"

namespace vdevice::chip {
VlanTable::VlanTable(const PortSet &existing, const Vlan &first_vlan) : existing_{existing}, rows_(kMaxVid + 1U) {
    rows_[kMinVid] = Row{true, first_vlan};
}

const Vlan *VlanTable::find(uint32_t vid) const {
    return is_vid(vid) && rows_[vid].exists ? &rows_[vid].vlan : nullptr;
}

std::vector<Vid> VlanTable::list() const {
    std::vector<Vid> vids;
    for (Vid vid = kMinVid; vid <= kMaxVid; ++vid) {
        if (rows_[vid].exists) {
            vids.push_back(vid);
        }
    }
    return vids;
}

Status VlanTable::create(VidRange range) {
    if (const Status status = check_range(range); status != Status::kOk) {
        return status;
    }
    for (uint32_t vid = range.first; vid <= range.last; ++vid) {
        if (rows_[vid].exists) {
            return Status::kVlanExists;
        }
    }
    for (uint32_t vid = range.first; vid <= range.last; ++vid) {
        rows_[vid] = Row{true, Vlan{}};
    }
    return Status::kOk;
}

Status VlanTable::destroy(VidRange range) {
    if (const Status status = check_all_exist(range); status != Status::kOk) {
        return status;
    }
    if (range.first <= default_vid_ && default_vid_ <= range.last) {
        return Status::kVlanIsDefault;
    }
    for (uint32_t vid = range.first; vid <= range.last; ++vid) {
        rows_[vid] = Row{};
    }
    return Status::kOk;
}

Status VlanTable::add_ports(VidRange range, const PortSet &ports, const PortSet &untagged) {
    Status status = check_all_exist(range);
    if (status == Status::kOk) {
        status = check_ports(ports, untagged);
    }
    if (status != Status::kOk) {
        return status;
    }
    for (uint32_t vid = range.first; vid <= range.last; ++vid) {
        Vlan &vlan = rows_[vid].vlan;
        vlan.members |= ports;
        vlan.untagged = (vlan.untagged - ports) | untagged;
    }
    return Status::kOk;
}

Status VlanTable::remove_ports(VidRange range, const PortSet &ports) {
    Status status = check_all_exist(range);
    if (status == Status::kOk) {
        status = check_ports(ports, PortSet{});
    }
    if (status != Status::kOk) {
        return status;
    }
    for (uint32_t vid = range.first; vid <= range.last; ++vid) {
        rows_[vid].vlan.members -= ports;
        rows_[vid].vlan.untagged -= ports;
    }
    return Status::kOk;
}

Status VlanTable::set_ports(uint32_t vid, const PortSet &members, const PortSet &untagged) {
    Status status = check_all_exist({vid, vid});
    if (status == Status::kOk) {
        status = check_ports(members, untagged);
    }
    if (status == Status::kOk) {
        rows_[vid].vlan = Vlan{members, untagged};
    }
    return status;
}

Status VlanTable::set_default(uint32_t vid) {
    const Status status = check_all_exist({vid, vid});
    if (status == Status::kOk) {
        default_vid_ = static_cast<Vid>(vid);
    }
    return status;
}

Status VlanTable::check_range(VidRange range) const {
    return is_vid(range.first) && is_vid(range.last) && range.first <= range.last ? Status::kOk : Status::kVlanRange;
}

Status VlanTable::check_all_exist(VidRange range) const {
    if (const Status status = check_range(range); status != Status::kOk) {
        return status;
    }
    for (uint32_t vid = range.first; vid <= range.last; ++vid) {
        if (!rows_[vid].exists) {
            return Status::kVlanMissing;
        }
    }
    return Status::kOk;
}

Status VlanTable::check_ports(const PortSet &members, const PortSet &untagged) const {
    if (!members.is_within(existing_) || !untagged.is_within(existing_)) {
        return Status::kNoPort;
    }
    return untagged.is_within(members) ? Status::kOk : Status::kUntaggedNotMember;
}

}  // namespace vdevice::chip
