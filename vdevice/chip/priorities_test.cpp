// Priorities and queues: which egress queue a frame leaves by.
#include <gtest/gtest.h>

#include "vdevice/chip/field_fixture.h"

namespace vdevice::chip {
namespace {

using test::kA;
using test::kAddresses;
using test::kB;
using test::kC;
using test::kCpu;
using test::kFlooded;
using test::kPayload;
using test::Octets;
using test::operator+;
using test::vlan_tag;

Octets tagged(std::uint32_t priority) {
    return kAddresses + vlan_tag(static_cast<std::uint16_t>(priority << kPcpShift)) + kPayload;
}

class Priorities : public test::FieldRulesTest {
  protected:
    using Queues = std::array<std::uint64_t, kQueues>;

    /** How many frames each of the port's queues has sent since the last call. */
    Queues sent(int port) {
        const Queues now = chip_.port(port).counters.tx_queues;
        Queues &before = before_[static_cast<std::size_t>(port)];
        Queues difference;
        for (std::size_t queue = 0; queue < kQueues; ++queue) {
            difference[queue] = now[queue] - before[queue];
        }
        before = now;
        return difference;
    }

    /** One frame in this queue, and none in another one. */
    static Queues one_in(std::uint32_t queue) {
        Queues queues{};
        queues[queue] = 1;
        return queues;
    }

  private:
    std::array<Queues, Switch::kPorts> before_{};
};

TEST_F(Priorities, EachHasAQueueOfItsOwnAtPowerOn) {
    for (std::uint32_t priority = 0; priority < Port::kPriorities; ++priority) {
        send(kA, tagged(priority));
        for (const int port : {kB, kC, kCpu}) {
            EXPECT_EQ(sent(port), one_in(priority)) << port;
        }
    }
}

TEST_F(Priorities, OfARuleChoosesTheQueue) {
    rule({{test::kSetPriority, 6}});
    send(kA, tagged(2));
    EXPECT_EQ(sent(kB), one_in(6));
}

TEST_F(Priorities, OfFramesThatGoToTheCpuAloneChooseTheQueueToo) {
    rule({{test::kToCpu}});
    send(kA, tagged(3));
    EXPECT_EQ(sent(kCpu), one_in(3));
    EXPECT_EQ(sent(kB), Queues{});
}

TEST_F(Priorities, OfCopiesForTheCpuChooseTheQueueToo) {
    rule({{test::kCopyToCpu}, {test::kRedirectPort, kB}});
    send(kA, tagged(4));
    EXPECT_EQ(sent(kCpu), one_in(4));
    EXPECT_EQ(sent(kB), one_in(4));
}

TEST_F(Priorities, OfFramesFromTheCpuAreTheirTags) {
    const auto from_cpu = [&](std::uint32_t opcode, std::uint32_t destination, const Octets &rest) {
        send(kCpu, kAddresses + test::transmit_tag(opcode, destination) + rest);
        return sent(kB);
    };
    for (const std::uint32_t opcode : {3U, 5U, 6U}) {
        EXPECT_EQ(from_cpu(opcode, kB, vlan_tag(0xA001) + kPayload), one_in(5)) << opcode;
        EXPECT_EQ(from_cpu(opcode, kB, kPayload), one_in(0)) << opcode;
    }
    for (const std::uint32_t opcode : {4U, 7U}) {
        EXPECT_EQ(from_cpu(opcode, 1U << kB, vlan_tag(0xE001) + kPayload), one_in(7)) << opcode;
    }
    EXPECT_EQ(from_cpu(1, 0, vlan_tag(0x6001) + kPayload), one_in(3));
}

TEST_F(Priorities, OfMirrorCopiesAreTheFramesOnTheWayOutAndNoneOnTheWayIn) {
    constexpr std::uint32_t kIngress = 2;
    constexpr std::uint32_t kEgress = 4;
    chip_.mirrors().set_enabled(true);
    ASSERT_EQ(chip_.set_egress(kA, PortSet::of(kB)), Status::kOk);
    ASSERT_EQ(chip_.mirrors().set_port(0, kB, kC, kEgress), Status::kOk);
    send(kA, tagged(5));
    EXPECT_EQ(sent(kB), one_in(5));
    EXPECT_EQ(sent(kC), one_in(5));
    chip_.mirrors().clear();
    ASSERT_EQ(chip_.mirrors().set_port(0, kA, kC, kIngress), Status::kOk);
    send(kA, tagged(5));
    EXPECT_EQ(sent(kB), one_in(5));
    EXPECT_EQ(sent(kC), one_in(0));
}

TEST_F(Priorities, OfFramesThatARuleMirrorsAreNone) {
    chip_.mirrors().set_enabled(true);
    ASSERT_EQ(chip_.set_egress(kA, PortSet::of(kB)), Status::kOk);
    ASSERT_EQ(chip_.mirrors().set_flow_destination(0, kC), Status::kOk);
    rule({{test::kMirror, 0}, {test::kSetPriority, 7}});
    send(kA, tagged(5));
    EXPECT_EQ(sent(kB), one_in(7));
    EXPECT_EQ(sent(kC), one_in(0));
}

}  // namespace
}  // namespace vdevice::chip
