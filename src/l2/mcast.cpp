// Multicast groups of the snooping software.
#include <adp/mcast.h>
#include <stdio.h>

#include "core/bitmap.h"
#include "core/group_tables.h"
#include "core/members.h"
#include "l2/mac.h"

static_assert(sizeof(netlink_mcast_entry_t) == 88);

namespace adp {
namespace {

constexpr uint32_t kFrontPortWords = 2;

/** The interfaces that a caller lists. */
struct IntfList {
    const adp_intf_t *first;
    uint32_t count;

    const adp_intf_t *begin() const { return first; }
    const adp_intf_t *end() const { return first + count; }

    /** A group outside 1..8 is refused before any driver call. */
    bool names_missing_group() const {
        for (const adp_intf_t listed : *this) {
            const Intf intf{listed};
            if (kind_of(intf) == IntfKind::kAggregation && !exists(trunk_of(intf))) {
                return true;
            }
        }
        return false;
    }
};

// The driver numbers the ports of an entry in two ways. Look-up and add use physical ports; create and remove use front
// ports, which are the interface numbers. The first two words hold all of them.
void add_front_port(uint32_t *ports, uint32_t n) {
    if (n < kFrontPortWords * kWordBits) {
        set_bit(ports, n);
    }
}

void add_front_ports(uint32_t *ports, Intf intf) {
    if (kind_of(intf) == IntfKind::kUserPort) {
        add_front_port(ports, index_of(intf));
    } else if (kind_of(intf) == IntfKind::kAggregation) {
        first_failure(members_of(intf, Members::kConfigured), [&](Intf member) {
            add_front_port(ports, number(member));
            return 0;
        });
    }
}

/** Contract: an empty list leaves the ports of the entry as they are. */
void set_front_ports(netlink_mcast_entry_t &entry, const IntfList &list) {
    if (list.count != 0) {
        entry.ports[0] = entry.ports[1] = 0;
    }
    for (const adp_intf_t intf : list) {
        add_front_ports(entry.ports, Intf(intf));
    }
}

/** Reads a group; fields that the driver does not write are zero. */
int32_t look_up(const uint8_t *mac, uint32_t vid, netlink_mcast_entry_t *entry) {
    *entry = {};
    return User_mcast_port_get(0, 0, MacKey(mac).byte, low16(vid), entry);
}

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t adp_create_igmpsn_group(const uint8_t mac[6], uint32_t vid, uint32_t count, const adp_intf_t *members) {
    const IntfList intfs{members, count};
    if (intfs.names_missing_group()) {
        return ADP_FAIL;
    }
    netlink_mcast_entry_t entry = {};
    User_mcast_addr_t_init(0, &entry, MacKey(mac).byte, low16(vid));
    memset(entry.ports, 0, sizeof entry.ports);
    set_front_ports(entry, intfs);
    return User_mcast_addr_add(0, 0, &entry);
}

adp_status_t adp_delete_igmpsn_group(const uint8_t mac[6], uint32_t vid) {
    return User_mcast_addr_remove(0, 0, MacKey(mac).byte, low16(vid));
}

adp_status_t adp_get_igmpsn_group(const uint8_t mac[6], uint32_t vid, uint32_t *index) {
    netlink_mcast_entry_t entry;
    const int32_t result = look_up(mac, vid, &entry);
    *index = entry.index;
    return result;
}

// Contract: an aggregation interface adds no port.
adp_status_t adp_add_igmpsn_member(const uint8_t mac[6], uint32_t vid, uint32_t count, const adp_intf_t *members,
                                   const uint16_t *shown_vid) {
    const IntfList intfs{members, count};
    if (intfs.names_missing_group()) {
        return ADP_FAIL;
    }
    netlink_mcast_entry_t entry;
    look_up(mac, vid, &entry);
    for (const adp_intf_t listed : intfs) {
        const Intf intf{listed};
        if (!has_known_kind(intf)) {
            return ADP_E_INTF_TYPE;
        }
        if (kind_of(intf) == IntfKind::kUserPort) {
            set_bit_inside(entry.ports, static_cast<uint32_t>(number(phy_of(intf))));
        }
    }
    const int32_t result = User_mcast_port_add(0, 0, &entry);
    if (low16(vid) == 0) {
        fprintf(stderr, "Mcast Add Port Error tVlanId = %d *vid_p = %u\n", 0, static_cast<unsigned>(*shown_vid));
    }
    return result;
}

adp_status_t adp_del_igmpsn_member(const uint8_t mac[6], uint32_t vid, uint32_t count, const adp_intf_t *members) {
    const IntfList intfs{members, count};
    if (intfs.names_missing_group()) {
        return ADP_FAIL;
    }
    netlink_mcast_entry_t entry;
    look_up(mac, vid, &entry);
    set_front_ports(entry, intfs);
    return User_mcast_port_remove(0, 0, &entry);
}
