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

TEST_F(TrustTest, RowsOfTheDscpMapAreNumbersInRange) {
    EXPECT_EQ(DscpMap::check(63, 63, 7), Status::kOk);
    EXPECT_EQ(DscpMap::check(64, 0, 0), Status::kBadArgument);
    EXPECT_EQ(DscpMap::check(0, 64, 0), Status::kBadArgument);
    EXPECT_EQ(DscpMap::check(0, 0, 8), Status::kBadArgument);
}

}  // namespace trust_test
}  // namespace vdevice::chip
