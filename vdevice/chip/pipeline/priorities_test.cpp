// Priorities and queues: which egress queue a frame leaves by, wherever it goes.
#include <gtest/gtest.h>

#include "vdevice/chip/testing/priority_fixture.h"

namespace vdevice::chip {
namespace priorities_test {

using namespace test;

class Priorities : public test::PriorityTest {};

TEST_F(Priorities, OfFramesFromTheCpuAreWhatPort0MakesOfThem) {
    const auto from_cpu = [&](uint32_t opcode, uint32_t destination, const Octets &rest) {
        return queues_of(kAddresses + test::transmit_tag(opcode, destination) + rest, kCpu);
    };
    ASSERT_EQ(change(kCpu, [](Port &port) { port.untagged_priority = 2; }), Status::kOk);
    for (const uint32_t opcode : {3U, 5U, 6U}) {
        EXPECT_EQ(from_cpu(opcode, kB, vlan_tag(0xA001) + kPayload), one_in(5)) << opcode;
        EXPECT_EQ(from_cpu(opcode, kB, kPayload), one_in(2)) << opcode;
        EXPECT_EQ(from_cpu(opcode, kB, vlan_tag(0xA001)), one_in(0)) << "no type behind its tag; " << opcode;
    }
    for (const uint32_t opcode : {4U, 7U}) {
        EXPECT_EQ(from_cpu(opcode, 1U << kB, vlan_tag(0xE001) + kPayload), one_in(7)) << opcode;
    }
    EXPECT_EQ(from_cpu(1, 0, vlan_tag(0x6001) + kPayload), one_in(3));
    ASSERT_EQ(change(kCpu, [](Port &port) { port.trust = Trust::kPort; }), Status::kOk);
    EXPECT_EQ(from_cpu(3, kB, vlan_tag(0xA001) + kPayload), one_in(2));
}

TEST_F(Priorities, OfFramesThatARuleMirrorsAreNone) {
    chip_.mirrors().set_enabled(true);
    ASSERT_EQ(chip_.set_egress(kA, PortSet::of(kB)), Status::kOk);
    ASSERT_EQ(chip_.mirrors().set_flow_destination(0, kC), Status::kOk);
    rule({{test::kMirror, 0}, {test::kSetPriority, 7}});
    EXPECT_EQ(queues_of(tagged(5)), one_in(7));
    EXPECT_EQ(sent(kC), one_in(0));
}

TEST_F(Priorities, AreNotSentToQueuesThatAreNotThere) {
    QueueMap map;
    EXPECT_EQ(map.set(0, 8), Status::kQueueRange);
    EXPECT_EQ(map.set(8, 0), Status::kBadArgument);
    EXPECT_EQ(map.set(kB, 0, 8), Status::kQueueRange);
    EXPECT_EQ(map.set(kB, 8, 0), Status::kBadArgument);
    EXPECT_EQ(map.set_queues(0), Status::kQueueRange);
    EXPECT_EQ(map.set_queues(9), Status::kQueueRange);
    EXPECT_EQ(map.queues(), 8U);
    ASSERT_EQ(map.set_queues(1), Status::kOk);
    EXPECT_EQ(map.set(7, 1), Status::kQueueRange);
    EXPECT_EQ(map.set(kB, 7, 1), Status::kQueueRange);
    ASSERT_EQ(map.set_queues(8), Status::kOk);
    EXPECT_EQ(map.queue_of(kB, 7), 7U) << "what is refused changes nothing";
}

}  // namespace priorities_test
}  // namespace vdevice::chip
