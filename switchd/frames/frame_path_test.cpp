// Where frames go, both ways, and the reasons to drop them.
#include "switchd/frames/testing/path_fixture.h"

namespace switchd {
namespace frame_path_test {

using namespace path_test;
using namespace std::chrono_literals;
using vdevice::chip::test::kBroadcast;
using vdevice::chip::test::Octets;
using vdevice::chip::test::octets16;
using vdevice::chip::test::station;
using vdevice::chip::test::vlan_tag;
using vdevice::chip::test::operator+;

TEST_F(FramePathTest, TheUntaggedVlansFramesComeWithoutTheTag) {
    EXPECT_EQ(from_chip(1, from_host(kBroadcast, kOffice)), "swp1");
    EXPECT_EQ(delivered_, untagged(kBroadcast));
    EXPECT_EQ(path_.counters(1).to_kernel, 1U);
}

TEST_F(FramePathTest, ATagWithAnInterfaceIsTheInterfaces) {
    EXPECT_EQ(from_chip(2, from_host(kBroadcast, 0xE000 | kVoice)), "swp2.200");
    EXPECT_EQ(delivered_, untagged(kBroadcast));
}

TEST_F(FramePathTest, AnotherTagStays) {
    EXPECT_EQ(from_chip(2, from_host(kBroadcast, 0x6000 | kOther)), "swp2");
    EXPECT_EQ(delivered_, from_host(kBroadcast, 0x6000 | kOther));
}

TEST_F(FramePathTest, AMembersFramesAreTheGroupsButForWhatNeighboursSay) {
    EXPECT_EQ(from_chip(5, from_host(kBroadcast, kOffice)), "agg1");
    EXPECT_EQ(delivered_, untagged(kBroadcast));
    EXPECT_EQ(from_chip(5, from_host(kBroadcast, kVoice)), "agg1.200");
    EXPECT_EQ(from_chip(6, from_host(kNeighbours, kOffice)), "swp6");
    EXPECT_EQ(delivered_, untagged(kNeighbours));
    EXPECT_EQ(path_.counters(5).to_kernel, 2U);
    EXPECT_EQ(path_.counters(kGroup).to_kernel, 0U) << "the member has received them";
}

TEST_F(FramePathTest, LacpIsForWhoeverRunsIt) {
    const Octets lacpdu = from_host(kSlow, kOffice, octets16(0x8809) + Octets(110, 1));
    const Octets marker = from_host(kSlow, kOffice, octets16(0x8809) + Octets(110, 2));
    const Octets oam = from_host(kSlow, kOffice, octets16(0x8809) + Octets(110, 3));
    EXPECT_EQ(from_chip(5, lacpdu), "swp5");
    table_.ports[5].runs_lacp = true;
    path_.set_table(table_);
    EXPECT_EQ(from_chip(5, lacpdu), "lacp 5");
    EXPECT_EQ(from_chip(5, marker), "lacp 5");
    EXPECT_EQ(from_chip(5, oam), "swp5");
    EXPECT_EQ(from_chip(6, lacpdu), "swp6");
    EXPECT_EQ(path_.counters(5).to_lacp, 2U);
}

TEST_F(FramePathTest, WithoutAnInterfaceOrAPortThereIsNoWay) {
    EXPECT_EQ(from_chip(3, from_host(kBroadcast, kOffice)), "no_interface");
    EXPECT_EQ(from_chip(0, from_host(kBroadcast, kOffice)), "unknown_port");
    EXPECT_EQ(from_chip(27, from_host(kBroadcast, kOffice)), "unknown_port");
    EXPECT_EQ(from_chip(0xFFFFFFFF, from_host(kBroadcast, kOffice)), "unknown_port");
    EXPECT_EQ(drops(3, Drop::kNoInterface), 1U);
    EXPECT_EQ(drops(0, Drop::kUnknownPort), 3U);
}

TEST_F(FramePathTest, WhatIsTooShortOrTooLongIsDropped) {
    EXPECT_EQ(from_chip(1, Octets(17)), "malformed");
    EXPECT_EQ(from_kernel({1, 0}, Octets(13)), "malformed");
    const Octets longest(vdevice::chip::kMaxFrameBytes, 0x22);
    EXPECT_EQ(from_kernel({1, 0}, longest), "swp1");
    EXPECT_EQ(from_kernel({1, kVoice}, longest), "too_long") << "a tag is put in";
    EXPECT_EQ(from_kernel({1, 0}, longest + Octets(1)), "too_long");
    EXPECT_EQ(drops(1, Drop::kMalformed), 2U);
    EXPECT_EQ(drops(1, Drop::kTooLong), 2U);
}

TEST_F(FramePathTest, TheKernelsFramesLeaveAsTheirInterfaceSays) {
    EXPECT_EQ(from_kernel({1, 0}, untagged(kBroadcast)), "swp1");
    EXPECT_EQ(from_kernel({2, kVoice}, untagged(kBroadcast)), "swp2.200");
    EXPECT_EQ(from_kernel({kGroup, 0}, untagged(kBroadcast)), "agg1");
    EXPECT_EQ(path_.counters(kGroup).from_kernel, 1U);
}

TEST_F(FramePathTest, AClosedPortPassesOnlyEapol) {
    table_.ports[1].is_closed = true;
    path_.set_table(table_);
    const Octets to_all_paes = {0x01, 0x80, 0xC2, 0, 0, 3};
    for (const Octets &destination : {kBroadcast, kOwn, station(8), kNeighbours}) {
        EXPECT_EQ(from_chip(1, from_host(destination, kOffice)), "closed");
        EXPECT_EQ(from_kernel({1, 0}, untagged(destination)), "closed");
        EXPECT_EQ(from_kernel({1, kVoice}, untagged(destination)), "closed");
    }
    EXPECT_EQ(from_chip(1, from_host(to_all_paes, kOffice, kEapol)), "swp1");
    EXPECT_EQ(from_chip(1, from_host(kOwn, kOffice, kEapol)), "swp1");
    EXPECT_EQ(from_kernel({1, 0}, untagged(station(kHost), kEapol)), "swp1");
    EXPECT_EQ(from_chip(2, from_host(kBroadcast, kOffice)), "swp2");
    EXPECT_EQ(drops(1, Drop::kClosed), 12U);
}

TEST_F(FramePathTest, AnAdmittedStationPassesAClosedPort) {
    table_.ports[1].is_closed = true;
    table_.ports[1].stations = {mac_of_station(kHost)};
    path_.set_table(table_);
    EXPECT_EQ(from_chip(1, from_host(kOwn, kOffice)), "swp1");
    EXPECT_EQ(from_chip(1, kOwn + station(8) + vlan_tag(kOffice) + kText), "closed");
    EXPECT_EQ(from_kernel({1, 0}, station(kHost) + kOwn + kText), "swp1");
    EXPECT_EQ(from_kernel({1, 0}, kBroadcast + kOwn + kText), "swp1");
    EXPECT_EQ(from_kernel({1, 0}, station(8) + kOwn + kText), "closed");
}

TEST_F(FramePathTest, AStormOnOnePortLeavesTheOthersTheirShare) {
    path_.set_limits({1000, 100}, 10s);
    const auto passed = [&](uint32_t port, const Octets &destination, Time now, int frames) {
        int count = 0;
        for (int i = 0; i < frames; ++i) {
            count += from_chip(port, from_host(destination, kOffice), now) == name_of({port, 0}) ? 1 : 0;
        }
        return count;
    };
    EXPECT_EQ(passed(1, kBroadcast, 10s, 500), 100);
    EXPECT_EQ(passed(1, kBroadcast, 10s + 50ms, 500), 50);
    EXPECT_EQ(passed(1, station(8), 10s + 50ms, 10), 0) << "unknown unicast is flooded, too";
    EXPECT_EQ(passed(2, kBroadcast, 10s + 50ms, 500), 100);
    EXPECT_EQ(passed(1, kNeighbours, 10s + 50ms, 500), 16) << "protocols have their own";
    EXPECT_EQ(passed(1, kOwn, 10s + 50ms, 500), 500) << "what is for the switch has no limit";
    EXPECT_EQ(drops(1, Drop::kFloodLimit), 400U + 450U + 10U);
    EXPECT_EQ(drops(1, Drop::kTrapLimit), 484U);
}

TEST_F(FramePathTest, ALimitOfZeroIsNone) {
    path_.set_limits({0, 0}, 1s);
    for (int i = 0; i < 50'000; ++i) {
        ASSERT_EQ(from_chip(1, from_host(kBroadcast, kOffice)), "swp1");
        ASSERT_EQ(from_chip(1, from_host(kNeighbours, kOffice)), "swp1");
    }
}

TEST_F(FramePathTest, ATableReplacesTheOneBefore) {
    PathTable other;
    other.ports[1].untagged_vid = kVoice;
    other.interfaces = {{1, 0}};
    path_.set_table(other);
    EXPECT_EQ(from_chip(1, from_host(kBroadcast, kVoice)), "swp1");
    EXPECT_EQ(delivered_, untagged(kBroadcast));
    EXPECT_EQ(from_chip(5, from_host(kBroadcast, kOffice)), "no_interface");
    EXPECT_EQ(from_chip(1, kBroadcast + kOwn + vlan_tag(kVoice) + kText), "swp1") << "no longer its own address";
}

TEST_F(FramePathTest, NumbersThatAreNoInterfaceAreIgnored) {
    table_.ports[0].is_closed = true;
    table_.ports[27].is_closed = true;
    table_.ports[ADP_AGG_INTF(9)].is_closed = true;
    table_.ports[0x20000001].is_closed = true;
    path_.set_table(table_);
    EXPECT_EQ(from_kernel({0, 0}, untagged(kBroadcast)), "swp0");
    EXPECT_EQ(from_chip(1, from_host(kBroadcast, kOffice)), "swp1");
}

TEST_F(FramePathTest, LaterLossesAreCountedToo) {
    path_.count_drop(2, Drop::kNotTaken);
    path_.count_drop(kGroup, Drop::kNotSent);
    EXPECT_EQ(drops(2, Drop::kNotTaken), 1U);
    EXPECT_EQ(drops(kGroup, Drop::kNotSent), 1U);
}

TEST(Drop, EachHasANameOfItsOwn) {
    std::set<std::string_view> names;
    for (size_t i = 0; i < kDrops; ++i) {
        names.insert(name_of(static_cast<Drop>(i)));
    }
    EXPECT_EQ(names.size(), kDrops);
    EXPECT_FALSE(names.contains(""));
}

}  // namespace frame_path_test
}  // namespace switchd
