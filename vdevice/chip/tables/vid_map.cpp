// Changes of the entries, checked.
#include "vdevice/chip/tables/vid_map.h"

namespace vdevice::chip {

Status VidMap::add(int64_t port, uint32_t vid, const TagChange &change) {
    Status status = check_key(port, vid);
    if (status == Status::kOk) {
        status = change.check();
    }
    if (status != Status::kOk) {
        return status;
    }
    const Key key{static_cast<int>(port), vid};
    if (entries_.count(key) != 0) {
        return Status::kTagEntryExists;
    }
    if (entries_.size() >= kCapacity) {
        return Status::kTagTableFull;
    }
    entries_.emplace(key, change);
    return Status::kOk;
}

Status VidMap::remove(int64_t port, uint32_t vid) {
    TagChange ignored;
    const Status status = get(port, vid, ignored);
    if (status == Status::kOk) {
        entries_.erase({static_cast<int>(port), vid});
    }
    return status;
}

Status VidMap::get(int64_t port, uint32_t vid, TagChange &change) const {
    if (const Status status = check_key(port, vid); status != Status::kOk) {
        return status;
    }
    const TagChange *entry = find(static_cast<int>(port), vid);
    if (entry == nullptr) {
        return Status::kTagEntryMissing;
    }
    change = *entry;
    return Status::kOk;
}

const TagChange *VidMap::find(int port, uint32_t vid) const {
    const auto entry = entries_.find({port, vid});
    return entry == entries_.end() ? nullptr : &entry->second;
}

Status VidMap::check_key(int64_t port, uint32_t vid) const {
    if (const Status status = ports_.check_user_port(port); status != Status::kOk) {
        return status;
    }
    return is_vid(vid) ? Status::kOk : Status::kVlanRange;
}

}  // namespace vdevice::chip
