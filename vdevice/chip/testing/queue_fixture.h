// For tests: egress queues with frames that are told apart by a number, and a rate at which times are easy to read.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "vdevice/chip/queues/egress_queues.h"

namespace vdevice::chip::test {

constexpr uint32_t kRate = 8000;     // kbit/s: an octet in a microsecond
constexpr size_t kFrame = 996;       // octets; with the check sequence a millisecond at that rate
constexpr uint32_t kFrameBurst = 8;  // kbit: a bucket for one such frame
constexpr size_t kNumberAt = kHeaderBytes;

/** A frame that has left. */
struct Left {
    Time time;
    int port;
    uint32_t number;

    friend bool operator==(const Left &, const Left &) = default;
    friend void PrintTo(const Left &left, std::ostream *out) {
        *out << "frame " << left.number << " by port " << left.port << " at " << left.time.count() << " ns";
    }
};

inline std::vector<uint8_t> numbered_frame(uint32_t number, size_t octets) {
    std::vector<uint8_t> frame(octets);
    write32(&frame[kNumberAt], number);
    return frame;
}

class QueueTest : public testing::Test {
  protected:
    /** The frames are numbered in the order in which they are put. */
    void put(Time now, int port, size_t queue, size_t octets = kFrame) {
        const std::vector<uint8_t> frame = numbered_frame(next_number_++, octets);
        queues_.put(now, port, queue, split_frame(frame), {0, Origin::kSwitched});
    }

    void fill(Time now, int port, size_t queue, int frames, size_t octets = kFrame) {
        for (int i = 0; i < frames; ++i) {
            put(now, port, queue, octets);
        }
    }

    void shape(int port, uint32_t burst = kFrameBurst, uint32_t rate = kRate, Time now = Time{}) {
        EXPECT_EQ(queues_.set_shaper(now, port, {rate, burst}), Status::kOk);
    }

    void schedule(int port, SchedulerMode mode, const QueueWeights &weights = SchedulerSettings{}.weights) {
        EXPECT_EQ(queues_.set_scheduler(Time{}, port, {mode, weights}), Status::kOk);
    }

    /** What leaves up to and at the given time. */
    std::vector<Left> leave(Time until) {
        std::vector<Left> left;
        while (queues_.next() && queues_.next()->time <= until) {
            const EgressQueues::Departure departure = *queues_.next();
            left.push_back({departure.time, departure.port, read32(queues_.take_next().octets, kNumberAt)});
        }
        return left;
    }

    const QueueCounters &counters(int port, size_t queue) const { return queues_.port(port).counters(queue); }

    static constexpr int kPorts = 32;
    EgressQueues queues_{kPorts};
    uint32_t next_number_ = 0;
};

}  // namespace vdevice::chip::test
