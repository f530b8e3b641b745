// Multicast groups. Both families of calls work on the same entries. The record of creating and of removing names
// front ports, that of adding names chip ports on top of those that were read: the caller fills it in so, and the board
// tells one from the other.
#include "vdevice/driver/check.h"
#include "vdevice/driver/driver.h"
#include "vdevice/driver/l2_record.h"

namespace vdevice::driver {
namespace {

using chip::Mac;
using chip::MacEntry;
using chip::PortSet;
using chip::Status;

netlink_mcast_entry_t empty_record(Mac mac, uint32_t vid) {
    netlink_mcast_entry_t record = {};
    for (size_t i = 0; i < chip::kMacBytes; ++i) {
        record.mac[i] = mac.byte(i);
    }
    record.vid = static_cast<uint16_t>(vid);
    return record;
}

}  // namespace

/** Hands the record's group to the operation with the chip ports that its front ports are. */
template <typename Operation>
int32_t Driver::with_front_ports(uint32_t unit, uint32_t zero, const netlink_mcast_entry_t *entry,
                                 Operation operation) {
    return on_chip(unit, zero, [&] {
        if (entry == nullptr) {
            return Status::kBadArgument;
        }
        const auto ports = board_.chip_ports(PortSet::from_words(entry->ports));
        return ports ? operation(Mac::from_bytes(entry->mac), *ports) : Status::kNotFrontPort;
    });
}

/** Hands the group's entry to the operation. */
template <typename Operation>
int32_t Driver::with_group(uint32_t unit, uint32_t zero, const uint8_t *key, uint32_t vid, const void *out,
                           Operation operation) {
    return on_chip(unit, zero, [&] {
        if (key == nullptr || out == nullptr) {
            return Status::kBadArgument;
        }
        const MacEntry *group = chip_.find_group(Mac::from_bytes(key), vid);
        if (group == nullptr) {
            return Status::kGroupMissing;
        }
        operation(*group);
        return Status::kOk;
    });
}

int32_t Driver::User_mcast_addr_t_init(uint32_t unit, netlink_mcast_entry_t *entry, const uint8_t *key, uint32_t vid) {
    return on_chip(unit, 0, [&] {
        if (entry == nullptr || key == nullptr) {
            return Status::kBadArgument;
        }
        *entry = empty_record(Mac::from_bytes(key), vid);
        return Status::kOk;
    });
}

int32_t Driver::User_mcast_addr_add(uint32_t unit, uint32_t zero, const netlink_mcast_entry_t *entry) {
    return with_front_ports(unit, zero, entry,
                            [&](Mac mac, const PortSet &ports) { return chip_.add_group(mac, entry->vid, ports); });
}

int32_t Driver::User_mcast_addr_remove(uint32_t unit, uint32_t zero, const uint8_t *key, uint32_t vid) {
    return on_chip(unit, zero, [&] {
        return key == nullptr ? Status::kBadArgument : chip_.remove_group(Mac::from_bytes(key), vid);
    });
}

int32_t Driver::User_mcast_port_get(uint32_t unit, uint32_t zero, const uint8_t *key, uint32_t vid,
                                    netlink_mcast_entry_t *entry) {
    return with_group(unit, zero, key, vid, entry, [&](const MacEntry &group) {
        *entry = empty_record(group.mac, group.vid);
        entry->index = group.group;
        chip_.macs().ports_of(group).to_words(entry->ports);
    });
}

int32_t Driver::User_mcast_port_add(uint32_t unit, uint32_t zero, const netlink_mcast_entry_t *entry) {
    return on_chip(unit, zero, [&] {
        if (entry == nullptr) {
            return Status::kBadArgument;
        }
        return chip_.add_group_ports(Mac::from_bytes(entry->mac), entry->vid, PortSet::from_words(entry->ports));
    });
}

int32_t Driver::User_mcast_port_remove(uint32_t unit, uint32_t zero, const netlink_mcast_entry_t *entry) {
    return with_front_ports(unit, zero, entry, [&](Mac mac, const PortSet &ports) {
        return chip_.remove_group_ports(mac, entry->vid, ports);
    });
}

int32_t Driver::user_mac_mcast_addr_add(uint32_t unit, adp_l2_entry_t entry) {
    return on_chip(unit, 0, [&] {
        return chip_.add_group(Mac::from_bytes(entry.mac), entry.vid, PortSet::from_words(entry.ports));
    });
}

int32_t Driver::user_mac_mcast_addr_delete(uint32_t unit, const uint8_t *key, uint32_t vid, adp_word_t /*option*/) {
    return User_mcast_addr_remove(unit, 0, key, vid);
}

int32_t Driver::user_mac_mcast_addr_get(uint32_t unit, const uint8_t *key, uint32_t vid, adp_l2_entry_t *entry) {
    return with_group(unit, 0, key, vid, entry,
                      [&](const MacEntry &group) { *entry = record_of(group, chip_.macs().ports_of(group)); });
}

int32_t Driver::user_is_mcast_addr_exist_by_vlan(uint32_t unit, uint32_t vid, uint32_t second, adp_word_t /*option*/) {
    return on_chip(unit, 0, [&] {
        const uint32_t last = second == 0 ? vid : second;
        if (!chip::is_vid(vid) || !chip::is_vid(last) || last < vid) {
            return Status::kVlanRange;
        }
        const chip::MacTable &table = chip_.macs();
        for (const MacEntry *entry = table.next(0); entry != nullptr; entry = table.next(entry->index + 1)) {
            if (entry->is_group() && entry->vid >= vid && entry->vid <= last) {
                return Status::kOk;
            }
        }
        return Status::kGroupMissing;
    });
}

int32_t Driver::user_is_mcast_addr_exist_vlan_is(uint32_t unit, adp_word_t first, adp_word_t /*third*/,
                                                 adp_word_t /*fourth*/) {
    return user_is_mcast_addr_exist_by_vlan(unit, static_cast<uint32_t>(first), 0, 0);
}

}  // namespace vdevice::driver
