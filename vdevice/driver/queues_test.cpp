// The calls on egress queues, their schedulers and shapers. When frames leave is tested on the chip.
#include <gmock/gmock.h>

#include "vdevice/driver/testing/driver_fixture.h"

namespace vdevice::driver {
namespace queues_test {

using namespace std::chrono_literals;
using chip::QueueWeights;
using chip::SchedulerMode;
using chip::SchedulerSettings;
using chip::Status;
using ::testing::Each;
using ::testing::ElementsAre;
using namespace test;

constexpr uint32_t kWeighted = 2;
constexpr uint32_t kUnwritten = 99;
constexpr QueueWeights kZeros{};

struct Scheduler {
    uint32_t mode = kUnwritten;
    QueueWeights weights{kUnwritten, kUnwritten, kUnwritten, kUnwritten,
                         kUnwritten, kUnwritten, kUnwritten, kUnwritten};
    uint32_t delay = kUnwritten;
};

class DriverQueues : public test::DriverTest {
  protected:
    int32_t set(uint32_t mask, uint32_t mode, const QueueWeights &weights, uint32_t delay = 0) {
        return driver_.user_cosq_port_sched_set(0, 0, mask, mode, weights.data(), delay);
    }

    int32_t get(uint32_t mask, Scheduler &out) {
        return driver_.user_cosq_port_sched_get(0, 0, mask, &out.mode, out.weights.data(), &out.delay);
    }

