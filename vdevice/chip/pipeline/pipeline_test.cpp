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

TEST_F(PipelineTest, KnownUnicastGoesToItsPortOnly) {
    send(kB, kBroadcast + station(2) + kPayload);
    const Octets frame = station(2) + station(1) + kPayload;
    EXPECT_EQ(send(kA, frame), (std::vector<Sent>{{kB, frame}}));
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

}  // namespace pipeline_test
}  // namespace vdevice::chip
