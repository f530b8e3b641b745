// Addresses in the way of frames: static and filtering entries, those given to a trunk, and the limits on learning.
#include <gtest/gtest.h>

#include "vdevice/chip/testing/chip_fixture.h"

namespace vdevice::chip {
namespace learning_test {

using namespace std::chrono_literals;
using namespace test;

constexpr int kTrunk = 2;
constexpr Vid kVid = 1;

class LearningTest : public test::ChipTest {
  protected:
    static Mac mac(uint8_t number) { return Mac::at(station(number), 0); }

    size_t hears_of(int port, uint8_t number) { return send(port, kBroadcast + station(number) + kPayload).size(); }

    std::vector<int> outputs(int port, uint8_t from, uint8_t to) {
        std::vector<int> ports;
        for (const test::Sent &sent : send(port, station(to) + station(from) + kPayload)) {
            ports.push_back(sent.first);
        }
        return ports;
    }

    void filter(uint8_t number, bool drops_from, bool drops_to) {
        MacEntry entry;
        entry.mac = mac(number);
        entry.port = kB;
        entry.is_static = true;
        entry.drops_from = drops_from;
        entry.drops_to = drops_to;
        ASSERT_EQ(chip_.add_mac(entry, kVid), Status::kOk);
    }

    void make_trunk(std::vector<int> members) {
        ASSERT_EQ(chip_.create_trunk(kTrunk), Status::kOk);
        ASSERT_EQ(chip_.set_trunk(kTrunk, members), Status::kOk);
    }

    Status give_to_trunk(uint8_t number, int trunk, bool is_static = true) {
        MacEntry entry;
        entry.mac = mac(number);
        entry.port = -1;
        entry.is_static = is_static;
        entry.is_given_to_trunk = true;
        entry.trunk = trunk;
        return chip_.add_mac(entry, kVid);
    }

    bool knows(uint8_t number) { return chip_.macs().find(mac(number), kVid) != nullptr; }
};

TEST_F(LearningTest, FramesFromAFilteredAddressAreDropped) {
    filter(9, true, false);
    EXPECT_EQ(hears_of(kA, 9), 0U);
    EXPECT_EQ(hears_of(kB, 9), 0U) << "on its own port, too";
    EXPECT_EQ(dropped(kA, Drop::kFiltered), 1U);
    EXPECT_EQ(outputs(kA, 1, 9), std::vector<int>{kB}) << "frames to it are not";
}

TEST_F(LearningTest, AFilterHoldsWhateverThePortLearns) {
    filter(9, true, true);
    for (const LearnMode &mode : kLearnModes) {
        ASSERT_EQ(change(kB, [&](Port &port) { port.learning = mode; }), Status::kOk);
        EXPECT_EQ(hears_of(kB, 9), 0U) << mode.number;
    }
    chip_.tick(1000000s);
    EXPECT_TRUE(knows(9)) << "it neither ages nor moves";
}

TEST_F(LearningTest, EntriesNeedTheirVlanPortAndTrunk) {
    MacEntry entry;
    entry.mac = mac(1);
    entry.port = 32;
    EXPECT_EQ(chip_.add_mac(entry, kVid), Status::kNoPort);
    entry.port = kA;
    EXPECT_EQ(chip_.add_mac(entry, 77), Status::kVlanMissing);
    EXPECT_EQ(chip_.add_mac(entry, 4095), Status::kVlanRange);
    EXPECT_EQ(give_to_trunk(1, kTrunk), Status::kTrunkMissing);
    EXPECT_EQ(give_to_trunk(1, 8), Status::kTrunkRange);
    EXPECT_EQ(give_to_trunk(1, -1), Status::kTrunkRange);
    EXPECT_EQ(chip_.macs().size(), 0U);
}

TEST_F(LearningTest, AnEntryGivenToATrunkWaitsForIt) {
    make_trunk({kB, kC});
    ASSERT_EQ(give_to_trunk(1, kTrunk), Status::kOk);
    ASSERT_EQ(give_to_trunk(3, kTrunk, false), Status::kOk);
    EXPECT_EQ(outputs(kA, 2, 1).size(), 1U);
    ASSERT_EQ(chip_.destroy_trunk(kTrunk), Status::kOk);
    EXPECT_EQ(outputs(kA, 2, 1), std::vector<int>{});
    EXPECT_FALSE(knows(3)) << "a dynamic one is forgotten";
    make_trunk({kC});
    EXPECT_EQ(outputs(kA, 2, 1), std::vector<int>{kC});
}

TEST_F(LearningTest, ALimitDropsAndRemembersWhatIsBeyondIt) {
    chip_.limits().of_port(kA) = 2;
    EXPECT_EQ(hears_of(kA, 1), 3U);
    EXPECT_EQ(hears_of(kA, 2), 3U);
    EXPECT_EQ(hears_of(kA, 3), 0U);
    EXPECT_EQ(hears_of(kA, 3), 0U);
    EXPECT_EQ(hears_of(kA, 4), 0U);
    EXPECT_EQ(hears_of(kA, 1), 3U) << "what is known passes";
    EXPECT_EQ(dropped(kA, Drop::kLearnLimit), 3U);
    EXPECT_EQ(chip_.port(kA).violations.count(), 2U) << "an address counts once";
    EXPECT_EQ(hears_of(kB, 3), 3U) << "the limit is another port's";
    ASSERT_EQ(chip_.macs().remove(mac(1), kVid), Status::kOk);
    EXPECT_EQ(hears_of(kA, 4), 3U) << "there is room again";
}

TEST_F(LearningTest, EveryScopeLimits) {
    make_trunk({kB, kC});
    ASSERT_EQ(chip_.vlans().create({10, 10}), Status::kOk);
    ASSERT_EQ(chip_.vlans().set_ports(10, Switch::all_ports(), {}), Status::kOk);
    LearnLimits::Limit *const limits[] = {&chip_.limits().system(), &chip_.limits().of_vlan(10),
                                          &chip_.limits().of_trunk(kTrunk)};
    for (LearnLimits::Limit *limit : limits) {
        *limit = 1;
        const Octets tag = test::vlan_tag(10);
        EXPECT_FALSE(send(kB, kBroadcast + station(1) + tag + kPayload).empty());
        EXPECT_TRUE(send(kC, kBroadcast + station(2) + tag + kPayload).empty());
        *limit = LearnLimits::kNoLimit;
        EXPECT_FALSE(send(kC, kBroadcast + station(2) + tag + kPayload).empty());
        chip_.macs().remove_if([](const MacEntry &) { return true; });
    }
    chip_.limits().of_port(kB) = 0;
    EXPECT_FALSE(send(kB, kBroadcast + station(1) + kPayload).empty()) << "the trunk's limit holds for its ports";
}

TEST_F(LearningTest, ViolationsAreRememberedUpToABound) {
    Violations violations;
    for (uint64_t number = 0; number < 2 * Violations::kMaxRemembered; ++number) {
        violations.remember(Mac{number}, kVid);
    }
    EXPECT_EQ(violations.count(), Violations::kMaxRemembered);
    violations.forget();
    EXPECT_EQ(violations.count(), 0U);
}

}  // namespace learning_test
}  // namespace vdevice::chip
