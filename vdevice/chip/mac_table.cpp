// The MAC table, a finite map keyed by VLAN and address.
#include "vdevice/chip/mac_table.h"

#include <algorithm>

namespace vdevice::chip {

void MacTable::learn(Mac mac, Vid vid, int port, Time now, int trunk) {
    const auto found = entries_.find(key(mac, vid));
    if (found == entries_.end()) {
        if (entries_.size() >= kCapacity) {
            ++counters_.refused;
            return;
        }
        entries_.emplace(key(mac, vid), MacEntry{mac, vid, port, false, now, trunk});
        ++counters_.learned;
        return;
    }
    MacEntry &entry = found->second;
    if (entry.is_static) {
        return;
    }
    if (!entry.is_behind(port, trunk)) {
        ++counters_.moved;
    }
    entry.port = port;
    entry.trunk = trunk;
    entry.last_seen = now;
}

const MacEntry *MacTable::find(Mac mac, Vid vid) const {
    const auto found = entries_.find(key(mac, vid));
    return found == entries_.end() ? nullptr : &found->second;
}

Status MacTable::add_static(Mac mac, Vid vid, int port, int trunk) {
    if (mac.is_group()) {
        return Status::kMacNotUnicast;
    }
    if (entries_.size() >= kCapacity && find(mac, vid) == nullptr) {
        return Status::kMacTableFull;
    }
    entries_.insert_or_assign(key(mac, vid), MacEntry{mac, vid, port, true, Time{}, trunk});
    return Status::kOk;
}

Status MacTable::remove(Mac mac, Vid vid) {
    return entries_.erase(key(mac, vid)) != 0 ? Status::kOk : Status::kMacMissing;
}

std::size_t MacTable::remove_if(const std::function<bool(const MacEntry &)> &picks) {
    return std::erase_if(entries_, [&](const auto &row) { return picks(row.second); });
}

void MacTable::for_each(const std::function<void(MacEntry &)> &visit) {
    for (auto &row : entries_) {
        visit(row.second);
    }
}

void MacTable::age(Time now) {
    if (age_time_ == std::chrono::seconds::zero()) {
        return;
    }
    const auto is_old = [&](const MacEntry &entry) { return !entry.is_static && now - entry.last_seen >= age_time_; };
    counters_.aged += remove_if(is_old);
}

std::vector<MacEntry> MacTable::list() const {
    std::vector<MacEntry> entries;
    entries.reserve(entries_.size());
    for (const auto &row : entries_) {
        entries.push_back(row.second);
    }
    std::sort(entries.begin(), entries.end(),
              [](const MacEntry &a, const MacEntry &b) { return a.vid != b.vid ? a.vid < b.vid : a.mac < b.mac; });
    return entries;
}

}  // namespace vdevice::chip
