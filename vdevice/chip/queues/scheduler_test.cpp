// Which queue is served next, frame by frame, and what the queues' shares come to.
#include "vdevice/chip/queues/scheduler.h"

#include <gmock/gmock.h>

#include <random>
#include <vector>

namespace vdevice::chip {
namespace scheduler_test {

using ::testing::ElementsAre;

constexpr size_t kShort = 64;
constexpr size_t kLong = 1522;
constexpr size_t kPart = Scheduler::kQuantum * 3 / 4;

class SchedulerTest : public testing::Test {
  protected:
    void set(SchedulerMode mode, const QueueWeights &weights = SchedulerSettings{}.weights) {
        scheduler_.set({mode, weights});
    }

    /** The next queues that are served when the heads stay as they are. */
    std::vector<size_t> serve(const QueueHeads &heads, int frames) {
        std::vector<size_t> served;
        for (int i = 0; i < frames; ++i) {
            served.push_back(scheduler_.next(heads));
        }
        return served;
    }

    /** How often each queue is served. */
    std::array<int, kQueues> shares(const QueueHeads &heads, int frames) {
        std::array<int, kQueues> counts{};
        for (const size_t queue : serve(heads, frames)) {
            ++counts[queue];
        }
        return counts;
    }

    Scheduler scheduler_;
};

QueueHeads all_of(size_t octets) {
    QueueHeads heads;
    heads.fill(octets);
    return heads;
}

TEST_F(SchedulerTest, RoundRobinTakesAFrameOfEachQueueThatHasOne) {
    set(SchedulerMode::kRoundRobin);
    EXPECT_THAT(serve(all_of(kShort), 10), ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 0, 1));
    EXPECT_THAT(serve({kLong, 0, 0, kShort, 0, 0, kShort, 0}, 5), ElementsAre(3, 6, 0, 3, 6));
    EXPECT_THAT(serve({0, kShort, 0, 0, 0, 0, 0, 0}, 3), ElementsAre(1, 1, 1));
}

TEST_F(SchedulerTest, WeightsShareExactlyOverARound) {
    set(SchedulerMode::kWeighted, {1, 2, 4, 8, 1, 1, 1, 1});
    const QueueHeads heads{kShort, kShort, kShort, kShort};
    constexpr int kFramesOfQuantum = Scheduler::kQuantum / kShort;
    for (int round = 0; round < 3; ++round) {
        EXPECT_THAT(shares(heads, kFramesOfQuantum * 15),
                    ElementsAre(kFramesOfQuantum, 2 * kFramesOfQuantum, 4 * kFramesOfQuantum, 8 * kFramesOfQuantum, 0,
                                0, 0, 0));
    }
}

TEST_F(SchedulerTest, WhatIsTooShortForAFrameIsKeptForTheNextTurn) {
    set(SchedulerMode::kWeighted);
    // Three turns of a quantum are four frames of three quarters of it.
    EXPECT_THAT(serve({kPart, Scheduler::kQuantum}, 9), ElementsAre(0, 1, 0, 1, 0, 0, 1, 0, 1));
}

TEST_F(SchedulerTest, AFrameOfManyQuantaIsWaitedForByNobodyElse) {
    set(SchedulerMode::kWeighted);
    EXPECT_THAT(serve({4 * Scheduler::kQuantum, Scheduler::kQuantum}, 5), ElementsAre(1, 1, 1, 0, 1));
    EXPECT_THAT(serve({5 * Scheduler::kQuantum}, 2), ElementsAre(0, 0));
}

// Whatever the frames' lengths: no queue is ever ahead of its share by more than a turn's quanta and a frame.
TEST_F(SchedulerTest, WeightsShareOctetsOfFramesOfAnyLength) {
    std::mt19937 random{71};
    std::uniform_int_distribution<size_t> length{kShort, 9604};
    set(SchedulerMode::kWeighted, {3, 5, 1, 7, 2, 2, 127, 1});
    QueueHeads heads;
    for (size_t &head : heads) {
        head = length(random);
    }
    std::array<uint64_t, kQueues> octets{};
    for (int i = 0; i < 200000; ++i) {
        const size_t queue = scheduler_.next(heads);
        octets[queue] += heads[queue];
        heads[queue] = length(random);
    }
    const auto rounds = static_cast<double>(octets[6]) / (127 * Scheduler::kQuantum);
    for (size_t queue = 0; queue < kQueues; ++queue) {
        const double share = rounds * scheduler_.settings().weights[queue] * Scheduler::kQuantum;
        const double turn = static_cast<double>(scheduler_.settings().weights[queue] * Scheduler::kQuantum + 9604);
        EXPECT_NEAR(static_cast<double>(octets[queue]), share, turn) << queue;
    }
}

TEST(SchedulerSettings, OnlyTheModesAndWeightsThatThereAreAreGood) {
    EXPECT_EQ(SchedulerSettings{}.check(), Status::kOk);
    for (const uint32_t mode : {3U, 4U, 0xFFFFFFFFU}) {
        EXPECT_EQ((SchedulerSettings{static_cast<SchedulerMode>(mode)}.check()), Status::kBadArgument) << mode;
    }
    EXPECT_EQ((SchedulerSettings{SchedulerMode::kWeighted, {127, 0, 0, 0, 0, 0, 0, 127}}.check()), Status::kOk);
    EXPECT_EQ((SchedulerSettings{SchedulerMode::kWeighted, {0, 0, 0, 0, 0, 0, 0, 128}}.check()), Status::kBadArgument);
}

}  // namespace scheduler_test
}  // namespace vdevice::chip
