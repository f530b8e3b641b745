// When frames leave a shaped port and in what order, to the nanosecond, and what becomes of those that find no room.
#include "vdevice/chip/queues/egress_queues.h"

#include <gmock/gmock.h>

#include "vdevice/chip/testing/queue_fixture.h"

namespace vdevice::chip {
namespace egress_queues_test {

using namespace std::chrono_literals;
using namespace test;
using ::testing::ElementsAre;
using ::testing::SizeIs;

constexpr int kPort = 5;
constexpr int kOther = 9;

using EgressQueuesTest = test::QueueTest;

/** The numbers of frames that have left. */
std::vector<uint32_t> numbers(const std::vector<Left> &left) {
    std::vector<uint32_t> list;
    list.reserve(left.size());
    for (const Left &frame : left) {
        list.push_back(frame.number);
    }
    return list;
}

TEST_F(EgressQueuesTest, FramesLeaveAtTheRate) {
    shape(kPort);
    fill(10ms, kPort, 0, 3);
    EXPECT_THAT(leave(1h), ElementsAre(Left{10ms, kPort, 0}, Left{11ms, kPort, 1}, Left{12ms, kPort, 2}));
    EXPECT_FALSE(queues_.next());
    EXPECT_EQ(counters(kPort, 0).frames, 3U);
    EXPECT_EQ(counters(kPort, 0).octets, 3 * kFrame);
}

TEST_F(EgressQueuesTest, WeightsShareTheRateExactly) {
    constexpr size_t kShort = 64;  // on the wire
    constexpr uint32_t kQuantumFrames = Scheduler::kQuantum / kShort;
    constexpr int kRounds = 3;
    shape(kPort, 1);
    schedule(kPort, SchedulerMode::kWeighted, {1, 2, 4, 8, 1, 1, 1, 1});
    for (const size_t queue : {0U, 1U, 2U, 3U}) {
        fill(0ms, kPort, queue, 1000, kShort - kCheckSequenceBytes);
    }
    constexpr int kFrames = kRounds * 15 * kQuantumFrames;
    constexpr Time kLast = std::chrono::microseconds{kFrames * kShort - 125};  // a kilobit was in the bucket
    EXPECT_THAT(leave(kLast), SizeIs(kFrames));
    for (const size_t queue : {0U, 1U, 2U, 3U}) {
        EXPECT_EQ(counters(kPort, queue).frames, kRounds * (kQuantumFrames << queue)) << queue;
        EXPECT_EQ(counters(kPort, queue).drops, 0U);
    }
    EXPECT_EQ(queues_.next()->time, kLast + 64us);
}

TEST_F(EgressQueuesTest, AQueueHoldsWhatItHasRoomFor) {
    constexpr size_t kFitting = PortQueues::kQueueOctets / 1024;
    shape(kPort);
    fill(0ms, kPort, 2, kFitting + 3, 1024);
    put(0ms, kPort, 2, 60);
    put(0ms, kPort, 3, 1024);
    EXPECT_EQ(queues_.port(kPort).waiting_frames(2), kFitting);
    EXPECT_EQ(queues_.port(kPort).waiting_octets(2), PortQueues::kQueueOctets);
    EXPECT_EQ(counters(kPort, 2).drops, 4U);
    EXPECT_EQ(counters(kPort, 3).drops, 0U);
    EXPECT_THAT(leave(0ms), ElementsAre(Left{0ms, kPort, kFitting + 4}));
    EXPECT_THAT(leave(2ms), SizeIs(1));
    put(2ms, kPort, 2, 1025);
    EXPECT_EQ(counters(kPort, 2).drops, 5U);
    put(2ms, kPort, 2, 1024);
    EXPECT_EQ(counters(kPort, 2).drops, 5U);
    EXPECT_EQ(queues_.port(kPort).waiting_frames(2), kFitting);
}

TEST_F(EgressQueuesTest, AllQueuesTogetherHoldWhatTheChipHasRoomFor) {
    constexpr int kFilled = EgressQueues::kOctets / PortQueues::kQueueOctets;
    static_assert(kFilled == 4 * kQueues);
    for (int port = 0; port < 4; ++port) {
        shape(port);
        for (size_t queue = 0; queue < kQueues; ++queue) {
            fill(0ms, port, queue, PortQueues::kQueueOctets / 1024, 1024);
        }
    }
    shape(kPort);
    put(0ms, kPort, 0, 60);
    EXPECT_EQ(counters(kPort, 0).drops, 1U);
    EXPECT_EQ(queues_.waiting_octets(), EgressQueues::kOctets);
    queues_.take_next();
    put(0ms, kPort, 0, 1024);
    EXPECT_EQ(counters(kPort, 0).drops, 1U);
    EXPECT_EQ(queues_.waiting_octets(), EgressQueues::kOctets);
}

TEST_F(EgressQueuesTest, FlushingLosesWhatWaitsAndCountsIt) {
    shape(kPort);
    shape(kOther);
    fill(0ms, kPort, 0, 2);
    fill(0ms, kPort, 5, 3);
    fill(0ms, kOther, 0, 1);
    queues_.flush(kPort);
    EXPECT_EQ(counters(kPort, 0).flushed, 2U);
    EXPECT_EQ(counters(kPort, 5).flushed, 3U);
    EXPECT_EQ(counters(kPort, 5).drops + counters(kPort, 5).frames, 0U);
    EXPECT_EQ(queues_.waiting_octets(), kFrame);
    EXPECT_THAT(leave(1h), ElementsAre(Left{0ms, kOther, 5}));
    queues_.flush(kPort);
    EXPECT_EQ(counters(kPort, 5).flushed, 3U);
}

TEST_F(EgressQueuesTest, WhatCannotBeIsRefusedAndChangesNothing) {
    shape(kPort);
    schedule(kPort, SchedulerMode::kRoundRobin);
    EXPECT_EQ(queues_.set_shaper(0s, kPort, {TokenBucket::kMaxRate + 1, 1}), Status::kBadArgument);
    EXPECT_EQ(queues_.set_shaper(0s, kPort, {1, TokenBucket::kMaxDepth + 1}), Status::kBadArgument);
    EXPECT_EQ(queues_.set_scheduler(0s, kPort, {static_cast<SchedulerMode>(3)}), Status::kBadArgument);
    EXPECT_EQ(*queues_.port(kPort).shaper(), (RateLimit{kRate, kFrameBurst}));
    EXPECT_EQ(queues_.port(kPort).scheduler().mode, SchedulerMode::kRoundRobin);
    EXPECT_EQ(queues_.set_shaper(0s, kPort, {TokenBucket::kMaxRate, TokenBucket::kMaxDepth}), Status::kOk);
}

}  // namespace egress_queues_test
}  // namespace vdevice::chip
