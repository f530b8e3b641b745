// What a frame's passage tells when it has passed: by what each decision was made.
#include "vdevice/chip/pipeline/passage.h"

#include <gtest/gtest.h>

#include "vdevice/chip/testing/passage_fixture.h"

namespace vdevice::chip {
namespace passage_test {

using namespace std::chrono_literals;
using namespace test;

constexpr uint16_t kPriority5InVlan1 = 0xA001;
constexpr Vid kCustomer = 10;
const Octets kGroup = {0x01, 0, 0x5E, 1, 2, 3};
const Octets kPacket = test::ipv4({.protocol = kUdp, .tos = 0xB8}, test::kDatagram);  // DSCP 46

class Decisions : public test::PassageTest {
  protected:
    std::pair<ChosenBy, ChosenBy> chosen_by(const Octets &rest) {
        const Passage p = passage(kA, kAddresses + rest);
        return {p.own.vlan_by, p.own.priority_by};
    }
    Learned learned(int port, uint8_t number, Time now = 1s) {
        return passage(port, kBroadcast + station(number) + kPayload, now).learned;
    }
    std::pair<Way, CpuReason> way_of(const Octets &frame) {
        const Passage p = passage(kA, frame);
        return {p.way, p.cpu_reason};
    }
    static std::pair<Way, CpuReason> to_cpu(CpuReason reason) { return {Way::kToCpu, reason}; }
    static std::pair<ChosenBy, ChosenBy> both(ChosenBy by) { return {by, by}; }
};

TEST_F(Decisions, VlanAndPriorityComeFromTheTagOrThePort) {
    EXPECT_EQ(chosen_by(kPayload), both(ChosenBy::kPort));
    EXPECT_EQ(chosen_by(vlan_tag(kPriority5InVlan1) + kPayload), both(ChosenBy::kTag));
    EXPECT_EQ(chosen_by(vlan_tag(0xA000) + kPayload), std::pair(ChosenBy::kPort, ChosenBy::kTag));
}

TEST_F(Decisions, TablesOfTagsChooseTheVlanAndIfTheyHaveOneThePriority) {
    ASSERT_EQ(chip_.tag_rules().ingress.add(kA, 1, {1}), Status::kOk);
    EXPECT_EQ(chosen_by(vlan_tag(kPriority5InVlan1) + kPayload), std::pair(ChosenBy::kTranslation, ChosenBy::kTag));
    ASSERT_EQ(chip_.tag_rules().subnets.add({kA, 0x0A000000, 0xFF000000, {1, 3}}), Status::kOk);
    EXPECT_EQ(chosen_by(kPacket), both(ChosenBy::kSubnet));
    change(kA, [](Port &port) { port.tags = {DoubleTag::kExternal, kVlanTpid}; });
    ASSERT_EQ(chip_.tag_rules().double_tags.add(kA, kCustomer, {1}), Status::kOk);
    EXPECT_EQ(chosen_by(vlan_tag(0xA000 | kCustomer) + kPayload), std::pair(ChosenBy::kDoubleTag, ChosenBy::kTag));
}

TEST_F(Decisions, ATrustedDscpChoosesThePriority) {
    change(kA, [](Port &port) { port.trust = Trust::kBoth; });
    EXPECT_EQ(chosen_by(vlan_tag(1) + kPacket), std::pair(ChosenBy::kTag, ChosenBy::kDscp));
    EXPECT_EQ(chosen_by(vlan_tag(1) + test::octets16(0x88B5) + Octets(46, 0)), both(ChosenBy::kTag));
    change(kA, [](Port &port) { port.trust = Trust::kPort; });
    EXPECT_EQ(chosen_by(vlan_tag(1) + kPacket), std::pair(ChosenBy::kTag, ChosenBy::kPort));
}

TEST_F(Decisions, TheVerdictNamesItsRules) {
    EXPECT_TRUE(passage(kA, test::kFlooded).verdict.rules.list().empty());
    add_rule(3, 768, {{test::kSetPriority, 6}});
    add_rule(8, 256, {{test::kCount, 1}});
    add_rule(8, 257, {{test::kDropIt}});
    const Passage p = passage(kA, test::kFlooded);
    EXPECT_EQ(std::vector(p.verdict.rules.list().begin(), p.verdict.rules.list().end()),
              (std::vector<uint32_t>{768, 256}));
    EXPECT_EQ(p.priority, 6U);
    ASSERT_EQ(chip_.set_miss_action(kB, MissAction::kDrop), Status::kOk);
    const Passage missed = passage(kB, test::kFlooded);
    EXPECT_TRUE(missed.verdict.rules.list().empty());
    EXPECT_EQ(missed.drop, Drop::kRule);
}

TEST_F(Decisions, WhatBecameOfTheSource) {
    EXPECT_EQ(learned(kA, 1), Learned::kNew);
    EXPECT_EQ(learned(kA, 1), Learned::kKnown);
    EXPECT_EQ(learned(kB, 1), Learned::kMoved);
    ASSERT_EQ(chip_.add_static_mac(Mac::at(station(2), 0), 1, kC), Status::kOk);
    EXPECT_EQ(learned(kA, 2), Learned::kStatic);
    chip_.limits().of_port(kA) = 0;
    EXPECT_EQ(learned(kA, 3), Learned::kOverLimit);
    change(kA, [](Port &port) { port.learning = *find_learn_mode(4); });
    EXPECT_EQ(learned(kA, 4), Learned::kNot);
}

TEST_F(Decisions, AFullBucketHasNoRoomForASource) {
    const Mac source = Mac::at(station(1), 0);
    for (uint32_t number = 1; chip_.macs().size() < MacTable::kBucketSlots; ++number) {
        const Mac other{uint64_t{0x040000000000} + number};
        if (MacTable::bucket_of(other, 1) == MacTable::bucket_of(source, 1)) {
            chip_.macs().learn(other, 1, kC, 1s);
        }
    }
    EXPECT_EQ(learned(kA, 1), Learned::kNoRoom);
}

TEST_F(Decisions, WhyAFrameIsForTheCpuAlone) {
    const Octets source = station(1);
    chip_.traps().lldp = true;
    EXPECT_EQ(way_of(Octets{0x01, 0x80, 0xC2, 0, 0, 0x0E} + source + test::octets16(0x88CC) + Octets(46, 0)),
              to_cpu(CpuReason::kTrap));
    EXPECT_EQ(way_of(Octets{0x01, 0x80, 0xC2, 0, 0, 0x10} + source + kPayload), to_cpu(CpuReason::kReservedMac));
    chip_.snooping().igmp = true;
    EXPECT_EQ(way_of(kGroup + source + test::ipv4({.protocol = 2}, Octets(26, 0))), to_cpu(CpuReason::kSnooped));
    change(kA, [](Port &port) { port.groups.ipv4_miss = GroupMiss::kToCpu; });
    EXPECT_EQ(way_of(kGroup + source + kPayload), to_cpu(CpuReason::kUnknownGroup));
    change(kA, [](Port &port) { port.learning = *find_learn_mode(8); });
    EXPECT_EQ(way_of(kBroadcast + station(9) + kPayload), to_cpu(CpuReason::kUnknownSource));
    rule({{test::kToCpu}});
    EXPECT_EQ(way_of(kBroadcast + source + kPayload), to_cpu(CpuReason::kRule));
}

TEST_F(Decisions, WhichWayAFrameGoes) {
    const auto none = CpuReason::kNone;
    EXPECT_EQ(way_of(kBroadcast + station(1) + kPayload), std::pair(Way::kFlooded, none));
    send(kB, kBroadcast + station(2) + kPayload);
    const Passage known = passage(kA, station(2) + station(1) + kPayload);
    EXPECT_EQ(known.way, Way::kEntry);
    EXPECT_EQ(known.wanted, PortSet::of(kB));
    EXPECT_EQ(known.chosen, PortSet::of(kB));
    EXPECT_FALSE(known.storm);
    ASSERT_EQ(chip_.add_group(Mac::at(kGroup, 0), 1, PortSet::of(kB)), Status::kOk);
    const Passage group = passage(kA, kGroup + station(1) + kPayload);
    EXPECT_EQ(group.way, Way::kGroup);
    EXPECT_EQ(group.storm, StormType::kMulticast);
    EXPECT_EQ(passage(kCpu, kBroadcast + station(3) + test::transmit_tag(7, 1U << kA | 1U << kB) + kPayload).wanted,
              PortSet::of(kA).add(kB));
    rule({{test::kRedirectPort, kC}});
    EXPECT_EQ(way_of(test::kFlooded), std::pair(Way::kRedirected, none));
}

TEST_F(Decisions, ADroppedFrameTellsWhy) {
    chip_.set_link(kA, false);
    EXPECT_EQ(passage(kA, test::kFlooded).drop, Drop::kPortDown);
    change(kA, [](Port &port) { port.loopback = 1; });
    EXPECT_EQ(passage(kA, test::kFlooded).drop, Drop::kLoopback);
    EXPECT_EQ(passage(kB, kAddresses).drop, Drop::kRunt);
    EXPECT_EQ(passage(kB, station(7) + station(1) + vlan_tag(9) + kPayload).drop, Drop::kVlanMissing);
    EXPECT_EQ(passage(kB, station(1) + station(1) + kPayload).drop, Drop::kSamePort);
}

}  // namespace passage_test
}  // namespace vdevice::chip
