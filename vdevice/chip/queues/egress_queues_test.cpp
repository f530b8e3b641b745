// When frames leave a shaped port and in what order, to the nanosecond, and what becomes of those that find no room.
#include "vdevice/chip/queues/egress_queues.h"

#include <gmock/gmock.h>

#include "vdevice/chip/testing/queue_fixture.h"

namespace vdevice::chip {
namespace egress_queues_test {

using namespace std::chrono_literals;
using namespace test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
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

TEST_F(EgressQueuesTest, APortWithoutAShaperHoldsNothing) {
    EXPECT_FALSE(queues_.holds(kPort));
    queues_.pass(kPort, 3, 100);
    EXPECT_EQ(counters(kPort, 3).frames, 1U);
    EXPECT_EQ(counters(kPort, 3).octets, 100U);
    shape(kPort);
    EXPECT_TRUE(queues_.holds(kPort));
    EXPECT_FALSE(queues_.holds(kOther));
    shape(kPort, 0, 0);
    EXPECT_FALSE(queues_.holds(kPort));
    EXPECT_EQ(queues_.port(kPort).shaper(), nullptr);
}

TEST_F(EgressQueuesTest, FramesLeaveAtTheRate) {
    shape(kPort);
    fill(10ms, kPort, 0, 3);
    EXPECT_THAT(leave(1h), ElementsAre(Left{10ms, kPort, 0}, Left{11ms, kPort, 1}, Left{12ms, kPort, 2}));
    EXPECT_FALSE(queues_.next());
    EXPECT_EQ(counters(kPort, 0).frames, 3U);
    EXPECT_EQ(counters(kPort, 0).octets, 3 * kFrame);
}

TEST_F(EgressQueuesTest, ABurstLeavesAtOnce) {
    shape(kPort, 3 * kFrameBurst);
    fill(0ms, kPort, 0, 5);
    EXPECT_THAT(leave(1h), ElementsAre(Left{0ms, kPort, 0}, Left{0ms, kPort, 1}, Left{0ms, kPort, 2},
                                       Left{1ms, kPort, 3}, Left{2ms, kPort, 4}));
    // Half a burst has come together since.
    fill(3500us, kPort, 0, 3);
    EXPECT_THAT(leave(1h), ElementsAre(Left{3500us, kPort, 5}, Left{4ms, kPort, 6}, Left{5ms, kPort, 7}));
}

TEST_F(EgressQueuesTest, ABurstOfNoneIsTheBucketsOwn) {
    shape(kPort, 0);
    fill(0ms, kPort, 0, 12);
    const std::vector<Left> left = leave(1h);
    ASSERT_THAT(left, SizeIs(12));
    EXPECT_EQ(left[9].time, 0ms) << "ten milliseconds of the rate";
    EXPECT_EQ(left[10].time, 1ms);
    EXPECT_EQ(left[11].time, 2ms);
}

// The times are those of a rate that divides nothing; each is the first nanosecond that is late enough, and none is
// late because an earlier one was rounded.
TEST_F(EgressQueuesTest, TheRateIsExactOverAnyTime) {
    constexpr int64_t kOddRate = 997;
    constexpr int kFrames = 60;
    shape(kPort, 2 * kFrameBurst, static_cast<uint32_t>(kOddRate));
    fill(0s, kPort, 0, kFrames);
    const std::vector<Left> left = leave(1h);
    ASSERT_THAT(left, SizeIs(kFrames));
    for (int64_t i = 2; i < kFrames; ++i) {
        const Time exact{((i - 1) * kFrameBurst * 1'000'000'000 + kOddRate - 1) / kOddRate};
        EXPECT_EQ(left[static_cast<size_t>(i)].time, exact) << i;
    }
}

TEST_F(EgressQueuesTest, AFrameLongerThanTheBurstWaitsForAFullBucketAndIsPaidForAfterwards) {
    shape(kPort);
    put(0ms, kPort, 0, 4 * (kFrame + kCheckSequenceBytes) - kCheckSequenceBytes);
    fill(0ms, kPort, 0, 2);
    EXPECT_THAT(leave(1h), ElementsAre(Left{0ms, kPort, 0}, Left{4ms, kPort, 1}, Left{5ms, kPort, 2}));
}

TEST_F(EgressQueuesTest, StrictModeStarvesTheLowerQueue) {
    shape(kPort);
    fill(0ms, kPort, 1, 5);
    EXPECT_THAT(numbers(leave(1ms)), ElementsAre(0, 1));
    fill(1ms, kPort, 6, 4);
    EXPECT_THAT(numbers(leave(5ms)), ElementsAre(5, 6, 7, 8));
    EXPECT_EQ(counters(kPort, 1).frames, 2U);
    EXPECT_THAT(numbers(leave(1h)), ElementsAre(2, 3, 4));
}

TEST_F(EgressQueuesTest, AFrameThatComesWhileOthersWaitIsJudgedAtTheDeparture) {
    shape(kPort);
    fill(0ms, kPort, 0, 3);
    EXPECT_THAT(leave(0ms), ElementsAre(Left{0ms, kPort, 0}));
    put(400us, kPort, 7, kFrame / 2 - kCheckSequenceBytes / 2);  // half as long
    EXPECT_THAT(leave(1h), ElementsAre(Left{500us, kPort, 3}, Left{1500us, kPort, 1}, Left{2500us, kPort, 2}));
}

TEST_F(EgressQueuesTest, RoundRobinTakesFramesInTurn) {
    shape(kPort);
    schedule(kPort, SchedulerMode::kRoundRobin);
    for (const size_t queue : {2U, 4U, 7U}) {
        fill(0ms, kPort, queue, 2);
    }
    EXPECT_THAT(leave(1h), ElementsAre(Left{0ms, kPort, 0}, Left{1ms, kPort, 2}, Left{2ms, kPort, 4},
                                       Left{3ms, kPort, 1}, Left{4ms, kPort, 3}, Left{5ms, kPort, 5}));
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

TEST_F(EgressQueuesTest, FramesOfAllPortsLeaveInTheOrderOfTheirTimes) {
    shape(kPort);
    shape(kOther, kFrameBurst, 2 * kRate);
    fill(0ms, kPort, 0, 3);
    fill(0ms, kOther, 0, 3);
    EXPECT_THAT(leave(1h), ElementsAre(Left{0ms, kPort, 0}, Left{0ms, kOther, 3}, Left{500us, kOther, 4},
                                       Left{1ms, kPort, 1}, Left{1ms, kOther, 5}, Left{2ms, kPort, 2}));
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

TEST_F(EgressQueuesTest, WithoutItsShaperAPortSendsWhatWaitsAtOnce) {
    shape(kPort);
    fill(0ms, kPort, 0, 3);
    leave(0ms);
    shape(kPort, 0, 0, 300us);
    EXPECT_TRUE(queues_.holds(kPort)) << "or what comes next would overtake what waits";
    EXPECT_THAT(leave(300us), ElementsAre(Left{300us, kPort, 1}, Left{300us, kPort, 2}));
    EXPECT_FALSE(queues_.holds(kPort));
}

TEST_F(EgressQueuesTest, AnotherRateHoldsFromThenOn) {
    shape(kPort);
    fill(0ms, kPort, 0, 4);
    EXPECT_THAT(numbers(leave(1ms)), ElementsAre(0, 1));
    shape(kPort, kFrameBurst, kRate / 4, 1500us);  // half of the next frame has come together
    EXPECT_THAT(leave(1h), ElementsAre(Left{3500us, kPort, 2}, Left{7500us, kPort, 3}));
    EXPECT_EQ(*queues_.port(kPort).shaper(), (RateLimit{kRate / 4, kFrameBurst}));
}

TEST_F(EgressQueuesTest, OtherSchedulingHoldsFromThenOn) {
    shape(kPort);
    fill(0ms, kPort, 1, 2);
    fill(0ms, kPort, 4, 2);
    EXPECT_THAT(numbers(leave(0ms)), ElementsAre(2));
    schedule(kPort, SchedulerMode::kRoundRobin);
    EXPECT_THAT(numbers(leave(1h)), ElementsAre(0, 3, 1));
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
