// Protocol frames for the CPU: which are trapped, and that they go nowhere else.
#include <gtest/gtest.h>

#include "vdevice/chip/testing/chip_fixture.h"

namespace vdevice::chip {
namespace traps_test {

using namespace test;

constexpr uint8_t kLacp = 1;
constexpr uint8_t kMarker = 2;
constexpr uint8_t kOam = 3;
const Octets kSlow = {0x01, 0x80, 0xC2, 0, 0, 0x02};

Octets body(uint8_t subtype) {
    return test::octets16(0x8809) + Octets{subtype} + Octets(45, 0);
}

class TrapsTest : public test::ChipTest {
  protected:
    size_t copies(const Octets &frame, int port = kA) { return send(port, frame).size(); }
};

TEST_F(TrapsTest, LacpGoesToTheCpuOnly) {
    chip_.traps().lacp = true;
    EXPECT_EQ(
        send(kA, kSlow + station(1) + body(kLacp)),
        (std::vector<Sent>{{kCpu, kSlow + station(1) + test::receive_tag(kA) + test::vlan_tag(1) + body(kLacp)}}));
    EXPECT_EQ(chip_.macs().size(), 0U) << "a neighbour's frame teaches nothing";
    EXPECT_EQ(copies(kSlow + station(1) + body(kOam)), 3U);
    EXPECT_EQ(copies(kSlow + station(1) + body(kMarker)), 3U);
    EXPECT_EQ(copies(Octets{0x01, 0x80, 0xC2, 0, 0, 0x03} + station(1) + body(kLacp)), 3U) << "another address";
    EXPECT_EQ(copies(kSlow + station(1) + test::octets16(0x88CC) + Octets(46, 1)), 3U) << "another type";
    EXPECT_EQ(copies(kSlow + station(1) + test::octets16(0x8809)), 3U) << "no subtype";
}

TEST_F(TrapsTest, OamGoesToTheCpuOnly) {
    chip_.traps().oam = true;
    EXPECT_EQ(copies(kSlow + station(1) + body(kOam)), 1U);
    EXPECT_EQ(copies(kSlow + station(1) + body(kLacp)), 3U);
}

TEST_F(TrapsTest, LldpToItsThreeAddressesGoesToTheCpuOnly) {
    const Octets lldp = test::octets16(0x88CC) + Octets(46, 1);
    for (const uint8_t last : Octets{0x00, 0x03, 0x0E}) {
        const Octets neighbours = {0x01, 0x80, 0xC2, 0, 0, last};
        chip_.traps().lldp = false;
        EXPECT_EQ(copies(neighbours + station(1) + lldp), 3U);
        chip_.traps().lldp = true;
        EXPECT_EQ(copies(neighbours + station(1) + lldp), 1U);
        EXPECT_EQ(copies(neighbours + station(1) + test::vlan_tag(99) + lldp), 1U) << "in whatever VLAN";
        EXPECT_EQ(copies(neighbours + station(1) + test::octets16(0x888E) + Octets(46, 1)), 3U) << "another type";
    }
    EXPECT_EQ(copies(Octets{0x01, 0x80, 0xC2, 0, 0, 0x01} + station(1) + lldp), 3U) << "another address";
    EXPECT_EQ(copies(test::kBroadcast + station(1) + lldp), 3U);
}

TEST_F(TrapsTest, BpdusGoToTheCpuOnly) {
    const Octets bridges = {0x01, 0x80, 0xC2, 0, 0, 0x00};
    const Octets bpdu = test::octets16(38) + Octets{0x42, 0x42, 3} + Octets(43, 0);
    EXPECT_EQ(copies(bridges + station(1) + bpdu), 3U);
    chip_.traps().bpdu = true;
    EXPECT_EQ(copies(bridges + station(1) + bpdu), 1U);
    EXPECT_EQ(copies(Octets{0x01, 0x80, 0xC2, 0, 0, 0x08} + station(1) + bpdu), 3U) << "another address";
    EXPECT_EQ(copies(bridges + station(1) + test::octets16(38) + Octets{0xAA, 0xAA, 3} + Octets(43, 0)), 3U);
    EXPECT_EQ(copies(bridges + station(1) + test::octets16(0x8809) + Octets{0x42, 0x42, 3} + Octets(43, 0)), 3U)
        << "a type is no length";
    EXPECT_EQ(copies(bridges + station(1) + test::octets16(1500) + Octets{0x42, 0x42}), 1U);
    EXPECT_EQ(copies(bridges + station(1) + test::octets16(1501) + Octets{0x42, 0x42}), 3U);
    EXPECT_EQ(copies(bridges + station(1) + test::octets16(1) + Octets{0x42}), 3U) << "cut short";
}

TEST_F(TrapsTest, NeitherVlanNorLearningModeNorIsolationHoldThemUp) {
    chip_.traps().lacp = true;
    ASSERT_EQ(chip_.vlans().set_ports(1, PortSet{}, PortSet{}), Status::kOk);
    ASSERT_EQ(chip_.set_egress(kA, PortSet{}), Status::kOk);
    ASSERT_EQ(change(kA, [](Port &port) { port.learning = *find_learn_mode(0); }), Status::kOk);
    EXPECT_EQ(copies(kSlow + station(1) + body(kLacp)), 1U);
    chip_.set_link(kCpu, false);
    EXPECT_EQ(copies(kSlow + station(1) + body(kLacp)), 0U);
    EXPECT_EQ(dropped(kA, Drop::kEgressDown), 1U);
}

TEST_F(TrapsTest, MembersOfATrunkAreToldApart) {
    chip_.traps().lacp = true;
    ASSERT_EQ(chip_.create_trunk(0), Status::kOk);
    ASSERT_EQ(chip_.set_trunk(0, {kA, test::kB}), Status::kOk);
    for (const int port : {kA, test::kB}) {
        const auto sent = send(port, kSlow + station(1) + body(kLacp));
        ASSERT_EQ(sent.size(), 1U);
        EXPECT_EQ(sent[0].second[17], port);
    }
}

}  // namespace traps_test
}  // namespace vdevice::chip
