// Who forwards a frame: the chip, or the kernel, and never both.
#include "switchd/frames/testing/path_fixture.h"

namespace switchd {
namespace forwarding_test {

using namespace path_test;
using namespace std::chrono_literals;
using vdevice::chip::test::kBroadcast;
using vdevice::chip::test::Octets;
using vdevice::chip::test::octets16;
using vdevice::chip::test::station;
using vdevice::chip::test::vlan_tag;
using vdevice::chip::test::operator+;

using ForwardingTest = FramePathTest;

TEST_F(ForwardingTest, WhatTheChipHasFloodedIsNotSentAgain) {
    EXPECT_EQ(from_chip(1, from_host(kBroadcast, kOffice)), "swp1");
    for (const PortName &other : {PortName{2, 0}, PortName{kGroup, 0}, PortName{1, 0}}) {
        EXPECT_EQ(from_kernel(other, untagged(kBroadcast)), "forwarded");
    }
    EXPECT_EQ(from_kernel({2, 0}, untagged(kBroadcast), 2s), "swp2") << "after a second it is another frame";
    EXPECT_EQ(drops(2, Drop::kForwarded), 1U);
    EXPECT_EQ(drops(kGroup, Drop::kForwarded), 1U);
}

TEST_F(ForwardingTest, SoIsUnicastToNobodyTheChipKnows) {
    EXPECT_EQ(from_chip(1, from_host(station(8), kOffice)), "swp1");
    EXPECT_EQ(from_kernel({2, 0}, untagged(station(8))), "forwarded");
}

TEST_F(ForwardingTest, WhateverItsPriorityWas) {
    EXPECT_EQ(from_chip(1, from_host(kBroadcast, 0xE000 | kVoice)), "swp1.200");
    EXPECT_EQ(from_kernel({2, kVoice}, untagged(kBroadcast)), "forwarded");
}

TEST_F(ForwardingTest, TheSameTextInAnotherVlanIsAnotherFrame) {
    EXPECT_EQ(from_chip(1, from_host(kBroadcast, kOffice)), "swp1");
    EXPECT_EQ(from_kernel({2, kVoice}, untagged(kBroadcast)), "swp2.200") << "the chip does not route between VLANs";
}

TEST_F(ForwardingTest, ABridgeThatKnowsVlansSendsTheTagBack) {
    EXPECT_EQ(from_chip(1, from_host(kBroadcast, kOther)), "swp1");
    EXPECT_EQ(from_kernel({2, 0}, from_host(kBroadcast, kOther)), "forwarded");
    EXPECT_EQ(from_kernel({2, 0}, from_host(kBroadcast, kOther + 1)), "swp2");
}

TEST_F(ForwardingTest, AHostsOwnTagInsideIsPartOfTheFrame) {
    const Octets inside = vlan_tag(11) + kText;
    EXPECT_EQ(from_chip(1, from_host(kBroadcast, kOffice, inside)), "swp1");
    EXPECT_EQ(delivered_, untagged(kBroadcast, inside));
    EXPECT_EQ(from_kernel({2, 0}, untagged(kBroadcast, inside)), "forwarded");
}

TEST_F(ForwardingTest, WhatTheChipGivesToTheCpuAloneIsForTheKernelToForward) {
    Octets igmp = octets16(0x0800) + Octets(46);
    igmp[2] = 0x45;
    igmp[5] = 28;
    igmp[11] = 2;
    const Octets group = {0x01, 0, 0x5E, 1, 2, 3};
    EXPECT_EQ(from_chip(1, from_host(group, kOffice, igmp)), "swp1");
    EXPECT_EQ(from_kernel({2, 0}, untagged(group, igmp)), "swp2");
    EXPECT_EQ(from_chip(1, from_host(kOwn, kOffice)), "swp1");
    EXPECT_EQ(from_kernel({2, 0}, untagged(kOwn)), "swp2");
    EXPECT_EQ(from_chip(1, from_host(kNeighbours, kOffice)), "swp1");
    EXPECT_EQ(from_kernel({2, 0}, untagged(kNeighbours)), "swp2");
}

TEST_F(ForwardingTest, WhatWasNotDeliveredIsNotRemembered) {
    EXPECT_EQ(from_chip(3, from_host(kBroadcast, kOffice)), "no_interface");
    EXPECT_EQ(from_kernel({2, 0}, untagged(kBroadcast)), "swp2");
}

TEST_F(ForwardingTest, AFloodedFrameOfTheSwitchItselfHasComeBack) {
    EXPECT_EQ(from_chip(1, kBroadcast + kOwn + vlan_tag(kOffice) + kText), "looped");
    EXPECT_EQ(from_kernel({2, 0}, kBroadcast + kOwn + kText), "swp2");
    EXPECT_EQ(from_chip(1, kNeighbours + kOwn + vlan_tag(kOffice) + kText), "swp1") << "so that loops are found";
    EXPECT_EQ(drops(1, Drop::kLooped), 1U);
}

TEST_F(FramePathTest, AnUnknownGroupIsForwardedByTheKernel) {
    const Octets ipv4 = {0x01, 0x00, 0x5E, 1, 2, 3};
    const Octets local = {0x01, 0x00, 0x5E, 0, 0, 5};
    const Octets ipv6 = {0x33, 0x33, 0, 0, 0, 5};
    const Octets all_nodes = {0x33, 0x33, 0, 0, 0, 1};
    const auto is_forwarded = [&](const Octets &group) {
        from_chip(1, from_host(group, kOffice));
        return from_kernel({2, 0}, untagged(group));
    };
    table_.has_unknown_ipv4 = true;
    path_.set_table(table_);
    EXPECT_EQ(is_forwarded(ipv4), "swp2");
    EXPECT_EQ(is_forwarded(ipv6), "forwarded");
    EXPECT_EQ(is_forwarded(local), "forwarded");
    table_.has_unknown_ipv6 = true;
    table_.groups = {{kOffice, {0x01, 0x00, 0x5E, 1, 2, 3}}};
    path_.set_table(table_);
    EXPECT_EQ(is_forwarded(ipv4), "forwarded");
    EXPECT_EQ(is_forwarded(all_nodes), "forwarded");
    const Octets other = {0x33, 0x33, 0, 0, 0, 6};
    EXPECT_EQ(is_forwarded(other), "swp2");
    EXPECT_EQ(from_chip(1, ipv4 + kOwn + vlan_tag(kVoice) + kText), "looped");
}

}  // namespace forwarding_test
}  // namespace switchd
