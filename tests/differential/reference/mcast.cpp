// Multicast snooping groups.
#include <cstdio>
#include <cstring>

#include "platform/netlink_api.h"
#include "tests/differential/reference/l2.h"

namespace reference {
namespace {

/** A list that names a group outside 1..8 is refused whole. */
bool has_bad_group(uint32_t count, const uint32_t *list) {
    for (uint32_t n = 0; n < count; ++n) {
        if (is_agg(list[n]) && !is_group(list[n])) {
            return true;
        }
    }
    return false;
}

/** Writes the numbers of the listed user ports and configured members over the first two words; none: untouched. */
void put_numbers(netlink_mcast_entry_t *entry, uint32_t count, const uint32_t *list) {
    PortSet numbers;
    const auto add = [&](uint32_t number) {
        if (number < 64) {
            numbers.add(number);
        }
    };
    for (uint32_t n = 0; n < count; ++n) {
        if (is_user_port(list[n])) {
            add(index_of(list[n]));
        } else if (is_agg(list[n])) {
            const Members members = configured_members(list[n]);
            for (uint32_t m = 0; m < members.count; ++m) {
                if (members.slots[m] != 0) {  // an empty slot
                    add(members.slots[m]);
                }
            }
        }
        entry->ports[0] = numbers.word[0];
        entry->ports[1] = numbers.word[1];
    }
}

}  // namespace

adp_status_t adp_create_igmpsn_group(const uint8_t *mac, uint32_t vid, uint32_t count, const adp_intf_t *list) {
    if (has_bad_group(count, list)) {
        return -1;
    }
    netlink_mcast_entry_t entry{};
    User_mcast_addr_t_init(0, &entry, key_of(mac).data(), low16(vid));
    std::memset(entry.ports, 0, sizeof entry.ports);
    put_numbers(&entry, count, list);
    return User_mcast_addr_add(0, 0, &entry);
}

adp_status_t adp_get_igmpsn_group(const uint8_t *mac, uint32_t vid, uint32_t *index) {
    netlink_mcast_entry_t entry{};
    const int32_t result = User_mcast_port_get(0, 0, key_of(mac).data(), low16(vid), &entry);
    *index = entry.index;
    return result;
}

adp_status_t adp_add_igmpsn_member(const uint8_t *mac, uint32_t vid, uint32_t count, const adp_intf_t *list,
                                   const uint16_t *vid_p) {
    if (has_bad_group(count, list)) {
        return -1;
    }
    netlink_mcast_entry_t entry{};
    User_mcast_port_get(0, 0, key_of(mac).data(), low16(vid), &entry);
    PortSet ports = PortSet::from(entry.ports);
    for (uint32_t n = 0; n < count; ++n) {
        if (type_of(list[n]) > 1) {
            return 201;
        }
        if (is_user_port(list[n])) {
            ports.add(adp_intf_2_phy_id(list[n]));
        }
    }
    std::memcpy(entry.ports, ports.word.data(), sizeof entry.ports);
    const int32_t result = User_mcast_port_add(0, 0, &entry);
    if ((low16(vid)) == 0) {
        fprintf(stderr, "Mcast Add Port Error tVlanId = %d *vid_p = %u\n", 0, *vid_p);
    }
    return result;
}

adp_status_t adp_del_igmpsn_member(const uint8_t *mac, uint32_t vid, uint32_t count, const adp_intf_t *list) {
    if (has_bad_group(count, list)) {
        return -1;
    }
    netlink_mcast_entry_t entry{};
    User_mcast_port_get(0, 0, key_of(mac).data(), low16(vid), &entry);
    put_numbers(&entry, count, list);
    return User_mcast_port_remove(0, 0, &entry);
}

}  // namespace reference
