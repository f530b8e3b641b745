// What rules rewrite in frames: DSCP, priority, VLAN.
#include <gtest/gtest.h>

#include "vdevice/chip/testing/field_fixture.h"

namespace vdevice::chip {
namespace field_rewrite_test {

using namespace std::chrono_literals;
using namespace test;

class FieldRewrite : public FieldRulesTest {};

TEST_F(FieldRewrite, DscpOfIpv4IsRewrittenAndItsChecksumCorrected) {
    rule({{kSetDscp, 46}});
    for (const unsigned tos : {0U, 0xFFU, 0x13U}) {
        Ipv4 packet{kUdp};
        packet.tos = static_cast<uint8_t>(tos);
        packet.options = Octets(4, 1);
        Ipv4 wanted = packet;
        wanted.tos = static_cast<uint8_t>(46U << 2 | (tos & 3));
        EXPECT_EQ(received(kAddresses + ipv4(packet, kDatagram)), kAddresses + ipv4(wanted, kDatagram)) << tos;
        const Octets header = received(kAddresses + ipv4(packet, kDatagram));
        EXPECT_EQ(test::ones_sum(Bytes{header}.subspan(kHeaderBytes, kIpv4Bytes + 4)), 0xFFFF);
    }
}

TEST_F(FieldRewrite, DscpIsFoundBehindTagsAndOnlyWhereThereIsOne) {
    rule({{kSetDscp, 46}});
    tag_vlan_1();
    Ipv4 wanted{kUdp};
    wanted.tos = 46 << 2;
    const Octets tags = test::vlan_tag(0x2001) + test::octets16(0x88A8) + test::octets16(7);
    EXPECT_EQ(received(kAddresses + tags + ipv4({kUdp}, kDatagram)), kAddresses + tags + ipv4(wanted, kDatagram));
    const Octets arp = kAddresses + test::vlan_tag(1) + test::octets16(0x0806) + Octets(46, 0);
    EXPECT_EQ(received(arp), arp);
    const Octets cut = kAddresses + test::vlan_tag(1) + test::octets16(0x0800) + Octets{0x45, 0};
    EXPECT_EQ(received(cut), cut);
}

TEST_F(FieldRewrite, ARuleChoosesTheVlan) {
    rule({{kSetVlan, 100}});
    EXPECT_TRUE(outputs(kA, kFlooded).empty());
    EXPECT_EQ(dropped(kA, Drop::kVlanMissing), 1U);
    ASSERT_EQ(chip_.vlans().create({100, 100}), Status::kOk);
    ASSERT_EQ(chip_.vlans().set_ports(100, PortSet::of(kB), PortSet{}), Status::kOk);
    EXPECT_TRUE(outputs(kA, kFlooded).empty());
    EXPECT_EQ(dropped(kA, Drop::kNotMember), 1U);
    ASSERT_EQ(chip_.vlans().set_ports(100, PortSet::of(kA).add(kB), PortSet{}), Status::kOk);
    EXPECT_EQ(send(kA, kAddresses + test::vlan_tag(0x6001) + kPayload),
              (std::vector<Sent>{{kB, kAddresses + test::vlan_tag(0x6064) + kPayload}}));
    EXPECT_NE(chip_.macs().find(Mac{0x020000000001}, 100), nullptr) << "learned there";
}

}  // namespace field_rewrite_test
}  // namespace vdevice::chip
