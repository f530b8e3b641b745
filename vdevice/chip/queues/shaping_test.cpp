// Shaped ports of the whole chip: what waits outlives the buffer that it came in, is counted and mirrored when it
// leaves, and is lost when its port goes down.
#include <gmock/gmock.h>

#include "vdevice/chip/testing/chip_fixture.h"
#include "vdevice/chip/testing/queue_fixture.h"

namespace vdevice::chip {
namespace shaping_test {

using namespace std::chrono_literals;
using namespace test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/** Keeps the chip's own word on when to come back, as the daemon does. */
class Shaping : public test::ChipTest {
  protected:
    Shaping() { shape(kB); }

    void shape(int port, uint32_t rate = kRate, Time now = 0s) {
        EXPECT_EQ(chip_.set_shaper(now, port, {rate, kFrameBurst}), Status::kOk);
    }

    static Octets frame(uint8_t number) {
        return kBroadcast + station(1) + test::octets16(0x0800) + Octets(kFrame - kHeaderBytes, number);
    }

    /** Of what a port sends: the numbers of the frames. */
    std::vector<int> at(int port, const std::vector<Sent> &sent) {
        std::vector<int> numbers;
        for (const auto &[egress, octets] : sent) {
            if (egress == port) {
                EXPECT_EQ(octets, frame(octets.back()));
                numbers.push_back(octets.back());
            }
        }
        return numbers;
    }

    std::vector<int> after(Time now) {
        chip_.depart(now);
        return at(kB, sink_.take());
    }

    void load(Time now, int frames) {
        for (int i = 0; i < frames; ++i) {
            Octets buffer = frame(++number_);
            chip_.receive(now, kA, buffer);
            std::fill(buffer.begin(), buffer.end(), 0);
        }
    }

    uint64_t flushed() const { return chip_.queues().port(kB).counters(0).flushed; }

