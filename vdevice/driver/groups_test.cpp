// The calls on multicast groups and on what ports do with them. What they do to frames is tested on the chip.
#include <gtest/gtest.h>

#include "vdevice/driver/testing/address_fixture.h"

namespace vdevice::driver {
namespace groups_test {

using chip::PortSet;
using chip::Status;
using namespace test;

constexpr int32_t kGroupMissing = chip::code(Status::kGroupMissing);
constexpr int32_t kMacNotGroup = chip::code(Status::kMacNotGroup);

class DriverGroup : public test::MacTest {
  protected:
    netlink_mcast_entry_t record(const PortSet &set, uint32_t vid = kVid) {
        netlink_mcast_entry_t made = {};
        EXPECT_EQ(driver_.User_mcast_addr_t_init(0, &made, key_of(kGroup).data(), vid), kOk);
        set.to_words(made.ports);
        return made;
    }

    int32_t create(const PortSet &set, uint32_t vid = kVid) {
        const netlink_mcast_entry_t made = record(set, vid);
        return driver_.User_mcast_addr_add(0, 0, &made);
    }

    PortSet members(uint32_t vid = kVid) {
        netlink_mcast_entry_t found = {};
        EXPECT_EQ(driver_.User_mcast_port_get(0, 0, key_of(kGroup).data(), vid, &found), kOk);
        return PortSet::from_words(found.ports);
    }
};

TEST_F(DriverGroup, CreatingAndRemovingNameFrontPortsAddingNamesChipPorts) {
    ASSERT_EQ(create(ports({0, 1, 26})), kOk);
    EXPECT_EQ(members(), ports({0, 4, 29}));
    netlink_mcast_entry_t more = {};
    ASSERT_EQ(driver_.User_mcast_port_get(0, 0, key_of(kGroup).data(), kVid, &more), kOk);
    EXPECT_EQ(more.index, 1U);
    more.ports[0] |= 1U << 9;
    EXPECT_EQ(driver_.User_mcast_port_add(0, 0, &more), kOk);
    EXPECT_EQ(members(), ports({0, 4, 9, 29}));
    const netlink_mcast_entry_t leaving = record(ports({1, 2}));
    EXPECT_EQ(driver_.User_mcast_port_remove(0, 0, &leaving), kOk);
    EXPECT_EQ(members(), ports({0, 9, 29})) << "front port 1 is chip port 4";
}

TEST_F(DriverGroup, TheL2CallsWorkOnTheSameGroups) {
    adp_l2_entry_t added = entry(kGroup, kVid, 0, 0);
    ports({4, 9}).to_words(added.ports);
    ASSERT_EQ(driver_.user_mac_mcast_addr_add(0, added), kOk);
    EXPECT_EQ(members(), ports({4, 9}));
    adp_l2_entry_t found = {};
    ASSERT_EQ(driver_.user_mac_mcast_addr_get(0, key_of(kGroup).data(), kVid, &found), kOk);
    EXPECT_EQ(PortSet::from_words(found.ports), ports({4, 9}));
    EXPECT_EQ(found.vid, kVid);
    EXPECT_EQ(found.index / chip::MacTable::kBucketSlots, chip::MacTable::bucket_of(kGroup, kVid));
    EXPECT_EQ(driver_.user_mac_mcast_addr_delete(0, key_of(kGroup).data(), kVid, 7), kOk);
    EXPECT_EQ(driver_.user_mac_mcast_addr_delete(0, key_of(kGroup).data(), kVid, 7), kGroupMissing);
    EXPECT_EQ(driver_.user_mac_mcast_addr_get(0, key_of(kGroup).data(), kVid, &found), kGroupMissing);
    added = entry(test::station(1), kVid, 0, 0);
    EXPECT_EQ(driver_.user_mac_mcast_addr_add(0, added), kMacNotGroup);
}

TEST_F(DriverGroup, GroupsAreFoundByTheirVlan) {
    EXPECT_EQ(driver_.user_is_mcast_addr_exist_by_vlan(0, kVid, 0, 0), kGroupMissing);
    ASSERT_EQ(create(ports({1}), kOtherVid), kOk);
    EXPECT_EQ(driver_.user_is_mcast_addr_exist_by_vlan(0, kVid, 0, 0), kGroupMissing);
    EXPECT_EQ(driver_.user_is_mcast_addr_exist_by_vlan(0, kOtherVid, 0, 9), kOk);
    EXPECT_EQ(driver_.user_is_mcast_addr_exist_by_vlan(0, kVid, kOtherVid, 0), kOk);
    EXPECT_EQ(driver_.user_is_mcast_addr_exist_by_vlan(0, kVid, kOtherVid - 1, 0), kGroupMissing);
    EXPECT_EQ(driver_.user_is_mcast_addr_exist_by_vlan(0, kOtherVid, kVid, 0), kVlanRange);
    EXPECT_EQ(driver_.user_is_mcast_addr_exist_by_vlan(0, 0, 0, 0), kVlanRange);
    EXPECT_EQ(driver_.user_is_mcast_addr_exist_vlan_is(0, kOtherVid, 5, 6), kOk);
    EXPECT_EQ(driver_.user_is_mcast_addr_exist_vlan_is(0, kVid, 5, 6), kGroupMissing);
    EXPECT_EQ(driver_.user_is_mcast_addr_exist_vlan_is(0, 0, 5, 6), kVlanRange)
        << "0 is no VLAN, and does not stand for all";
}

TEST_F(DriverGroup, InitialisingForgetsThemAll) {
    ASSERT_EQ(create(ports({1})), kOk);
    ASSERT_EQ(create(ports({1}), kOtherVid), kOk);
    EXPECT_EQ(chip_.macs().group_count(), 2U);
    EXPECT_EQ(driver_.User_mcast_init(0, 0), kOk);
    EXPECT_EQ(chip_.macs().group_count(), 0U);
}

TEST_F(DriverGroup, PortsAreToldWhatToDoWithGroups) {
    uint32_t value = 7;
    EXPECT_EQ(driver_.User_switch_port_control_l2mc_get(0, 4, 0, &value), kOk);
    EXPECT_EQ(value, 1U);
    EXPECT_EQ(driver_.User_switch_port_control_l2mc_enable(0, 4, 0, 0), kOk);
    EXPECT_EQ(driver_.User_switch_port_control_l2mc_get(0, 4, 0, &value), kOk);
    EXPECT_EQ(value, 0U);
    EXPECT_FALSE(chip_.port(4).groups.uses_entries);
    EXPECT_TRUE(chip_.port(5).groups.uses_entries);
    EXPECT_EQ(driver_.User_switch_port_control_ipmc_set(0, 4, 0, 0), kOk);
    EXPECT_EQ(driver_.User_switch_port_control_ipmc_get(0, 4, 0, &value), kOk);
    EXPECT_EQ(value, 0U);
    EXPECT_EQ(driver_.User_switch_port_control_ipmc_set(0, 4, 0, 2), kOk);
    EXPECT_EQ(driver_.User_switch_port_control_ipmc_get(0, 4, 0, &value), kOk);
    EXPECT_EQ(value, 1U);
    EXPECT_EQ(driver_.User_switch_port_control_l2mc_enable(0, -1, 0, 1), kNoPort);
    EXPECT_EQ(driver_.User_switch_port_control_ipmc_set(0, 99, 0, 1), kNoPort);
}

TEST_F(DriverGroup, MissActionsAreOfAPortAndAProtocol) {
    EXPECT_EQ(driver_.User_switch_ipmc_lookup_miss_action(0, 0, 4, 1), kOk);
    EXPECT_EQ(driver_.User_switch_ip6mc_lookup_miss_action(0, 0, 4, 2), kOk);
    EXPECT_EQ(chip_.port(4).groups.ipv4_miss, chip::GroupMiss::kDrop);
    EXPECT_EQ(chip_.port(4).groups.ipv6_miss, chip::GroupMiss::kToCpu);
    EXPECT_EQ(driver_.User_switch_ipmc_lookup_miss_action(0, 0, 4, 3), kBadArgument);
    EXPECT_EQ(driver_.User_switch_ip6mc_lookup_miss_action(0, 0, -1, 1), kNoPort);
    EXPECT_EQ(chip_.port(4).groups.ipv4_miss, chip::GroupMiss::kDrop);
    EXPECT_EQ(driver_.User_switch_ipmc_set(0, 0, 0), kOk);
    EXPECT_EQ(driver_.User_switch_ip6mc_mode_set(0, 0, 0), kOk);
    EXPECT_FALSE(chip_.group_rules().knows_ipv4 || chip_.group_rules().knows_ipv6);
    EXPECT_EQ(driver_.User_switch_ipmc_set(0, 0, 1), kOk);
    EXPECT_EQ(driver_.User_switch_ip6mc_mode_set(0, 0, 3), kOk);
    EXPECT_TRUE(chip_.group_rules().knows_ipv4 && chip_.group_rules().knows_ipv6);
}

}  // namespace groups_test
}  // namespace vdevice::driver
