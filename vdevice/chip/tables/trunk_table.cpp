// Changes of trunks, checked, and which trunk a port belongs to.
#include "vdevice/chip/tables/trunk_table.h"

namespace vdevice::chip {
namespace {

PortSet set_of(const std::vector<int> &ports) {
    PortSet set;
    for (const int port : ports) {
        set.add(port);
    }
    return set;
}

}  // namespace

int TrunkTable::member_of(int port) const {
    for (int trunk = 0; trunk < kTrunks; ++trunk) {
        if (row(trunk).member_set.has(port)) {
            return trunk;
        }
    }
    return kNone;
}

int TrunkTable::trunk_of(int port) const {
    int trunk = member_of(port);
    for (int other = 0; trunk == kNone && other < kTrunks; ++other) {
        if (row(other).exists && row(other).ports().has(port)) {
            trunk = other;
        }
    }
    return trunk;
}

PortSet TrunkTable::standby() const {
    PortSet configured;
    PortSet members;
    for (const Trunk &trunk : rows_) {
        members |= trunk.member_set;
        if (trunk.exists && trunk.is_configured) {
            configured |= trunk.configured;
        }
    }
    return configured - members;
}

Status TrunkTable::check_exists(int64_t trunk) const {
    if (!is_trunk(trunk)) {
        return Status::kTrunkRange;
    }
    return row(trunk).exists ? Status::kOk : Status::kTrunkMissing;
}

Status TrunkTable::check_ports(int64_t trunk, const std::vector<int> &ports) const {
    if (ports.size() > kMaxMembers) {
        return Status::kTrunkFull;
    }
    PortSet listed;
    for (const int port : ports) {
        if (!existing_.has(port)) {
            return Status::kNoPort;
        }
        const int other = member_of(port);
        if (port == cpu_port_ || listed.has(port) || (other != kNone && other != trunk)) {
            return Status::kTrunkMember;
        }
        listed.add(port);
    }
    return Status::kOk;
}

Status TrunkTable::create(int64_t trunk) {
    const Status status = check_exists(trunk);
    if (status != Status::kTrunkMissing) {
        return status == Status::kOk ? Status::kTrunkExists : status;
    }
    row(trunk).exists = true;
    return Status::kOk;
}

Status TrunkTable::destroy(int64_t trunk) {
    const Status status = check_exists(trunk);
    if (status == Status::kOk) {
        Trunk &gone = row(trunk);
        gone.exists = false;
        gone.members.clear();
        gone.member_set = {};
        gone.balance = Trunk::kPowerOnMode;
    }
    return status;
}

Status TrunkTable::set_members(int64_t trunk, const std::vector<int> &ports) {
    Status status = check_exists(trunk);
    if (status == Status::kOk) {
        status = check_ports(trunk, ports);
    }
    if (status == Status::kOk) {
        row(trunk).members = ports;
        row(trunk).member_set = set_of(ports);
    }
    return status;
}

Status TrunkTable::set_configured(int64_t trunk, const std::vector<int> &ports) {
    Status status = check_exists(trunk);
    if (status == Status::kOk) {
        status = check_ports(trunk, ports);
    }
    if (status == Status::kOk) {
        row(trunk).configured = set_of(ports);
        row(trunk).is_configured = true;
    }
    return status;
}

Status TrunkTable::set_balance(int64_t trunk, uint32_t mode) {
    const Status status = check_exists(trunk);
    if (status != Status::kOk) {
        return status;
    }
    if (mode < kFirstBalanceMode || mode > kLastBalanceMode) {
        return Status::kBadArgument;
    }
    row(trunk).balance = mode;
    return Status::kOk;
}

void TrunkTable::forget_configured(int64_t trunk, const PortSet &ports) {
    Trunk &told = row(trunk);
    told.is_configured = told.is_configured && (told.configured & ports).empty();
}

void TrunkTable::forget_missing() {
    for (Trunk &trunk : rows_) {
        trunk.is_configured = trunk.is_configured && trunk.exists;
    }
}

}  // namespace vdevice::chip
