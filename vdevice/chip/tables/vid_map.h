// A finite table of tag changes by port and VLAN. There are three: ingress translation, egress translation and the
// double-tag entries.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <map>

#include "vdevice/chip/frame/chip_ports.h"
#include "vdevice/chip/frame/tag_change.h"

namespace vdevice::chip {

class VidMap {
  public:
    struct Key {
        int port;
        uint32_t vid;

        friend auto operator<=>(const Key &, const Key &) = default;
    };

    static constexpr size_t kCapacity = 1024;

    explicit VidMap(const ChipPorts &ports) : ports_{ports} {}

    Status add(int64_t port, uint32_t vid, const TagChange &change);
    Status remove(int64_t port, uint32_t vid);
    void clear() { entries_.clear(); }
    /** kOk and the change, or the reason why there is none. */
    Status get(int64_t port, uint32_t vid, TagChange &change) const;

    /** Null without an entry. */
    const TagChange *find(int port, uint32_t vid) const;
    const std::map<Key, TagChange> &entries() const { return entries_; }

  private:
    Status check_key(int64_t port, uint32_t vid) const;

    ChipPorts ports_;
    std::map<Key, TagChange> entries_;
};

}  // namespace vdevice::chip
