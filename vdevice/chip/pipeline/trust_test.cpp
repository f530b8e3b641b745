// Where a frame's priority comes from: the port, the tag or the DSCP, and what the maps make of it.
#include <gtest/gtest.h>

#include "vdevice/chip/testing/priority_fixture.h"

namespace vdevice::chip {
namespace trust_test {

using namespace test;

constexpr uint8_t kCongestion = 0x03;  // the bits beside the DSCP

Octets packet4(uint32_t dscp) {
    return ipv4({.protocol = kUdp, .tos = static_cast<uint8_t>(dscp << 2 | kCongestion)}, kDatagram);
}

Octets packet6(uint32_t dscp) {
    const auto traffic_class = static_cast<uint8_t>(dscp << 2 | kCongestion);
    return ipv6({.next_header = kUdp, .traffic_class = traffic_class}, kDatagram);
}

const Octets kArp = test::octets16(0x0806) + Octets(46, 0);

class TrustTest : public test::PriorityTest {
  protected:
    /** The port's own priority is 6. */
    void trust(Trust trust) {
        ASSERT_EQ(change(kA,
                         [&](Port &port) {
                             port.trust = trust;
                             port.untagged_priority = 6;
                         }),
                  Status::kOk);
    }
    DscpMap &dscps() { return chip_.priority_rules().dscps; }
};

TEST_F(TrustTest, OfThePortAloneIsForAllFrames) {
    trust(Trust::kPort);
    EXPECT_EQ(queues_of(kAddresses + packet4(46)), one_in(6));
    EXPECT_EQ(queues_of(tagged(3, packet4(46))), one_in(6));
    EXPECT_EQ(queues_of(tagged(3, kArp)), one_in(6));
}

TEST_F(TrustTest, OfTagsIsThePortsWithoutATag) {
    trust(Trust::kDot1p);
    EXPECT_EQ(queues_of(kAddresses + packet4(46)), one_in(6));
    EXPECT_EQ(queues_of(tagged(3, packet4(46))), one_in(3));
    EXPECT_EQ(queues_of(tagged(0, kArp)), one_in(0)) << "a tag with priority 0 is a tag";
    EXPECT_EQ(chip_.port(kC).trust, Trust::kDot1p) << "at power-on";
}

TEST_F(TrustTest, OfDscpsIsForIpPacketsTaggedOrNot) {
    for (const Trust mode : {Trust::kDscp, Trust::kBoth}) {
        trust(mode);
        for (const uint32_t dscp : {0U, 8U, 46U, 63U}) {
            EXPECT_EQ(queues_of(kAddresses + packet4(dscp)), one_in(dscp / 8));
            EXPECT_EQ(queues_of(tagged(3, packet4(dscp))), one_in(dscp / 8));
            EXPECT_EQ(queues_of(kAddresses + packet6(dscp)), one_in(dscp / 8));
            EXPECT_EQ(queues_of(tagged(3, packet6(dscp))), one_in(dscp / 8));
        }
    }
}

TEST_F(TrustTest, OfDscpsLooksBehindAllTags) {
    trust(Trust::kDscp);
    EXPECT_EQ(queues_of(tagged(3, test::vlan_tag(0x2007) + packet4(46))), one_in(5));
}

TEST_F(TrustTest, OfDscpsLeavesOtherFramesToTheirTagsOrToThePort) {
    for (const Trust mode : {Trust::kDscp, Trust::kBoth}) {
        trust(mode);
        EXPECT_EQ(queues_of(tagged(3, kArp)), one_in(3));
        EXPECT_EQ(queues_of(kAddresses + kArp), one_in(6));
    }
    chip_.priority_rules().defaults_to_port = true;
    trust(Trust::kDscp);
    EXPECT_EQ(queues_of(tagged(3, kArp)), one_in(6));
    EXPECT_EQ(queues_of(tagged(3, packet4(46))), one_in(5));
    trust(Trust::kBoth);
    EXPECT_EQ(queues_of(tagged(3, kArp)), one_in(3)) << "both trusts the tag as such";
}

TEST_F(TrustTest, IsNotGivenToPacketsThatAreCutShort) {
    trust(Trust::kDscp);
    const Octets whole = tagged(3, packet4(46));
    const size_t header_ends = whole.size() - kDatagram.size();
    EXPECT_EQ(queues_of(Octets(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(header_ends))), one_in(5));
    EXPECT_EQ(queues_of(Octets(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(header_ends - 1))), one_in(3));
}

TEST_F(TrustTest, IsEachPortsOwn) {
    trust(Trust::kDscp);
    EXPECT_EQ(queues_of(tagged(3, packet4(46)), kC), one_in(3));
}

TEST_F(TrustTest, ThePriorityStandsInTheTagThatTheFrameLeavesWith) {
    tag_vlan_1();
    const auto tci = [&](const Octets &frame) { return read16(received(frame), kAddressBytes + kTypeBytes); };
    trust(Trust::kPort);
    EXPECT_EQ(tci(tagged(3, kArp)), 0xC001);
    EXPECT_EQ(tci(kAddresses + test::vlan_tag(0x7001) + kArp), 0xD001) << "whether it may be dropped stays";
    trust(Trust::kDscp);
    EXPECT_EQ(tci(kAddresses + packet4(46)), 0xA001);
}

TEST_F(TrustTest, RowsOfTheDscpMapHoldForAllPortsOrForOne) {
    trust(Trust::kDscp);
    dscps().set(46, {46, 7});
    EXPECT_EQ(queues_of(kAddresses + packet4(46)), one_in(7));
    dscps().set(kA, 46, {46, 1});
    EXPECT_TRUE(dscps().has_own(kA, 46));
    EXPECT_EQ(queues_of(kAddresses + packet4(46)), one_in(1));
    dscps().set_priority(46, 2);
    EXPECT_EQ(dscps().row(46), (DscpRow{46, 2}));
    EXPECT_EQ(queues_of(kAddresses + packet4(46)), one_in(2)) << "of all ports";
    dscps().set(46, {46, 4});
    EXPECT_FALSE(dscps().has_own(kA, 46));
    EXPECT_EQ(queues_of(kAddresses + packet4(46)), one_in(4));
    EXPECT_EQ(dscps().row(45), DscpMap::power_on_row(45));
}

TEST_F(TrustTest, MappedDscpsAreWrittenIntoThePackets) {
    dscps().set(46, {10, 1});
    for (const Trust mode : {Trust::kDscp, Trust::kBoth}) {
        trust(mode);
        EXPECT_EQ(received(kAddresses + packet4(46)), kAddresses + packet4(10));
        EXPECT_EQ(received(kAddresses + packet6(46)), kAddresses + packet6(10));
        EXPECT_EQ(received(kAddresses + packet4(45)), kAddresses + packet4(45));
    }
    for (const Trust mode : {Trust::kPort, Trust::kDot1p}) {
        trust(mode);
        EXPECT_EQ(received(kAddresses + packet4(46)), kAddresses + packet4(46));
    }
}

TEST_F(TrustTest, RulesSeeTheDscpAsItCameAndHaveTheLastWord) {
    trust(Trust::kDscp);
    dscps().set(46, {10, 1});
    ASSERT_EQ(table().create(3, 768), Status::kOk);
    ASSERT_EQ(table().qualify(768, qualifier(Field::kDscp, 46U << 2, 0xFC)), Status::kOk);
    ASSERT_EQ(table().qualify(768, qualifier(Field::kOuterPriority, 1, 7)), Status::kOk);
    add_actions(768, {{test::kSetDscp, 20}, {test::kSetPriority, 7}});
    EXPECT_EQ(received(kAddresses + packet4(46)), kAddresses + packet4(20));
    EXPECT_EQ(sent(kB), one_in(7));
}

TEST_F(TrustTest, DirectedFramesKeepTheirDscp) {
    ASSERT_EQ(change(kCpu, [](Port &port) { port.trust = Trust::kDscp; }), Status::kOk);
    dscps().set(46, {10, 1});
    const auto sent_frames = send(kCpu, kAddresses + test::transmit_tag(3, kB) + packet4(46));
    ASSERT_EQ(sent_frames.size(), 1U);
    EXPECT_EQ(sent_frames[0].second, kAddresses + packet4(46));
    EXPECT_EQ(sent(kB), one_in(1));
}

TEST_F(TrustTest, RemapsAreOfThePrioritiesInTags) {
    tag_vlan_1();
    trust(Trust::kDot1p);
    ASSERT_EQ(change(kA, [](Port &port) { port.remap.to = {7, 6, 5, 4, 3, 2, 1, 0}; }), Status::kOk);
    for (uint32_t priority = 0; priority < kPriorities; ++priority) {
        EXPECT_EQ(received(tagged(priority, kArp)),
                  kAddresses + test::vlan_tag(static_cast<uint16_t>((7 - priority) << kPcpShift | 1)) + kArp);
        EXPECT_EQ(sent(kB), one_in(7 - priority));
        EXPECT_EQ(queues_of(tagged(priority, kArp), kC), one_in(priority)) << "on this port only";
    }
    EXPECT_EQ(queues_of(kAddresses + kArp), one_in(6)) << "the port's own priority is not remapped";
    EXPECT_EQ(queues_of(kAddresses + test::vlan_tag(0x4001) + kArp), one_in(5)) << "with a VLAN too";
}

TEST_F(TrustTest, RemapsComeBeforeTranslations) {
    ASSERT_EQ(change(kA, [](Port &port) { port.remap.to[2] = 7; }), Status::kOk);
    ASSERT_EQ(chip_.tag_rules().ingress.add(kA, 100, {1, 4}), Status::kOk);
    ASSERT_EQ(chip_.tag_rules().ingress.add(kA, 101, {1}), Status::kOk);
    EXPECT_EQ(queues_of(kAddresses + test::vlan_tag(0x4000 | 100) + kArp), one_in(4));
    EXPECT_EQ(queues_of(kAddresses + test::vlan_tag(0x4000 | 101) + kArp), one_in(7));
    trust(Trust::kPort);
    EXPECT_EQ(queues_of(kAddresses + test::vlan_tag(0x4000 | 100) + kArp), one_in(6)) << "what is trusted comes last";
}

TEST_F(TrustTest, RowsOfTheDscpMapAreNumbersInRange) {
    EXPECT_EQ(DscpMap::check(63, 63, 7), Status::kOk);
    EXPECT_EQ(DscpMap::check(64, 0, 0), Status::kBadArgument);
    EXPECT_EQ(DscpMap::check(0, 64, 0), Status::kBadArgument);
    EXPECT_EQ(DscpMap::check(0, 0, 8), Status::kBadArgument);
}

}  // namespace trust_test
}  // namespace vdevice::chip
