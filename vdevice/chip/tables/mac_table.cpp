// The MAC table, a hash of buckets keyed by VLAN and address.
#include "vdevice/chip/tables/mac_table.h"

#include <algorithm>

namespace vdevice::chip {

MacTable::MacTable() : keys_(kCapacity, kFree), entries_(kCapacity) {}

/** The index of the first such key in the bucket, or kCapacity. */
size_t MacTable::find_key(size_t bucket, uint64_t wanted) const {
    const size_t first = bucket * kBucketSlots;
    for (size_t index = first; index < first + kBucketSlots; ++index) {
        if (keys_[index] == wanted) {
            return index;
        }
    }
    return kCapacity;
}

const MacEntry *MacTable::find(Mac mac, Vid vid) const {
    const size_t index = find_key(bucket_of(mac, vid), key(mac, vid));
    return index == kCapacity ? nullptr : &entries_[index];
}

const MacEntry *MacTable::next(uint64_t index) const {
    size_t at = index < kCapacity ? static_cast<size_t>(index) : kCapacity;
    while (at < kCapacity && keys_[at] == kFree) {
        ++at;
    }
    return at < kCapacity ? &entries_[at] : nullptr;
}

template <typename Visit>
void MacTable::visit_all(Visit visit) {
    for (size_t index = 0; index < kCapacity; ++index) {
        if (keys_[index] != kFree) {
            visit(entries_[index]);
        }
    }
}

/** Replaces the entry of the address, or takes its bucket's first free slot. */
Status MacTable::put(const MacEntry &entry) {
    const size_t bucket = bucket_of(entry.mac, entry.vid);
    size_t index = find_key(bucket, key(entry.mac, entry.vid));
    if (index != kCapacity) {
        counts_.uncount(entries_[index]);
    } else {
        index = find_key(bucket, kFree);
        if (index == kCapacity) {
            return size_ == kCapacity ? Status::kMacTableFull : Status::kMacBucketFull;
        }
        keys_[index] = key(entry.mac, entry.vid);
        ++size_;
    }
    entries_[index] = entry;
    entries_[index].index = static_cast<uint32_t>(index);
    counts_.count(entry);
    return Status::kOk;
}

void MacTable::erase(const MacEntry &entry) {
    counts_.uncount(entry);
    if (entry.is_group()) {
        groups_.give_back(entry.group);
    }
    keys_[entry.index] = kFree;
    --size_;
}

Learned MacTable::learn(Mac mac, Vid vid, int port, Time now, int trunk) {
    const MacEntry *known = find(mac, vid);
    if (known != nullptr && known->is_static) {
        return Learned::kStatic;
    }
    const bool is_new = known == nullptr;
    const bool has_moved = !is_new && !known->is_behind(port, trunk);
    if (put(MacEntry{mac, vid, port, false, now, trunk}) != Status::kOk) {
        ++counters_.refused;
        return Learned::kNoRoom;
    }
    counters_.learned += is_new ? 1 : 0;
    counters_.moved += has_moved ? 1 : 0;
    if (is_new) {
        return Learned::kNew;
    }
    return has_moved ? Learned::kMoved : Learned::kKnown;
}

bool MacTable::refresh(const MacEntry &known, const Place &place, Time now) {
    if (known.is_static || known.is_given_to_trunk || known.is_filter() || known.port != place.port ||
        known.trunk != place.trunk) {
        return false;
    }
    entries_[known.index].last_seen = now;
    return true;
}

Status MacTable::add(const MacEntry &entry) {
    return entry.mac.is_group() ? Status::kMacNotUnicast : put(entry);
}

Status MacTable::add_static(Mac mac, Vid vid, int port, int trunk) {
    return add(MacEntry{mac, vid, port, true, Time{}, trunk});
}

Status MacTable::remove(Mac mac, Vid vid) {
    if (mac.is_group()) {
        return Status::kMacNotUnicast;
    }
    const MacEntry *entry = find(mac, vid);
    if (entry == nullptr) {
        return Status::kMacMissing;
    }
    erase(*entry);
    return Status::kOk;
}

size_t MacTable::remove_if(const std::function<bool(const MacEntry &)> &picks) {
    const size_t before = size_;
    visit_all([&](MacEntry &entry) {
        if (picks(entry)) {
            erase(entry);
        }
    });
    return before - size_;
}

size_t MacTable::remove_all(const MacFilter &filter) {
    return remove_if([&](const MacEntry &entry) { return filter.picks(entry); });
}

void MacTable::for_each(const std::function<void(MacEntry &)> &visit) {
    visit_all([&](MacEntry &entry) {
        counts_.uncount(entry);
        visit(entry);
        counts_.count(entry);
    });
}

Status MacTable::add_group(Mac mac, Vid vid, const PortSet &ports) {
    if (!mac.is_group()) {
        return Status::kMacNotGroup;
    }
    if (const MacEntry *known = find(mac, vid)) {
        groups_.set(known->group, ports);
        return Status::kOk;
    }
    MacEntry entry{mac, vid, 0, true, Time{}};
    entry.group = groups_.take(ports);
    if (entry.group == PortSetPool::kNone) {
        return Status::kGroupTableFull;
    }
    const Status status = put(entry);
    if (status != Status::kOk) {
        groups_.give_back(entry.group);
    }
    return status;
}

Status MacTable::remove_group(Mac mac, Vid vid) {
    if (!mac.is_group()) {
        return Status::kMacNotGroup;
    }
    const MacEntry *entry = find(mac, vid);
    if (entry == nullptr) {
        return Status::kGroupMissing;
    }
    erase(*entry);
    return Status::kOk;
}

void MacTable::remove_all_groups() {
    remove_if([](const MacEntry &entry) { return entry.is_group(); });
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
    entries.reserve(size_);
    for (const MacEntry *entry = next(0); entry != nullptr; entry = next(entry->index + 1)) {
        entries.push_back(*entry);
    }
    std::sort(entries.begin(), entries.end(),
              [](const MacEntry &a, const MacEntry &b) { return a.vid != b.vid ? a.vid < b.vid : a.mac < b.mac; });
    return entries;
}

}  // namespace vdevice::chip
