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

TEST_F(Shaping, DirectedFramesWaitLikeOthers) {
    load(0s, 1);
    sink_.take();
    const Octets directed = kBroadcast + station(2) + test::transmit_tag(5, kB) + test::kPayload;
    EXPECT_THAT(send(kCpu, directed, 0s), IsEmpty());
    EXPECT_EQ(chip_.queues().port(kB).waiting_frames(0), 1U);
}

/** Octets of a frame on the line, as a time at 1000 Mbit/s. */
constexpr Time kOnLine{(kFrame + kCheckSequenceBytes + Line::kAroundOctets) * 8};

TEST_F(Shaping, PortsKeepToTheirSpeed) {
    shape(kB, 0);
    chip_.keep_to_speeds();
    load(1s, 3);
    const std::vector<Sent> sent = sink_.take();
    EXPECT_THAT(at(kB, sent), ElementsAre(1));
    EXPECT_EQ(std::count_if(sent.begin(), sent.end(), [](const Sent &each) { return each.first == kCpu; }), 3)
        << "the CPU's port has no line";
    EXPECT_EQ(chip_.next_departure(), 1s + kOnLine);
    EXPECT_THAT(after(1s + kOnLine), ElementsAre(2));
    EXPECT_EQ(change(kB, [](Port &port) { EXPECT_EQ(port.phy.set_speed(10), Status::kOk); }), Status::kOk);
    EXPECT_THAT(after(1s + 2 * kOnLine), ElementsAre(3)) << "the frame before it was on the line already";
    load(1s + 2 * kOnLine, 1);
    EXPECT_THAT(after(1s + 101 * kOnLine), IsEmpty());
    EXPECT_THAT(after(1s + 102 * kOnLine), ElementsAre(4));
}

TEST_F(Shaping, PortsThatTheChipHasNotAreRefused) {
    for (const int port : {-1, Switch::kPorts}) {
        EXPECT_EQ(chip_.set_shaper(0s, port, {kRate, 0}), Status::kNoPort);
        EXPECT_EQ(chip_.set_scheduler(0s, port, {}), Status::kNoPort);
    }
}

}  // namespace shaping_test
}  // namespace vdevice::chip
