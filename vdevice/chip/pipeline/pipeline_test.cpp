// The way of frames from and to user ports: VLAN, learning, forwarding, tags, and what is dropped and why.
#include <gtest/gtest.h>

#include "vdevice/chip/testing/chip_fixture.h"

namespace vdevice::chip {
namespace pipeline_test {

using namespace std::chrono_literals;
using namespace test;

class PipelineTest : public test::ChipTest {
  protected:
    void make_vlan(Vid vid, const PortSet &members, const PortSet &untagged) {
        ASSERT_EQ(chip_.vlans().create({vid, vid}), Status::kOk);
        ASSERT_EQ(chip_.vlans().set_ports(vid, members, untagged), Status::kOk);
    }
};

TEST_F(PipelineTest, AtPowerOnFloodsUntaggedAndTellsTheCpu) {
    const Octets frame = kBroadcast + station(1) + kPayload;
    EXPECT_EQ(send(kA, frame),
              (std::vector<Sent>{{kCpu, kBroadcast + station(1) + test::receive_tag(kA) + test::vlan_tag(1) + kPayload},
                                 {kB, frame},
                                 {kC, frame}}));
}

TEST_F(PipelineTest, NamesEachIngressPortToTheCpu) {
    for (int port = 1; port < Switch::kPorts; ++port) {
        chip_.set_link(port, true);
        const auto sent = send(port, kBroadcast + station(1) + kPayload);
        ASSERT_FALSE(sent.empty());
        ASSERT_EQ(sent.front().first, kCpu);
        EXPECT_EQ(sent.front().second[17] & 0x3F, port);
    }
}

TEST_F(PipelineTest, KnownUnicastGoesToItsPortOnly) {
    send(kB, kBroadcast + station(2) + kPayload);
    const Octets frame = station(2) + station(1) + kPayload;
    EXPECT_EQ(send(kA, frame), (std::vector<Sent>{{kB, frame}}));
}

TEST_F(PipelineTest, UnknownUnicastIsFlooded) {
    EXPECT_EQ(send(kA, station(9) + station(1) + kPayload).size(), 3U);
}

TEST_F(PipelineTest, AMovedStationIsFollowed) {
    send(kB, kBroadcast + station(2) + kPayload);
    send(kC, kBroadcast + station(2) + kPayload);
    const auto sent = send(kA, station(2) + station(1) + kPayload);
    ASSERT_EQ(sent.size(), 1U);
    EXPECT_EQ(sent[0].first, kC);
    EXPECT_EQ(chip_.macs().counters().moved, 1U);
}

TEST_F(PipelineTest, AnAgedStationIsFloodedAgain) {
    send(kB, kBroadcast + station(2) + kPayload, 1s);
    chip_.tick(1s + MacTable::kDefaultAgeTime);
    EXPECT_EQ(send(kA, station(2) + station(1) + kPayload).size(), 3U);
}

TEST_F(PipelineTest, NeverSendsBackToTheIngressPort) {
    send(kA, kBroadcast + station(1) + kPayload);
    EXPECT_TRUE(send(kA, station(1) + station(2) + kPayload).empty());
    EXPECT_EQ(dropped(kA, Drop::kSamePort), 1U);
}

TEST_F(PipelineTest, DoesNotLearnGroupAddresses) {
    send(kA, station(9) + kBroadcast + kPayload);
    EXPECT_EQ(chip_.macs().size(), 0U);
}

TEST_F(PipelineTest, DoesNotLearnFromFramesThatItDrops) {
    make_vlan(10, PortSet::of(kB), {});
    send(kA, kBroadcast + station(1) + test::vlan_tag(10) + kPayload);
    send(kA, kBroadcast + station(1) + test::vlan_tag(11) + kPayload);
    EXPECT_EQ(chip_.macs().size(), 0U);
}

TEST_F(PipelineTest, TagsAreTakenOutAndPutInPerPort) {
    make_vlan(100, PortSet{}.add(kCpu).add(kA).add(kB).add(kC), PortSet::of(kB));
    const Octets addresses = kBroadcast + station(1);
    const Octets tagged = addresses + test::vlan_tag(0xB064) + kPayload;
    EXPECT_EQ(send(kA, tagged),
              (std::vector<Sent>{{kCpu, addresses + test::receive_tag(kA) + test::vlan_tag(0xB064) + kPayload},
                                 {kB, addresses + kPayload},
                                 {kC, tagged}}));
}

TEST_F(PipelineTest, UntaggedFramesTakeThePortVlan) {
    make_vlan(100, PortSet{}.add(kA).add(kC), {});
    ASSERT_EQ(chip_.set_pvid(kA, 100), Status::kOk);
    const Octets addresses = kBroadcast + station(1);
    EXPECT_EQ(send(kA, addresses + kPayload), (std::vector<Sent>{{kC, addresses + test::vlan_tag(100) + kPayload}}));
}

TEST_F(PipelineTest, PriorityTaggedFramesTakeThePortVlanAndKeepTheirPriority) {
    make_vlan(100, PortSet{}.add(kA).add(kC), {});
    ASSERT_EQ(chip_.set_pvid(kA, 100), Status::kOk);
    const Octets addresses = kBroadcast + station(1);
    EXPECT_EQ(send(kA, addresses + test::vlan_tag(0xF000) + kPayload),
              (std::vector<Sent>{{kC, addresses + test::vlan_tag(0xF064) + kPayload}}));
}

TEST_F(PipelineTest, OnlyTheOuterTagCounts) {
    make_vlan(100, PortSet{}.add(kCpu).add(kA).add(kB), PortSet::of(kB));
    const Octets addresses = kBroadcast + station(1);
    const Octets inner = test::vlan_tag(200) + kPayload;
    EXPECT_EQ(send(kA, addresses + test::vlan_tag(100) + inner),
              (std::vector<Sent>{{kCpu, addresses + test::receive_tag(kA) + test::vlan_tag(100) + inner},
                                 {kB, addresses + inner}}));
}

TEST_F(PipelineTest, OtherTagTypesAreAnUntaggedFramesType) {
    const Octets addresses = kBroadcast + station(1);
    constexpr uint16_t kTypes[] = {0x88A8, 0x9100};
    for (const uint16_t type : kTypes) {
        const Octets frame = addresses + test::octets16(type) + test::octets16(100) + kPayload;
        const auto sent = send(kA, frame);
        ASSERT_EQ(sent.size(), 3U);
        EXPECT_EQ(sent[1].second, frame);
    }
}

TEST_F(PipelineTest, ReservedAddressesAreFlooded) {
    EXPECT_EQ(send(kA, Octets{0x01, 0x80, 0xC2, 0, 0, 0x02} + station(1) + kPayload).size(), 3U);
}

TEST_F(PipelineTest, AMissingVlanAndAForeignPortAreDrops) {
    make_vlan(10, PortSet::of(kB), {});
    EXPECT_TRUE(send(kA, kBroadcast + station(1) + test::vlan_tag(11) + kPayload).empty());
    EXPECT_TRUE(send(kA, kBroadcast + station(1) + test::vlan_tag(0xFFF) + kPayload).empty());
    EXPECT_TRUE(send(kA, kBroadcast + station(1) + test::vlan_tag(10) + kPayload).empty());
    EXPECT_EQ(dropped(kA, Drop::kVlanMissing), 2U);
    EXPECT_EQ(dropped(kA, Drop::kNotMember), 1U);
}

TEST_F(PipelineTest, ADestroyedPortVlanDropsUntaggedFrames) {
    make_vlan(100, PortSet{}.add(kA).add(kB), PortSet{}.add(kA).add(kB));
    ASSERT_EQ(chip_.set_pvid(kA, 100), Status::kOk);
    send(kA, kBroadcast + station(1) + kPayload);
    EXPECT_EQ(chip_.macs().size(), 1U);
    ASSERT_EQ(chip_.destroy_vlans({100, 100}), Status::kOk);
    EXPECT_EQ(chip_.macs().size(), 0U) << "its addresses go with a VLAN";
    EXPECT_TRUE(send(kA, kBroadcast + station(1) + kPayload).empty());
    EXPECT_EQ(dropped(kA, Drop::kVlanMissing), 1U);
}

TEST_F(PipelineTest, KnownUnicastStaysWithinItsVlan) {
    make_vlan(10, PortSet{}.add(kA).add(kB), {});
    send(kB, kBroadcast + station(2) + test::vlan_tag(10) + kPayload);
    ASSERT_EQ(chip_.vlans().remove_ports({10, 10}, PortSet::of(kB)), Status::kOk);
    EXPECT_TRUE(send(kA, station(2) + station(1) + test::vlan_tag(10) + kPayload).empty());
    EXPECT_EQ(dropped(kA, Drop::kEgressNotMember), 1U);
}

TEST_F(PipelineTest, TheSameAddressInTwoVlansIsTwoStations) {
    make_vlan(10, PortSet{}.add(kA).add(kB).add(kC), {});
    make_vlan(20, PortSet{}.add(kA).add(kB).add(kC), {});
    send(kB, kBroadcast + station(2) + test::vlan_tag(10) + kPayload);
    send(kC, kBroadcast + station(2) + test::vlan_tag(20) + kPayload);
    const auto in_10 = send(kA, station(2) + station(1) + test::vlan_tag(10) + kPayload);
    const auto in_20 = send(kA, station(2) + station(1) + test::vlan_tag(20) + kPayload);
    ASSERT_EQ(in_10.size(), 1U);
    ASSERT_EQ(in_20.size(), 1U);
    EXPECT_EQ(in_10[0].first, kB);
    EXPECT_EQ(in_20[0].first, kC);
}

TEST_F(PipelineTest, PortsThatAreDownPassNothingEitherWay) {
    send(kB, kBroadcast + station(2) + kPayload);
    ASSERT_EQ(chip_.set_link(kB, false), Status::kOk);
    EXPECT_TRUE(send(kA, station(2) + station(1) + kPayload).empty());
    EXPECT_EQ(dropped(kA, Drop::kEgressDown), 1U);
    EXPECT_EQ(send(kA, kBroadcast + station(1) + kPayload).size(), 2U);
    EXPECT_TRUE(send(kB, kBroadcast + station(2) + kPayload).empty());
    EXPECT_EQ(dropped(kB, Drop::kPortDown), 1U);

    ASSERT_EQ(chip_.set_link(kB, true), Status::kOk);
    ASSERT_EQ(chip_.set_enabled(kB, false), Status::kOk);
    EXPECT_EQ(send(kA, kBroadcast + station(1) + kPayload).size(), 2U);
    ASSERT_EQ(chip_.set_enabled(kB, true), Status::kOk);
    EXPECT_EQ(send(kA, kBroadcast + station(1) + kPayload).size(), 3U);
}

TEST_F(PipelineTest, AFloodWithoutAnyOtherPortIsCounted) {
    make_vlan(10, PortSet::of(kA), {});
    EXPECT_TRUE(send(kA, kBroadcast + station(1) + test::vlan_tag(10) + kPayload).empty());
    EXPECT_EQ(dropped(kA, Drop::kNoDestination), 1U);
}

TEST_F(PipelineTest, RuntsOfEveryLengthAreDropped) {
    const Octets tagged = kBroadcast + station(1) + test::vlan_tag(1) + kPayload;
    const size_t shortest = kHeaderBytes + kVlanTagBytes;
    for (size_t length = 0; length < shortest; ++length) {
        EXPECT_TRUE(send(kA, Octets(tagged.begin(), tagged.begin() + static_cast<ptrdiff_t>(length))).empty());
    }
    EXPECT_EQ(dropped(kA, Drop::kRunt), shortest);
    EXPECT_EQ(send(kA, kBroadcast + station(1) + test::octets16(0x0800)).size(), 3U);
}

TEST_F(PipelineTest, OversizedFramesAreDropped) {
    const Octets longest = kBroadcast + station(1) + Octets(kMaxFrameBytes - kAddressBytes, 0);
    EXPECT_EQ(send(kA, longest).size(), 3U);
    EXPECT_TRUE(send(kA, longest + Octets{0}).empty());
    EXPECT_EQ(dropped(kA, Drop::kOversize), 1U);
}

TEST_F(PipelineTest, CountsFramesAndOctets) {
    const Octets frame = kBroadcast + station(1) + kPayload;
    send(kA, frame);
    EXPECT_EQ(chip_.port(kA).counters.rx_frames, 1U);
    EXPECT_EQ(chip_.port(kA).counters.rx_octets, frame.size());
    EXPECT_EQ(chip_.port(kB).counters.tx_frames, 1U);
    EXPECT_EQ(chip_.port(kB).counters.tx_octets, frame.size());
    EXPECT_EQ(chip_.port(kCpu).counters.tx_octets, frame.size() + kReceiveTagBytes + kVlanTagBytes);
    EXPECT_EQ(chip_.port(kA).counters.tx_frames, 0U);
}

TEST_F(PipelineTest, RefusesPortsThatTheChipHasNot) {
    for (const int port : {-1, 32, 255, 1000}) {
        EXPECT_EQ(chip_.set_link(port, true), Status::kNoPort);
        EXPECT_EQ(chip_.set_enabled(port, true), Status::kNoPort);
        EXPECT_EQ(chip_.set_pvid(port, 1), Status::kNoPort);
        EXPECT_EQ(chip_.add_static_mac(Mac{0x020000000001}, 1, port), Status::kNoPort);
        EXPECT_TRUE(send(port, kBroadcast + station(1) + kPayload).empty());
    }
}

TEST_F(PipelineTest, PortVlansAndStaticAddressesNeedTheirVlan) {
    EXPECT_EQ(chip_.set_pvid(kA, 10), Status::kVlanMissing);
    EXPECT_EQ(chip_.set_pvid(kA, 0), Status::kVlanRange);
    EXPECT_EQ(chip_.set_pvid(kA, 4095), Status::kVlanRange);
    EXPECT_EQ(chip_.port(kA).pvid, 1);
    EXPECT_EQ(chip_.add_static_mac(Mac{0x020000000001}, 10, kA), Status::kVlanMissing);
    EXPECT_EQ(chip_.add_static_mac(Mac{0x020000000001}, 0x10001, kA), Status::kVlanRange);
    EXPECT_EQ(chip_.add_static_mac(Mac{0x020000000001}, 1, kA), Status::kOk);
}

TEST_F(PipelineTest, SurvivesHostileBytes) {
    // A fixed generator, so that a failure comes again: every length, every first type byte pair that matters.
    uint32_t state = 1;
    const auto next = [&] { return static_cast<uint8_t>((state = state * 1664525 + 1013904223) >> 24); };
    for (int round = 0; round < 20000; ++round) {
        Octets frame(static_cast<size_t>(next() % 64));
        for (uint8_t &octet : frame) {
            octet = next();
        }
        if (frame.size() > kHeaderBytes) {
            const uint16_t types[] = {kVlanTpid, kSwitchTagType, 0x88A8, 0x0800};
            write16(&frame[kAddressBytes], types[next() % 4]);
        }
        send(next() % 3 == 0 ? kCpu : kA, frame);
    }
    EXPECT_LE(chip_.macs().size(), MacTable::kCapacity);
    EXPECT_EQ(chip_.port(kA).counters.rx_frames + chip_.port(kCpu).counters.rx_frames, 20000U);
}

}  // namespace pipeline_test
}  // namespace vdevice::chip
