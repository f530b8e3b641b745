// A finite table that gives frames of one VLAN on one port another tag. Translation on the way in, on the way out and
// the double-tag entries are three of these.
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
    /** kOk and the change, or why there is none. */
    Status get(int64_t port, uint32_t vid, TagChange &change) const;

    /** Null if the table says nothing about the VLAN on this port. */
    const TagChange *find(int port, uint32_t vid) const;
    const std::map<Key, TagChange> &entries() const { return entries_; }

  private:
    Status check_key(int64_t port, uint32_t vid) const;

    ChipPorts ports_;
    std::map<Key, TagChange> entries_;
};

}  // namespace vdevice::chip
