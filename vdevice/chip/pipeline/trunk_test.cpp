// Trunks: their table, and the way of frames to and from them.
#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "vdevice/chip/testing/trunk_fixture.h"

namespace vdevice::chip {
namespace trunk_test {

using namespace test;

TEST_F(TrunkTest, AreCreatedOnceAndDestroyedOnce) {
    for (const int64_t missing : {-1, 8, 255}) {
        EXPECT_EQ(chip_.create_trunk(missing), Status::kTrunkRange);
        EXPECT_EQ(chip_.destroy_trunk(missing), Status::kTrunkRange);
    }
    for (int trunk = 0; trunk < TrunkTable::kTrunks; ++trunk) {
        EXPECT_EQ(chip_.destroy_trunk(trunk), Status::kTrunkMissing);
        EXPECT_EQ(chip_.set_trunk(trunk, {10}), Status::kTrunkMissing);
        EXPECT_EQ(chip_.set_trunk_balance(trunk, 1), Status::kTrunkMissing);
        EXPECT_EQ(chip_.create_trunk(trunk), Status::kOk);
        EXPECT_EQ(chip_.create_trunk(trunk), Status::kTrunkExists);
    }
    EXPECT_EQ(chip_.destroy_trunk(7), Status::kOk);
    EXPECT_EQ(chip_.destroy_trunk(7), Status::kTrunkMissing);
    chip_.destroy_all_trunks();
    EXPECT_EQ(chip_.destroy_trunk(0), Status::kTrunkMissing);
}

TEST_F(TrunkTest, MembersAreRefusedForAReason) {
    make_trunk();
    ASSERT_EQ(chip_.create_trunk(0), Status::kOk);
    EXPECT_EQ(chip_.set_trunk(0, {1, 2, 3, 4, 5, 6, 7, 8, 9}), Status::kTrunkFull);
    EXPECT_EQ(chip_.set_trunk(0, {1, 32}), Status::kNoPort);
    EXPECT_EQ(chip_.set_trunk(0, {1, 1}), Status::kTrunkMember);
    EXPECT_EQ(chip_.set_trunk(0, {1, 0}), Status::kTrunkMember);
    EXPECT_EQ(chip_.set_trunk(0, {1, 10}), Status::kTrunkMember);
    EXPECT_TRUE(chip_.trunks().find(0)->members.empty());
    EXPECT_EQ(chip_.set_trunk(0, {1, 2, 3, 4, 5, 6, 7, 8}), Status::kOk);
    EXPECT_EQ(chip_.set_trunk(kTrunk, {13, 10}), Status::kOk);
    EXPECT_EQ(chip_.trunks().find(kTrunk)->members, (std::vector<int>{13, 10}));
    EXPECT_EQ(chip_.set_trunk(0, {11}), Status::kOk) << "it left its trunk";
    for (const uint32_t mode : {0U, 7U, 0xFFFFFFFFU}) {
        EXPECT_EQ(chip_.set_trunk_balance(0, mode), Status::kBadArgument);
    }
}

TEST_F(TrunkTest, AFloodedFrameLeavesOnce) {
    make_trunk();
    for (uint8_t number = 1; number < 50; ++number) {
        const auto ports = outputs(kA, kBroadcast + station(number) + kPayload);
        std::set<int> others;
        int copies = 0;
        for (const int port : ports) {
            if (kMemberSet.count(port) != 0) {
                ++copies;
            } else {
                others.insert(port);
            }
        }
        EXPECT_EQ(copies, 1);
        EXPECT_EQ(others, (std::set<int>{kCpu, kB, kC}));
    }
}

TEST_F(TrunkTest, AddressesComeAndGoWithTheTrunk) {
    for (const int port : kMembers) {
        chip_.set_link(port, true);
    }
    send(10, kBroadcast + station(1) + kPayload);
    ASSERT_EQ(chip_.add_static_mac(Mac::at(station(2), 0), 1, 10), Status::kOk);
    make_trunk();
    EXPECT_EQ(find(1)->trunk, kTrunk) << "learned before the port joined";
    EXPECT_EQ(find(2)->trunk, kTrunk);
    ASSERT_EQ(chip_.destroy_trunk(kTrunk), Status::kOk);
    EXPECT_EQ(find(1), nullptr);
    ASSERT_NE(find(2), nullptr) << "static entries stay";
    EXPECT_EQ(way_of(station(2) + station(9) + kPayload), 10);
}

TEST_F(TrunkTest, MembersWithoutLinkAreSkipped) {
    make_trunk();
    send(10, kBroadcast + station(1) + kPayload);
    std::vector<int> left = kMembers;
    while (!left.empty()) {
        std::set<int> used;
        for (uint8_t number = 20; number < 220; ++number) {
            used.insert(way_of(station(1) + station(number) + kPayload));
        }
        EXPECT_EQ(used, std::set<int>(left.begin(), left.end()));
        chip_.set_link(left.back(), false);
        left.pop_back();
    }
    EXPECT_TRUE(send(kA, station(1) + station(9) + kPayload).empty());
    EXPECT_EQ(dropped(kA, Drop::kEgressDown), 1U);
}

}  // namespace trunk_test
}  // namespace vdevice::chip
