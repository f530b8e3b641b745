// Translation, VLANs by subnet, double tags and tag protocol identifiers, on real frames.
#include <gtest/gtest.h>

#include "vdevice/chip/testing/chip_fixture.h"
#include "vdevice/chip/testing/packet_builder.h"

namespace vdevice::chip {
namespace tag_rules_test {

using namespace test;

constexpr uint32_t kKeep = TagChange::kKeepPriority;
constexpr uint16_t kServiceTpid = 0x88A8;
constexpr uint16_t kOldTpid = 0x9100;
constexpr Vid kService = 500;
constexpr Vid kCustomer = 10;
const Octets kAddresses = kBroadcast + station(1);

Octets tag(uint16_t tpid, uint16_t tci) {
    return test::octets16(tpid) + test::octets16(tci);
}

class TagRulesTest : public test::ChipTest {
  protected:
    void make_vlan(Vid vid, const PortSet &members, const PortSet &untagged = {}) {
        ASSERT_EQ(chip_.vlans().create({vid, vid}), Status::kOk);
        ASSERT_EQ(chip_.vlans().set_ports(vid, members, untagged), Status::kOk);
    }
    void set_tags(int port, DoubleTag mode, uint16_t tpid = kVlanTpid) {
        ASSERT_EQ(change(port, [&](Port &state) { state.tags = {mode, tpid}; }), Status::kOk);
    }
    /** The frame as it leaves by the port, without its addresses; empty if it does not. */
    Octets leaving(int egress, int ingress, const Octets &rest) {
        for (const Sent &sent : send(ingress, kAddresses + rest)) {
            if (sent.first == egress) {
                return {sent.second.begin() + kAddressBytes, sent.second.end()};
            }
        }
        return {};
    }
    TagRules &rules() { return chip_.tag_rules(); }
};

TEST_F(TagRulesTest, EgressTranslationWritesAnotherVlan) {
    make_vlan(200, PortSet::of(kA).add(kB).add(kC).add(kCpu), PortSet::of(kB));
    ASSERT_EQ(rules().egress.add(kC, 200, {100, 5}), Status::kOk);
    ASSERT_EQ(rules().egress.add(kB, 200, {100, kKeep}), Status::kOk);
    const auto sent = send(kA, kAddresses + vlan_tag(0x20C8) + kPayload);
    EXPECT_EQ(sent, (std::vector<Sent>{{kCpu, kAddresses + test::receive_tag(kA) + vlan_tag(0x20C8) + kPayload},
                                       {kB, kAddresses + kPayload},
                                       {kC, kAddresses + vlan_tag(0xA064) + kPayload}}));
}

TEST_F(TagRulesTest, TranslationBothWaysHidesTheChipsVlan) {
    make_vlan(200, PortSet::of(kA).add(kC));
    for (const int port : {kA, kC}) {
        ASSERT_EQ(rules().ingress.add(port, 100, {200, kKeep}), Status::kOk);
        ASSERT_EQ(rules().egress.add(port, 200, {100, kKeep}), Status::kOk);
    }
    EXPECT_EQ(leaving(kC, kA, vlan_tag(0x6064) + kPayload), vlan_tag(0x6064) + kPayload);
    EXPECT_EQ(leaving(kA, kC, vlan_tag(0x6064) + kPayload), vlan_tag(0x6064) + kPayload);
}

TEST_F(TagRulesTest, SubnetsGiveUntaggedPacketsAVlan) {
    make_vlan(200, PortSet::of(kA).add(kC));
    ASSERT_EQ(rules().subnets.add({kA, 0x0A000000, 0xFFFFFF00, {200, 3}}), Status::kOk);
    const Octets inside = test::ipv4({.protocol = 17}, Octets(8, 0));
    const Octets outside = test::ipv4({.protocol = 17, .source = {192, 0, 2, 1}}, Octets(8, 0));
    EXPECT_EQ(leaving(kC, kA, inside), vlan_tag(0x60C8) + inside);
    EXPECT_EQ(leaving(kC, kA, outside), outside);
    EXPECT_EQ(leaving(kC, kA, vlan_tag(0x2001) + inside), inside) << "a tagged packet has its VLAN already";
    EXPECT_TRUE(leaving(kC, kB, inside) == inside) << "another port's packets";
}

TEST_F(TagRulesTest, APortsTpidIsReadAndWritten) {
    make_vlan(kService, PortSet::of(kA).add(kB).add(kC).add(kCpu));
    set_tags(kA, DoubleTag::kOff, kOldTpid);
    set_tags(kB, DoubleTag::kInternal, kServiceTpid);
    const Octets inner = vlan_tag(kCustomer) + kPayload;
    EXPECT_EQ(send(kA, kAddresses + tag(kOldTpid, kService) + inner),
              (std::vector<Sent>{{kCpu, kAddresses + test::receive_tag(kA) + tag(kOldTpid, kService) + inner},
                                 {kB, kAddresses + tag(kServiceTpid, kService) + inner},
                                 {kC, kAddresses + tag(kVlanTpid, kService) + inner}}));
    EXPECT_EQ(leaving(kA, kC, vlan_tag(kService) + kPayload), tag(kOldTpid, kService) + kPayload);
}

TEST_F(TagRulesTest, ACustomersTagsCrossTheProviderUnchanged) {
    make_vlan(kService, PortSet::of(kA).add(kB).add(kC));
    set_tags(kA, DoubleTag::kExternal);
    set_tags(kB, DoubleTag::kExternal);
    set_tags(kC, DoubleTag::kInternal, kServiceTpid);
    ASSERT_EQ(chip_.set_pvid(kA, kService), Status::kOk);
    for (const Octets &rest : {kPayload, vlan_tag(kCustomer) + kPayload, vlan_tag(kService) + vlan_tag(7) + kPayload}) {
        EXPECT_EQ(leaving(kC, kA, rest), tag(kServiceTpid, kService) + rest);
        EXPECT_EQ(leaving(kB, kA, rest), rest) << "another customer's port";
        EXPECT_EQ(leaving(kA, kC, tag(kServiceTpid, kService) + rest), rest);
    }
}

TEST_F(TagRulesTest, SurvivesHostileBytesInEveryMode) {
    ASSERT_EQ(rules().subnets.add({kA, 0, 0, {1, kKeep}}), Status::kOk);
    uint32_t state = 7;
    const auto next = [&] { return static_cast<uint8_t>((state = state * 1664525 + 1013904223) >> 24); };
    constexpr int kRounds = 5000;
    for (int round = 0; round < kRounds; ++round) {
        set_tags(kA, static_cast<DoubleTag>(round % 3), round % 2 == 0 ? kVlanTpid : kServiceTpid);
        Octets frame(static_cast<size_t>(next() % 64));
        for (uint8_t &octet : frame) {
            octet = next();
        }
        for (size_t at = kAddressBytes; at + kTypeBytes <= frame.size() && next() % 4 != 0; at += kVlanTagBytes) {
            const uint16_t types[] = {kVlanTpid, kServiceTpid, 0x0800, kOldTpid};
            write16(&frame[at], types[next() % 4]);
        }
        send(kA, frame);
    }
    EXPECT_EQ(chip_.port(kA).counters.rx_frames, static_cast<uint64_t>(kRounds));
}

}  // namespace tag_rules_test
}  // namespace vdevice::chip
