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
const Octets kBpdu =
    Octets{0x01, 0x80, 0xC2, 0, 0, 0} + station(1) + test::octets16(38) + Octets{0x42, 0x42} + Octets(36, 0);

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

TEST_F(StpTest, StatesBelowLearningLetNothingIn) {
    for (uint32_t state = 0; state < kLearning; ++state) {
        set_state(kA, state);
        EXPECT_TRUE(ways(kA, from(1)).empty()) << state;
        EXPECT_EQ(chip_.macs().size(), 0U) << state;
        EXPECT_EQ(dropped(kA, Drop::kStpBlocked), state + 1);
    }
}

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

TEST_F(StpTest, EachGroupHasStatesOfItsOwn) {
    constexpr uint32_t kOther = 100;
    ASSERT_EQ(chip_.vlans().create({kOther, kOther}), Status::kOk);
    ASSERT_EQ(chip_.vlans().set_ports(kOther, PortSet::of(kA).add(kB).add(kC), {}), Status::kOk);
    ASSERT_EQ(chip_.stp().create(2), Status::kOk);
    ASSERT_EQ(chip_.stp().add_vlan(2, kOther), Status::kOk);
    set_state(kB, kBlocking, 2);
    set_state(kC, kBlocking);
    const Octets tagged = kBroadcast + station(1) + test::vlan_tag(kOther) + kPayload;
    EXPECT_EQ(ways(kA, tagged), std::set<int>{kC});
    EXPECT_EQ(ways(kA, from(1)), (std::set<int>{kCpu, kB}));
    ASSERT_EQ(chip_.stp().destroy(2), Status::kOk);
    EXPECT_EQ(ways(kA, tagged), std::set<int>{kB});
}

TEST_F(StpTest, BpdusReachTheCpuFromABlockedPort) {
    chip_.traps().bpdu = true;
    set_state(kA, 0);
    EXPECT_EQ(ways(kA, kBpdu), std::set<int>{kCpu});
    const Octets reserved = Octets{0x01, 0x80, 0xC2, 0, 0, 0x20} + station(1) + kPayload;
    EXPECT_EQ(ways(kA, reserved), std::set<int>{kCpu});
    EXPECT_EQ(chip_.macs().size(), 0U);
}

TEST_F(StpTest, DirectedFramesLeaveABlockedPortAndSwitchedOnesDoNot) {
    set_state(kA, 0);
    const Octets addresses = kBroadcast + station(0xCC);
    for (const unsigned opcode : {3U, 5U, 6U}) {
        EXPECT_EQ(ways(kCpu, addresses + test::transmit_tag(opcode, kA) + kPayload), std::set<int>{kA}) << opcode;
    }
    for (const unsigned opcode : {4U, 7U}) {
        EXPECT_EQ(ways(kCpu, addresses + test::transmit_tag(opcode, 1U << kA) + kPayload), std::set<int>{kA}) << opcode;
    }
    EXPECT_EQ(ways(kCpu, addresses + test::transmit_tag(1, 0) + kPayload), (std::set<int>{kB, kC}));
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
