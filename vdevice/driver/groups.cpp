// Multicast groups. The record of creating and of removing names front ports, that of adding names chip ports on top of
// those that were read: the caller fills it in so, and the board tells one from the other.
#include "vdevice/driver/driver.h"
#include "vdevice/driver/switch_controls.h"

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

class Groups : public GroupsCalls {
  public:
    Groups(chip::Switch &chip, const Board &board, SwitchControls &controls)
        : chip_{chip}, board_{board}, controls_{controls} {}

    Status User_mcast_init() override {
        chip_.macs().remove_all_groups();
        return controls_.set(kReservedMulticast, 0);
    }

    Status User_mcast_addr_t_init(netlink_mcast_entry_t &entry, const uint8_t *key, uint32_t vid) override {
        entry = empty_record(Mac::from_bytes(key), vid);
        return Status::kOk;
    }

    Status User_mcast_addr_add(const netlink_mcast_entry_t &entry) override {
        const auto ports = front_ports_of(entry);
        return ports ? chip_.add_group(Mac::from_bytes(entry.mac), entry.vid, *ports) : Status::kNotFrontPort;
    }

    Status User_mcast_addr_remove(const uint8_t *key, uint32_t vid) override {
        return chip_.remove_group(Mac::from_bytes(key), vid);
    }

    Status User_mcast_port_get(const uint8_t *key, uint32_t vid, netlink_mcast_entry_t &entry) override {
        const MacEntry *group = chip_.find_group(Mac::from_bytes(key), vid);
        if (group == nullptr) {
            return Status::kGroupMissing;
        }
        entry = empty_record(group->mac, group->vid);
        entry.index = group->group;
        chip_.macs().ports_of(*group).to_words(entry.ports);
        return Status::kOk;
    }

    Status User_mcast_port_add(const netlink_mcast_entry_t &entry) override {
        return chip_.add_group_ports(Mac::from_bytes(entry.mac), entry.vid, PortSet::from_words(entry.ports));
    }

    Status User_mcast_port_remove(const netlink_mcast_entry_t &entry) override {
        const auto ports = front_ports_of(entry);
        return ports ? chip_.remove_group_ports(Mac::from_bytes(entry.mac), entry.vid, *ports) : Status::kNotFrontPort;
    }

    Status user_is_mcast_addr_exist_by_vlan(uint32_t vid, uint32_t second, uint32_t /*option*/) override {
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
    }

    Status user_is_mcast_addr_exist_vlan_is(uint32_t first, uint32_t /*third*/, uint32_t /*fourth*/) override {
        return user_is_mcast_addr_exist_by_vlan(first, 0, 0);
    }

  private:
    /** The chip ports that the record's front ports are; nothing if the board has not all of them. */
    std::optional<PortSet> front_ports_of(const netlink_mcast_entry_t &entry) const {
        return board_.chip_ports(PortSet::from_words(entry.ports));
    }

    chip::Switch &chip_;
    Board board_;
    SwitchControls &controls_;
};

}  // namespace

std::unique_ptr<GroupsCalls> groups(chip::Switch &chip, const Board &board, SwitchControls &controls) {
    return std::make_unique<Groups>(chip, board, controls);
}

}  // namespace vdevice::driver