    const SchedulerSettings &scheduler(int port) { return chip_.queues().port(port).scheduler(); }
};

TEST_F(DriverQueues, AMaskNamesFrontPorts) {
    EXPECT_EQ(set(1U << 1 | 1U << 26, 1, {9, 8, 7, 6, 5, 4, 3, 2}, 77), kOk);
    for (const int port : {4, 29}) {
        EXPECT_EQ(scheduler(port).mode, SchedulerMode::kRoundRobin) << port;
        EXPECT_THAT(scheduler(port).weights, ElementsAre(9, 8, 7, 6, 5, 4, 3, 2));
        EXPECT_EQ(scheduler(port).delay, 77U);
    }
    EXPECT_EQ(scheduler(1).mode, SchedulerMode::kStrict);
    EXPECT_EQ(scheduler(26).mode, SchedulerMode::kStrict);
    Scheduler read;
    EXPECT_EQ(get(1U << 26, read), kOk);
    EXPECT_EQ(read.mode, 1U);
    EXPECT_THAT(read.weights, ElementsAre(9, 8, 7, 6, 5, 4, 3, 2));
    EXPECT_EQ(read.delay, 77U);
    EXPECT_EQ(set(1, kWeighted, kZeros), kOk);
    EXPECT_EQ(scheduler(0).mode, SchedulerMode::kWeighted) << "front port 0 is the CPU's";
}

TEST_F(DriverQueues, AWeightOfNoneLeavesTheQueuesOwn) {
    EXPECT_EQ(set(2, kWeighted, kZeros), kOk);
    EXPECT_THAT(scheduler(4).weights, Each(1));
    EXPECT_EQ(set(2, kWeighted, {5, 0, 6, 0, 0, 0, 0, 127}), kOk);
    EXPECT_EQ(set(2, 1, kZeros), kOk);
    EXPECT_THAT(scheduler(4).weights, ElementsAre(5, 1, 6, 1, 1, 1, 1, 127));
}

TEST_F(DriverQueues, WhatWasReadIsWrittenBackWithoutAChange) {
    ASSERT_EQ(driver_.user_qos_schedule_set(4, 3, 0, 0), kOk);
    ASSERT_EQ(set(2, kWeighted, {5, 0, 0, 0, 0, 0, 0, 8}, 3), kOk);
    Scheduler read;
    ASSERT_EQ(get(2, read), kOk);
    EXPECT_THAT(read.weights, ElementsAre(5, 1, 1, 0, 1, 1, 1, 8));
    EXPECT_EQ(set(2, read.mode, read.weights, read.delay), kOk);
    EXPECT_THAT(scheduler(4).weights, ElementsAre(5, 1, 1, 0, 1, 1, 1, 8));
    EXPECT_EQ(scheduler(4).mode, SchedulerMode::kWeighted);
    EXPECT_EQ(scheduler(4).delay, 3U);
}

TEST_F(DriverQueues, WeightsOfSingleQueuesNameTheChipPort) {
    constexpr uint32_t kAnyFlags = 0xFFFFFFFF;
    EXPECT_EQ(driver_.user_qos_schedule_set(29, 7, 127, kAnyFlags), kOk);
    EXPECT_EQ(driver_.user_qos_schedule_set(29, 0, 0, 0), kOk);
    EXPECT_THAT(scheduler(29).weights, ElementsAre(0, 1, 1, 1, 1, 1, 1, 127));
    uint32_t weight = kUnwritten;
    EXPECT_EQ(driver_.user_qos_schedule_get(29, 7, &weight, kAnyFlags), kOk);
    EXPECT_EQ(weight, 127U);
    EXPECT_EQ(driver_.user_qos_schedule_get(29, 0, &weight, 0), kOk);
    EXPECT_EQ(weight, 0U);
    EXPECT_EQ(scheduler(29).mode, SchedulerMode::kStrict) << "weights do not choose the mode";
}

TEST_F(DriverQueues, TheCpusQueuesGetTheirWeights) {
    EXPECT_EQ(driver_.user_qos_cpu_weight_init(), kOk);
    EXPECT_EQ(scheduler(0).mode, SchedulerMode::kWeighted);
    EXPECT_THAT(scheduler(0).weights, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8));
    EXPECT_EQ(scheduler(4).mode, SchedulerMode::kStrict);
}

TEST_F(DriverQueues, OneToEightQueuesAreConfigured) {
    EXPECT_EQ(chip_.queue_map().queues(), 8U);
    EXPECT_EQ(driver_.user_cosq_config_set(0, 0, 3), kOk);
    EXPECT_EQ(chip_.queue_map().queues(), 3U);
    EXPECT_EQ(driver_.user_cosq_config_set(0, 0, 0), kQueueRange);
    EXPECT_EQ(driver_.user_cosq_config_set(0, 0, 9), kQueueRange);
    EXPECT_EQ(chip_.queue_map().queues(), 3U);
}

TEST_F(DriverQueues, AShaperIsReadAsItWasSet) {
    uint32_t rate = kUnwritten;
    uint32_t burst = kUnwritten;
    EXPECT_EQ(driver_.user_port_egress_rate_get(0, 0, 4, &rate, &burst), kOk);
    EXPECT_EQ(rate, 0U);
    EXPECT_EQ(burst, 0U);
    for (const int32_t port : {0, 4, 29}) {
        EXPECT_EQ(driver_.user_port_egress_rate_set(0, 0, port, 64, 16), kOk);
        EXPECT_EQ(driver_.user_port_egress_rate_get(0, 0, port, &rate, &burst), kOk);
        EXPECT_EQ(rate, 64U);
        EXPECT_EQ(burst, 16U);
        EXPECT_TRUE(chip_.queues().holds(port));
    }
    EXPECT_EQ(driver_.user_port_egress_rate_set(0, 0, 4, 0, 16), kOk);
    EXPECT_EQ(driver_.user_port_egress_rate_get(0, 0, 4, &rate, &burst), kOk);
    EXPECT_EQ(rate, 0U);
    EXPECT_EQ(burst, 0U) << "without a rate there is nothing to burst";
    EXPECT_FALSE(chip_.queues().holds(4));
}

TEST_F(DriverQueues, SettingsTakeTheTimeFromTheClock) {
    constexpr size_t kOctets = 996;  // a millisecond of the rate
    for (const int port : {4, 5}) {
        ASSERT_EQ(chip_.set_link(port, true), Status::kOk);
    }
    ASSERT_EQ(driver_.user_port_egress_rate_set(0, 0, 5, 8000, 8), kOk);
    std::vector<uint8_t> frame(kOctets, 0);
    frame[0] = 1;
    for (int i = 0; i < 3; ++i) {
        chip_.receive(0s, 4, frame);
    }
    EXPECT_EQ(sink_.take().size(), 1U);
    now_ = 1ms;
    EXPECT_EQ(set(1U << 2, 1, kZeros), kOk);
    EXPECT_EQ(sink_.take().size(), 1U);
    now_ = 1500us;
    EXPECT_EQ(driver_.user_port_egress_rate_set(0, 0, 5, 0, 0), kOk);
    EXPECT_EQ(chip_.next_departure(), chip::Time{1500us});
}

TEST_F(DriverQueues, WhatCannotBeIsRefusedAndChangesNothing) {
    Scheduler read;
    for (const uint32_t mask : {0U, 1U << 27, 1U << 27 | 2, 0xFFFFFFFFU}) {
        EXPECT_EQ(set(mask, 1, kZeros), kNotFrontPort) << mask;
        EXPECT_EQ(get(mask, read), kNotFrontPort) << mask;
    }
    EXPECT_EQ(get(6, read), kBadArgument) << "there is room for one port's answer";
    for (const uint32_t mode : {3U, 4U, 0xFFFFFFFFU}) {
        EXPECT_EQ(set(2, mode, kZeros), kBadArgument);
    }
    EXPECT_EQ(set(2, 1, {0, 0, 0, 128}), kBadArgument);
    EXPECT_EQ(read.mode, kUnwritten);
    EXPECT_THAT(read.weights, Each(kUnwritten));
    EXPECT_EQ(driver_.user_qos_schedule_set(32, 0, 1, 0), kNoPort);
    EXPECT_EQ(driver_.user_qos_schedule_set(4, 8, 1, 0), kQueueRange);
    EXPECT_EQ(driver_.user_qos_schedule_set(4, 0, 128, 0), kBadArgument);
    EXPECT_EQ(driver_.user_qos_schedule_get(0xFFFFFFFF, 0, &read.mode, 0), kNoPort);
    EXPECT_EQ(driver_.user_qos_schedule_get(4, 8, &read.mode, 0), kQueueRange);
    EXPECT_EQ(read.mode, kUnwritten);
    EXPECT_EQ(scheduler(4).mode, SchedulerMode::kStrict);
    EXPECT_THAT(scheduler(4).weights, Each(1));
}

}  // namespace queues_test
}  // namespace vdevice::driver
