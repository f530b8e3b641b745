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

constexpr size_t kShortest = 60;  // octets; with check sequence, preamble and gap 84 on the line
constexpr size_t kLongest = 1514;

/** So many frames wait for the line; how many have left until then. */
size_t left_within(EgressQueues &queues, Time time) {
    size_t left = 0;
    for (; queues.next() && queues.next()->time <= time; ++left) {
        queues.take_next();
    }
    return left;
}

TEST_F(EgressQueuesTest, ALineSendsAsManyFramesAsItsSpeedAllows) {
    const struct {
        uint32_t speed;
        size_t octets;
        size_t in_a_millisecond;  // the first one leaves at once
    } kLines[] = {{10, kShortest, 15},    {100, kShortest, 149}, {1000, kShortest, 1489}, {10000, kShortest, 14881},
                  {10000, kLongest, 813}, {1000, kLongest, 82},  {1000, 1, 1489},         {1000, kMaxFrameBytes, 13}};
    int port = 0;
    for (const auto &line : kLines) {
        queues_.set_line_speed(++port, line.speed);
        size_t left = 0;
        for (Time now{}; now <= 1ms; now += 1us) {
            left += left_within(queues_, now);
            while (queues_.port(port).waiting_frames(0) < 20 && queues_.port(port).has_room(0, line.octets)) {
                put(now, port, 0, std::max(line.octets, kNumberAt + 4));
            }
            left += left_within(queues_, now);
        }
        EXPECT_EQ(left, line.in_a_millisecond) << line.speed << " Mbit/s, " << line.octets << " octets";
        queues_.flush(port);
    }
}

TEST_F(EgressQueuesTest, FramesFollowEachOtherOnALineWithoutRounding) {
    queues_.set_line_speed(kPort, 10000);
    fill(1us, kPort, 0, 6, kShortest);
    // 67.2 ns each.
    EXPECT_THAT(leave(1h), ElementsAre(Left{1000ns, kPort, 0}, Left{1068ns, kPort, 1}, Left{1135ns, kPort, 2},
                                       Left{1202ns, kPort, 3}, Left{1269ns, kPort, 4}, Left{1336ns, kPort, 5}));
    fill(2us, kPort, 0, 1, kShortest);
    EXPECT_THAT(leave(1h), ElementsAre(Left{2us, kPort, 6})) << "an idle line saves nothing up";
}

TEST_F(EgressQueuesTest, ABusyLineFillsTheQueueAndThenFramesAreDropped) {
    constexpr size_t kWaiting = PortQueues::kQueueOctets / kLongest;
    queues_.set_line_speed(kPort, 1000);
    fill(0s, kPort, 0, kWaiting + 3, kLongest);
    EXPECT_EQ(counters(kPort, 0).drops, 3U);
    EXPECT_THAT(leave(1h), SizeIs(kWaiting));
}

TEST_F(EgressQueuesTest, AnotherSpeedIsForTheFramesAfterTheOneOnTheLine) {
    queues_.set_line_speed(kPort, 10);
    fill(0s, kPort, 0, 4, kShortest);
    EXPECT_THAT(leave(1us), SizeIs(1));
    queues_.set_line_speed(kPort, 1000);
    EXPECT_THAT(leave(1h), ElementsAre(Left{67200ns, kPort, 1}, Left{67872ns, kPort, 2}, Left{68544ns, kPort, 3}));
}

TEST_F(EgressQueuesTest, AShaperSlowerThanTheLineSetsThePace) {
    queues_.set_line_speed(kPort, 10);
    shape(kPort);
    fill(0s, kPort, 0, 3);
    EXPECT_THAT(leave(1h), ElementsAre(Left{0ms, kPort, 0}, Left{1ms, kPort, 1}, Left{2ms, kPort, 2}));
    shape(kPort, 0, 100'000, 10ms);
    fill(10ms, kPort, 0, 2);
    EXPECT_THAT(leave(1h), ElementsAre(Left{10ms, kPort, 3}, Left{10816us, kPort, 4}));
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
