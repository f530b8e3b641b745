// The chip's VLAN table (IEEE 802.1Q): member ports and untagged ports of VLANs 1..4094. A change of a range of
// VLANs is made for all of them or for none.
#pragma once

#include <vector>

#include "vdevice/chip/frame/frame.h"
#include "vdevice/chip/frame/port_set.h"
#include "vdevice/chip/frame/status.h"

namespace vdevice::chip {

struct Vlan {
    PortSet members;
    PortSet untagged;
};

/** VLANs first, first + 1, ... last. */
struct VidRange {
    uint32_t first;
    uint32_t last;
};

class VlanTable {
  public:
    /** A table that holds VLAN 1, the default VLAN, with the given sets; @p existing are the ports of the chip. */
    VlanTable(const PortSet &existing, const Vlan &first_vlan);

    /** The VLAN's row, or null. */
    const Vlan *find(uint32_t vid) const;
    /** kOk, or why there is no such VLAN. */
    Status check(uint32_t vid) const { return check_all_exist({vid, vid}); }
    Vid default_vid() const { return default_vid_; }
    std::vector<Vid> list() const;

    Status create(VidRange range);
    Status destroy(VidRange range);
    /** Adds member ports; those in @p untagged send without a tag, the others with one. */
    Status add_ports(VidRange range, const PortSet &ports, const PortSet &untagged);
    /** Ports that are not members are ignored. */
    Status remove_ports(VidRange range, const PortSet &ports);
    Status set_ports(uint32_t vid, const PortSet &members, const PortSet &untagged);
    Status set_default(uint32_t vid);

  private:
    struct Row {
        bool exists = false;
        Vlan vlan;
    };

    Status check_range(VidRange range) const;
    Status check_all_exist(VidRange range) const;
    Status check_ports(const PortSet &members, const PortSet &untagged) const;

    PortSet existing_;
    std::vector<Row> rows_;
    Vid default_vid_ = kMinVid;
};

}  // namespace vdevice::chip
