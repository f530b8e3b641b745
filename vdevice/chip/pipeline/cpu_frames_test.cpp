// Frames from the CPU: every opcode of the transmit tag.
#include <gtest/gtest.h>

#include "vdevice/chip/switch.h"
#include "vdevice/chip/testing/frame_builder.h"

namespace vdevice::chip {
namespace cpu_frames_test {

using namespace std::chrono_literals;
using namespace test;

constexpr int kLow = 4;
constexpr int kLast = 24;   // the last port of word 1
constexpr int kFirst = 25;  // the first port of word 2
constexpr int kHigh = 29;
constexpr int kCpu = Switch::kCpuPort;

const Octets kAddresses = kBroadcast + station(0xCC);

class CpuFramesTest : public testing::Test {
  protected:
    CpuFramesTest() {
        for (const int port : {kCpu, kLow, kLast, kFirst, kHigh}) {
            chip_.set_link(port, true);
        }
        const PortSet members = PortSet{}.add(kCpu).add(kLow).add(kHigh);
        EXPECT_EQ(chip_.vlans().create({100, 100}), Status::kOk);
        EXPECT_EQ(chip_.vlans().set_ports(100, members, PortSet::of(kLow)), Status::kOk);
    }

    std::vector<Sent> send(const Octets &tag, const Octets &rest) {
        chip_.receive(1s, kCpu, kAddresses + tag + rest);
        return sink_.take();
    }

    uint64_t dropped(Drop reason) const { return chip_.port(kCpu).counters.dropped(reason); }

    test::RecordingSink sink_;
    Switch chip_{sink_};
};

TEST_F(CpuFramesTest, SwitchedLikeAPortsFrame) {
    const Octets tagged = test::vlan_tag(100) + kPayload;
    EXPECT_EQ(send(test::transmit_tag(1, 0x18000000), tagged),
              (std::vector<Sent>{{kLow, kAddresses + kPayload}, {kHigh, kAddresses + tagged}}));
    ASSERT_NE(chip_.macs().find(Mac{0x0200000000CC}, 100), nullptr);
    EXPECT_EQ(chip_.macs().find(Mac{0x0200000000CC}, 100)->port, kCpu);
}

TEST_F(CpuFramesTest, Opcodes3And4ApplyTheEgressRule) {
    const Octets tagged = test::vlan_tag(0xA064) + kPayload;
    const Octets ports[] = {test::transmit_tag(3, kLow), test::transmit_tag(3, kHigh), test::transmit_tag(3, kLast)};
    EXPECT_EQ(send(ports[0], tagged), (std::vector<Sent>{{kLow, kAddresses + kPayload}}));
    EXPECT_EQ(send(ports[1], tagged), (std::vector<Sent>{{kHigh, kAddresses + tagged}}));
    EXPECT_EQ(send(ports[2], tagged), (std::vector<Sent>{{kLast, kAddresses + tagged}})) << "not a member: as given";
    EXPECT_EQ(send(test::transmit_tag(4, 1U << kLow, 1U << (kHigh - 25)), tagged),
              (std::vector<Sent>{{kLow, kAddresses + kPayload}, {kHigh, kAddresses + tagged}}));
}

TEST_F(CpuFramesTest, Opcodes0And2AreDropped) {
    EXPECT_TRUE(send(test::transmit_tag(0, kLow), kPayload).empty());
    EXPECT_TRUE(send(test::transmit_tag(2, kLow), kPayload).empty());
    EXPECT_EQ(dropped(Drop::kBadOpcode), 2U);
}

TEST_F(CpuFramesTest, FramesToTheCpuPortItselfAreDropped) {
    EXPECT_TRUE(send(test::transmit_tag(6, kCpu), kPayload).empty());
    EXPECT_EQ(send(test::transmit_tag(7, 1U << kCpu | 1U << kLow), kPayload).size(), 1U);
    EXPECT_EQ(dropped(Drop::kDirectedToCpu), 2U);
}

TEST_F(CpuFramesTest, UnknownAndDownPortsSendNothing) {
    EXPECT_TRUE(send(test::transmit_tag(6, 32), kPayload).empty());
    EXPECT_TRUE(send(test::transmit_tag(6, 0x1FFFFFF), kPayload).empty());
    EXPECT_TRUE(send(test::transmit_tag(7, 0, 0x80000000), kPayload).empty());
    EXPECT_EQ(dropped(Drop::kDirectedToUnknown), 3U);
    EXPECT_TRUE(send(test::transmit_tag(6, 10), kPayload).empty());
    EXPECT_EQ(send(test::transmit_tag(7, 1U << 10 | 1U << kLow), kPayload).size(), 1U);
    EXPECT_EQ(dropped(Drop::kEgressDown), 2U);
}

TEST_F(CpuFramesTest, FramesWithoutAWholeTagAreDropped) {
    EXPECT_TRUE(send({}, kPayload).empty());
    EXPECT_EQ(dropped(Drop::kNoSwitchTag), 1U);
    const Octets whole = kAddresses + test::transmit_tag(6, kLow) + kPayload;
    for (size_t length = kHeaderBytes; length < kHeaderBytes + kTransmitTagBytes; ++length) {
        chip_.receive(1s, kCpu, Bytes{whole}.first(length));
        EXPECT_TRUE(sink_.take().empty());
    }
    EXPECT_EQ(dropped(Drop::kNoSwitchTag), 1U + kTransmitTagBytes);
}

}  // namespace cpu_frames_test
}  // namespace vdevice::chip