    uint8_t number_ = 0;
};

TEST_F(Shaping, OnlyTheShapedPortHoldsFramesBack) {
    load(0s, 3);
    const std::vector<Sent> sent = sink_.take();
    EXPECT_THAT(at(kC, sent), ElementsAre(1, 2, 3));
    EXPECT_THAT(at(kB, sent), ElementsAre(1));
    EXPECT_EQ(chip_.next_departure(), Time{1ms});
    EXPECT_THAT(after(1ms), ElementsAre(2));
    EXPECT_THAT(after(1999us), IsEmpty());
    EXPECT_THAT(after(2ms), ElementsAre(3));
    EXPECT_EQ(chip_.next_departure(), std::nullopt);
}

TEST_F(Shaping, WithinTheRateFramesLeaveAtOnce) {
    for (int i = 1; i <= 5; ++i) {
        load(i * 1ms, 1);
        EXPECT_THAT(at(kB, sink_.take()), ElementsAre(i));
        EXPECT_EQ(chip_.next_departure(), std::nullopt);
    }
}

TEST_F(Shaping, CountersMoveWhenTheFrameLeaves) {
    load(0s, 3);
    const PortCounters &counters = chip_.port(kB).counters;
    EXPECT_EQ(counters.tx_frames, 1U);
    chip_.depart(2ms);
    EXPECT_EQ(counters.tx_frames, 3U);
    EXPECT_EQ(counters.tx_octets, 3 * kFrame);
    EXPECT_EQ(counters.tx_casts[static_cast<size_t>(Cast::kBroadcast)], 3U);
    EXPECT_EQ(chip_.queues().port(kB).counters(0).frames, 3U);
    EXPECT_EQ(chip_.queues().port(kC).counters(0).frames, 3U) << "queues of other ports count, too";
}

TEST_F(Shaping, ALateWakeUpChangesNothing) {
    load(0s, 10);
    sink_.take();
    EXPECT_THAT(after(5ms + 700us), ElementsAre(2, 3, 4, 5, 6));
    EXPECT_EQ(chip_.next_departure(), Time{6ms});
    load(7ms + 1us, 1);
    EXPECT_THAT(at(kB, sink_.take()), ElementsAre(7, 8)) << "a frame that comes in wakes the chip, too";
    EXPECT_EQ(chip_.next_departure(), Time{8ms});
    EXPECT_THAT(after(1h), ElementsAre(9, 10, 11));
    load(1h, 2);
    EXPECT_EQ(chip_.next_departure(), Time{1h + 1ms});
}

TEST_F(Shaping, TheSinkHearsOfEveryNewDeparture) {
    sink_.take_departures();
    load(0s, 1);
    EXPECT_THAT(sink_.take_departures(), 0);
    load(0s, 1);
    EXPECT_EQ(sink_.take_departures(), 1);
    load(0s, 5);
    EXPECT_EQ(sink_.take_departures(), 0) << "it is at the same time as before";
    chip_.depart(1ms);
    EXPECT_EQ(sink_.take_departures(), 1);
    shape(kB, 0, 1200us);
    EXPECT_EQ(sink_.take_departures(), 1);
    EXPECT_EQ(chip_.next_departure(), Time{1200us});
    chip_.depart(1200us);
    EXPECT_EQ(sink_.take_departures(), 1);
    EXPECT_EQ(chip_.next_departure(), std::nullopt);
}

TEST_F(Shaping, WithoutItsShaperAPortKeepsTheOrder) {
    load(0s, 3);
    sink_.take();
    shape(kB, 0, 100us);
    load(200us, 1);
    EXPECT_THAT(at(kB, sink_.take()), ElementsAre(2, 3, 4));
}

TEST_F(Shaping, WhatWasDueBeforeAChangeLeavesByTheOldSettings) {
    load(0s, 3);
    sink_.take();
    shape(kB, kRate / 10, 1500us);
    EXPECT_THAT(at(kB, sink_.take()), ElementsAre(2));
    EXPECT_EQ(chip_.next_departure(), Time{6500us});
    EXPECT_EQ(chip_.set_scheduler(7ms, kB, {SchedulerMode::kRoundRobin}), Status::kOk);
    EXPECT_THAT(at(kB, sink_.take()), ElementsAre(3));
}

TEST_F(Shaping, APortThatGoesDownLosesWhatWaits) {
    load(0s, 3);
    EXPECT_EQ(chip_.set_link(kB, false), Status::kOk);
    EXPECT_EQ(flushed(), 2U);
    EXPECT_EQ(chip_.next_departure(), std::nullopt);
    EXPECT_EQ(chip_.set_link(kB, true), Status::kOk);
    load(10ms, 2);
    EXPECT_EQ(chip_.set_enabled(kB, false), Status::kOk);
    EXPECT_EQ(flushed(), 3U);
    EXPECT_EQ(chip_.set_enabled(kB, true), Status::kOk);
    sink_.take();
    EXPECT_THAT(after(1h), IsEmpty());
    load(1h, 1);
    EXPECT_THAT(at(kB, sink_.take()), ElementsAre(6)) << "the shaper itself stays";
}

TEST_F(Shaping, ALoopedPortIsNotShaped) {
    load(0s, 3);
    sink_.take();
    EXPECT_EQ(change(kB, [](Port &port) { port.loopback = 1; }), Status::kOk);
    EXPECT_EQ(flushed(), 2U);
    load(0s, 2);
    EXPECT_EQ(chip_.next_departure(), std::nullopt);
    EXPECT_EQ(chip_.port(kB).counters.tx_frames, 3U);
    EXPECT_EQ(chip_.port(kB).counters.rx_frames, 2U);
}

TEST_F(Shaping, AFrameTooLongForThePortTakesNoRoom) {
    ASSERT_EQ(change(kB, [](Port &port) { port.jumbo = false; }), Status::kOk);
    send(kA, kBroadcast + station(1) + Octets(2000, 1), 0s);
    EXPECT_EQ(chip_.port(kB).counters.tx_too_long, 1U);
    EXPECT_EQ(chip_.queues().port(kB).waiting_frames(0), 0U);
    EXPECT_EQ(chip_.queues().port(kB).counters(0).frames, 0U);
}

TEST_F(Shaping, EgressMirrorsCopyWhatLeavesWhenItLeaves) {
    constexpr int kSpy = 20;
    chip_.set_link(kSpy, true);
    ASSERT_EQ(chip_.vlans().remove_ports({1, 1}, PortSet::of(kSpy)), Status::kOk);
    chip_.mirrors().set_enabled(true);
    ASSERT_EQ(chip_.mirrors().set_port(0, kB, kSpy, 4), Status::kOk);
    load(0s, 2);
    EXPECT_THAT(at(kSpy, sink_.take()), ElementsAre(1));
    chip_.depart(1ms);
    EXPECT_THAT(at(kSpy, sink_.take()), ElementsAre(2));
    // The copies of a shaped port wait for their turn, and are not mirrored themselves when they leave.
    shape(kSpy, kRate / 2, 10ms);
    ASSERT_EQ(chip_.mirrors().set_port(1, kSpy, kC, 4), Status::kOk);
    load(10ms, 2);
    sink_.take();
    chip_.depart(1h);
    const std::vector<Sent> sent = sink_.take();
    EXPECT_THAT(at(kB, sent), ElementsAre(4));
    EXPECT_THAT(at(kSpy, sent), ElementsAre(4));
    EXPECT_THAT(at(kC, sent), IsEmpty());
    EXPECT_EQ(chip_.queues().port(kSpy).counters(0).frames, 4U);
}

TEST_F(Shaping, PrioritiesChooseTheQueueAndTheSchedulingTheOrder) {
    const auto load_tagged = [&](Time now, uint32_t priority) {
        Octets tagged = frame(++number_);
        const Octets tag = test::vlan_tag(static_cast<uint16_t>(priority << kPcpShift | 1));
        tagged.insert(tagged.begin() + kAddressBytes, tag.begin(), tag.end());
        chip_.receive(now, kA, tagged);
    };
    for (const uint32_t priority : {0U, 2U, 7U, 2U, 7U}) {
        load_tagged(0s, priority);
    }
    EXPECT_THAT(at(kB, sink_.take()), ElementsAre(1));
    EXPECT_EQ(chip_.queues().port(kB).waiting_frames(2), 2U);
    EXPECT_EQ(chip_.queues().port(kB).waiting_frames(7), 2U);
    EXPECT_THAT(after(2ms), ElementsAre(3, 5));
    ASSERT_EQ(chip_.queue_map().set_queues(2), Status::kOk);
    load_tagged(2ms, 7);
    EXPECT_EQ(chip_.queues().port(kB).waiting_frames(1), 1U) << "the last queue that is left";
    EXPECT_THAT(after(1h), ElementsAre(2, 4, 6)) << "what waits in other queues is not forgotten";
}

TEST_F(Shaping, CopiesOfFramesThatWaitedKeepTheirPriority) {
    constexpr int kSpy = 20;
    chip_.set_link(kSpy, true);
    ASSERT_EQ(chip_.vlans().remove_ports({1, 1}, PortSet::of(kSpy)), Status::kOk);
    chip_.mirrors().set_enabled(true);
    ASSERT_EQ(chip_.mirrors().set_port(0, kB, kSpy, 4), Status::kOk);
    ASSERT_EQ(change(kA, [](Port &port) { port.untagged_priority = 5; }), Status::kOk);
    load(0s, 2);
    chip_.depart(1ms);
    EXPECT_EQ(chip_.queues().port(kSpy).counters(5).frames, 2U);
}

TEST_F(Shaping, TheCpusPortIsShapedLikeAnyOther) {
    shape(kCpu);
    load(0s, 3);
    EXPECT_EQ(chip_.queues().port(kCpu).waiting_frames(0), 2U);
    chip_.depart(1h);
    EXPECT_EQ(chip_.port(kCpu).counters.tx_frames, 3U);
}

TEST_F(Shaping, DirectedFramesWaitLikeOthers) {
    load(0s, 1);
    sink_.take();
    const Octets directed = kBroadcast + station(2) + test::transmit_tag(5, kB) + test::kPayload;
    EXPECT_THAT(send(kCpu, directed, 0s), IsEmpty());
    EXPECT_EQ(chip_.queues().port(kB).waiting_frames(0), 1U);
}

TEST_F(Shaping, PortsThatTheChipHasNotAreRefused) {
    for (const int port : {-1, Switch::kPorts}) {
        EXPECT_EQ(chip_.set_shaper(0s, port, {kRate, 0}), Status::kNoPort);
        EXPECT_EQ(chip_.set_scheduler(0s, port, {}), Status::kNoPort);
    }
}

}  // namespace shaping_test
}  // namespace vdevice::chip
