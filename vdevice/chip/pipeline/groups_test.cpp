// Frames to groups: by entries, without entries, and behind trunks.
#include <gtest/gtest.h>

#include <set>

#include "vdevice/chip/testing/chip_fixture.h"

namespace vdevice::chip {
namespace groups_test {

using namespace test;

constexpr int kTrunk = 0;
constexpr uint32_t kVid = 1;
const Octets kGroup4 = {0x01, 0, 0x5E, 1, 2, 3};
const Octets kGroup6 = {0x33, 0x33, 0, 1, 2, 3};
const Octets kOtherGroup = {0x03, 0, 0, 0, 0, 9};
const std::set<int> kAllOthers = {kCpu, kB, kC};

class GroupsTest : public test::ChipTest {
  protected:
    std::set<int> outputs(int port, const Octets &destination, uint8_t from = 1) {
        std::set<int> ports;
        for (const test::Sent &sent : send(port, destination + station(from) + kPayload)) {
            EXPECT_TRUE(ports.insert(sent.first).second) << "a frame left twice by port " << sent.first;
        }
        return ports;
    }

    void add(const Octets &group, std::initializer_list<int> ports, uint32_t vid = kVid) {
        PortSet set;
        for (const int port : ports) {
            set.add(port);
        }
        ASSERT_EQ(chip_.add_group(Mac::at(group, 0), vid, set), Status::kOk);
    }

    void make_trunk(const std::vector<int> &members) {
        for (const int port : members) {
            chip_.set_link(port, true);
        }
        ASSERT_EQ(chip_.create_trunk(kTrunk), Status::kOk);
        ASSERT_EQ(chip_.set_trunk(kTrunk, members), Status::kOk);
    }
};

TEST_F(GroupsTest, OnlyTheListedPortsGetTheFrames) {
    EXPECT_EQ(outputs(kA, kGroup4), kAllOthers) << "an unknown group is flooded";
    for (const Octets &group : {kGroup4, kGroup6, kOtherGroup}) {
        add(group, {kB});
        EXPECT_EQ(outputs(kA, group), std::set<int>{kB});
        add(group, {kA, kC});
        EXPECT_EQ(outputs(kA, group), std::set<int>{kC}) << "nothing goes back";
        add(group, {});
        EXPECT_EQ(outputs(kA, group), std::set<int>{});
        add(group, {kCpu});
        EXPECT_EQ(outputs(kA, group), std::set<int>{kCpu});
    }
    EXPECT_EQ(dropped(kA, Drop::kNoDestination), 3U);
}

TEST_F(GroupsTest, AGroupIsOfItsVlan) {
    ASSERT_EQ(chip_.vlans().create({10, 10}), Status::kOk);
    ASSERT_EQ(chip_.vlans().set_ports(10, Switch::all_ports(), {}), Status::kOk);
    add(kGroup4, {kB}, 10);
    EXPECT_EQ(outputs(kA, kGroup4), kAllOthers);
    ASSERT_EQ(chip_.destroy_vlans({10, 10}), Status::kOk);
    EXPECT_EQ(chip_.macs().group_count(), 0U) << "it goes with its VLAN";
}

TEST_F(GroupsTest, ATrunkGetsOneCopyHoweverManyMembersAreListed) {
    const std::vector<int> members = {10, 11, 12};
    make_trunk(members);
    for (const std::initializer_list<int> listed : {std::initializer_list<int>{10}, {11, 12}, {10, 11, 12}}) {
        add(kGroup4, listed);
        std::set<int> ways;
        for (uint8_t from = 1; from < 60; ++from) {
            const auto ports = outputs(kA, kGroup4, from);
            ASSERT_EQ(ports.size(), 1U);
            ways.insert(*ports.begin());
        }
        EXPECT_EQ(ways, (std::set<int>{10, 11, 12})) << "the hash spreads the flows over all members";
    }
    add(kGroup4, {10, kA, kB});
    EXPECT_EQ(outputs(11, kGroup4), (std::set<int>{kA, kB})) << "nothing goes back to the trunk";
}

TEST_F(GroupsTest, ATrunksGroupSurvivesTheLossOfTheListedMember) {
    make_trunk({10, 11});
    ASSERT_EQ(chip_.set_trunk_configured(kTrunk, {10, 11}), Status::kOk);
    add(kGroup4, {10});
    ASSERT_EQ(chip_.set_link(10, false), Status::kOk);
    EXPECT_EQ(outputs(kA, kGroup4), std::set<int>{11});
    ASSERT_EQ(chip_.set_trunk(kTrunk, {11}), Status::kOk);
    EXPECT_EQ(outputs(kA, kGroup4), std::set<int>{11}) << "software counts the port among the members still";
    ASSERT_EQ(chip_.set_link(10, true), Status::kOk);
    EXPECT_EQ(outputs(kA, kGroup4), std::set<int>{11}) << "on standby";
}

TEST_F(GroupsTest, WithoutIpMulticastUnknownGroupsAreFlooded) {
    const auto drop_all = [](Port &port) {
        port.groups.ipv4_miss = GroupMiss::kDrop;
        port.groups.ipv6_miss = GroupMiss::kDrop;
    };
    ASSERT_EQ(change(kA, drop_all), Status::kOk);
    chip_.group_rules().knows_ipv4 = false;
    EXPECT_EQ(outputs(kA, kGroup4), kAllOthers);
    EXPECT_EQ(outputs(kA, kGroup6), std::set<int>{});
    chip_.group_rules() = {true, false};
    EXPECT_EQ(outputs(kA, kGroup4), std::set<int>{});
    EXPECT_EQ(outputs(kA, kGroup6), kAllOthers);
    ASSERT_EQ(change(kA, [](Port &port) { port.groups.knows_ipv4 = false; }), Status::kOk);
    EXPECT_EQ(outputs(kA, kGroup4), kAllOthers);
}

TEST_F(GroupsTest, ChangesAreRefusedForAReason) {
    const Mac group = Mac::at(kGroup4, 0);
    EXPECT_EQ(chip_.add_group(group, kVid, PortSet::of(32)), Status::kNoPort);
    EXPECT_EQ(chip_.add_group(group, 10, {}), Status::kVlanMissing);
    EXPECT_EQ(chip_.add_group(group, 0, {}), Status::kVlanRange);
    EXPECT_EQ(chip_.add_group(Mac{0x020000000001}, kVid, {}), Status::kMacNotGroup);
    EXPECT_EQ(chip_.add_group_ports(group, kVid, {}), Status::kGroupMissing);
    EXPECT_EQ(chip_.remove_group_ports(group, kVid, {}), Status::kGroupMissing);
    EXPECT_EQ(chip_.remove_group(group, kVid), Status::kGroupMissing);
    EXPECT_EQ(chip_.remove_group(group, 0x10001), Status::kVlanRange);
    EXPECT_EQ(chip_.find_group(group, 0x10001), nullptr);
    add(kGroup4, {kA});
    EXPECT_EQ(chip_.add_group_ports(group, kVid, PortSet::of(99)), Status::kNoPort);
    EXPECT_EQ(chip_.add_group_ports(group, kVid, PortSet::of(kB)), Status::kOk);
    EXPECT_EQ(chip_.remove_group_ports(group, kVid, PortSet::of(kA) | PortSet::of(kC)), Status::kOk);
    EXPECT_EQ(chip_.macs().ports_of(*chip_.find_group(group, kVid)), PortSet::of(kB));
}

}  // namespace groups_test
}  // namespace vdevice::chip
