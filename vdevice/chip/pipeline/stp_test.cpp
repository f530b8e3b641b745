// What the ports' spanning-tree states let pass, on real frames.
#include <gtest/gtest.h>

#include <set>

#include "vdevice/chip/testing/chip_fixture.h"

namespace vdevice::chip {
namespace stp_test {

using namespace test;

constexpr uint32_t kBlocking = 1;
constexpr uint32_t kLearning = 3;
constexpr uint32_t kForwarding = 4;
const Octets kGroup = {0x01, 0, 0x5E, 1, 2, 3};

class StpTest : public test::ChipTest {
  protected:
    void set_state(int port, uint32_t state, int group = StpGroups::kDefault) {
        ASSERT_EQ(chip_.stp().set_state(group, port, state), Status::kOk);
    }
    std::set<int> ways(int port, const Octets &frame) {
        std::set<int> ports;
        for (const Sent &sent : send(port, frame)) {
            ports.insert(sent.first);
        }
        return ports;
    }
    Octets from(uint8_t number, const Octets &to = kBroadcast) { return to + station(number) + kPayload; }
};

TEST_F(StpTest, ALearningPortLearnsAndDrops) {
    set_state(kA, kLearning);
    EXPECT_TRUE(ways(kA, from(1)).empty());
    EXPECT_EQ(dropped(kA, Drop::kStpBlocked), 1U);
    ASSERT_NE(chip_.macs().find(Mac{0x020000000001}, 1), nullptr);
    set_state(kA, kForwarding);
    EXPECT_EQ(ways(kB, from(2, station(1))), std::set<int>{kA});
}

TEST_F(StpTest, OnlyForwardingPortsSend) {
    send(kB, from(2));
    for (uint32_t state = 0; state < kForwarding; ++state) {
        set_state(kB, state);
        EXPECT_EQ(ways(kA, from(1)), (std::set<int>{kCpu, kC})) << state;
        EXPECT_EQ(ways(kA, from(1, kGroup)), (std::set<int>{kCpu, kC})) << state;
        EXPECT_EQ(ways(kA, from(1, station(9))), (std::set<int>{kCpu, kC})) << state;
        EXPECT_TRUE(ways(kA, from(1, station(2))).empty()) << state;
        EXPECT_EQ(dropped(kA, Drop::kStpEgress), state + 1);
    }
    set_state(kB, kForwarding);
    EXPECT_EQ(ways(kA, from(1, station(2))), std::set<int>{kB});
    EXPECT_EQ(ways(kA, from(1)), (std::set<int>{kCpu, kB, kC}));
}

TEST_F(StpTest, KnownGroupsAvoidBlockedPorts) {
    ASSERT_EQ(chip_.add_group(Mac{0x01005E010203}, 1, PortSet::of(kB).add(kC)), Status::kOk);
    set_state(kB, kBlocking);
    EXPECT_EQ(ways(kA, from(1, kGroup)), std::set<int>{kC});
}

TEST_F(StpTest, TrunksAreServedByMembersThatForward) {
    ASSERT_EQ(chip_.create_trunk(0), Status::kOk);
    ASSERT_EQ(chip_.set_trunk(0, {kB, kC}), Status::kOk);
    send(kB, from(2));
    set_state(kB, kBlocking);
    for (uint8_t number = 10; number < 30; ++number) {
        EXPECT_EQ(ways(kA, from(number)), (std::set<int>{kCpu, kC}));
        EXPECT_EQ(ways(kA, from(number, station(2))), std::set<int>{kC});
    }
    set_state(kC, kBlocking);
    EXPECT_EQ(ways(kA, from(10)), std::set<int>{kCpu});
    EXPECT_TRUE(ways(kA, from(10, station(2))).empty());
    EXPECT_TRUE(ways(kB, from(2)).empty());
    EXPECT_EQ(dropped(kB, Drop::kStpBlocked), 1U);
}

}  // namespace stp_test
}  // namespace vdevice::chip
