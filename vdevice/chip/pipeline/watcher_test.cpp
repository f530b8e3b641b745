// What a watcher sees of copies: those that leave, and why the others are lost.
#include "vdevice/chip/pipeline/watcher.h"

#include <gtest/gtest.h>

#include "vdevice/chip/testing/passage_fixture.h"

namespace vdevice::chip {
namespace watcher_test {

using namespace std::chrono_literals;
using namespace test;
using LostCopies = std::vector<test::RecordingWatcher::LostCopy>;
using LeftCopies = std::vector<std::pair<int, Origin>>;

constexpr size_t kOctets = 1000;
constexpr RateLimit kSlow{8, 8};

Octets frame(size_t octets = kOctets) {
    return kBroadcast + station(1) + test::octets16(0x0800) + Octets(octets - kHeaderBytes, 0x5A);
}

class WatcherTest : public test::PassageTest {
  protected:
    WatcherTest() {
        chip_.set_egress(kA, PortSet::of(kB));
        chip_.mirrors().set_enabled(true);
    }
    void shape_b() {
        ASSERT_EQ(chip_.set_shaper(1s, kB, kSlow), Status::kOk);
        send(kA, frame());  // the bucket is empty now
        watcher_.take_left();
    }
};

TEST_F(WatcherTest, CopiesLeaveMirrorsCopiesToo) {
    send(kA, frame());
    EXPECT_EQ(watcher_.take_left(), (LeftCopies{{kB, Origin::kSwitched}}));
    ASSERT_EQ(chip_.mirrors().set_port(0, kA, kC, 2), Status::kOk);
    send(kA, frame());
    EXPECT_EQ(watcher_.take_left(), (LeftCopies{{kC, Origin::kIngressMirror}, {kB, Origin::kSwitched}}));
    chip_.set_link(kC, false);
    send(kA, frame());
    EXPECT_EQ(watcher_.take_left(), (LeftCopies{{kB, Origin::kSwitched}}));
    EXPECT_EQ(watcher_.take_lost(), (LostCopies{{kC, Lost::kMirrorDown, Origin::kIngressMirror}}));
    EXPECT_EQ(chip_.port(kC).counters.tx_mirror_down, 1U);
}

TEST_F(WatcherTest, AQueuedCopyLeavesAfterItsFrameHasPassed) {
    shape_b();
    const Passage p = passage(kA, frame());
    EXPECT_EQ(p.chosen, PortSet::of(kB));
    EXPECT_TRUE(watcher_.take_left().empty());
    chip_.depart(3s);
    EXPECT_EQ(watcher_.take_left(), (LeftCopies{{kB, Origin::kSwitched}}));
    EXPECT_TRUE(watcher_.take_lost().empty());
}

TEST_F(WatcherTest, ACopyIsLostForWantOfRoom) {
    shape_b();
    for (size_t i = 0; i < PortQueues::kQueueOctets / kOctets; ++i) {
        send(kA, frame());
    }
    EXPECT_TRUE(watcher_.take_lost().empty());
    send(kA, frame());
    EXPECT_EQ(watcher_.take_lost(), (LostCopies{{kB, Lost::kNoRoom, Origin::kSwitched}}));
}

TEST_F(WatcherTest, WhatWaitsIsLostWithItsPort) {
    shape_b();
    send(kA, frame());
    send(kA, frame());
    chip_.set_link(kB, false);
    const test::RecordingWatcher::LostCopy flushed{kB, Lost::kFlushed, Origin::kSwitched};
    EXPECT_EQ(watcher_.take_lost(), (LostCopies{flushed, flushed}));
}

TEST_F(WatcherTest, ACopyIsTooLongForItsPort) {
    change(kB, [](Port &port) { port.jumbo = false; });
    send(kA, frame(kMaxPlainFrameBytes + 1));
    EXPECT_EQ(watcher_.take_lost(), (LostCopies{{kB, Lost::kTooLong, Origin::kSwitched}}));
}

TEST_F(WatcherTest, ALoopedFramePassesAgainUntilItIsLoopedTooOften) {
    change(kB, [](Port &port) { port.loopback = 1; });
    send(kA, frame());
    const std::vector<Passage> passages = watcher_.take_passages();
    ASSERT_EQ(passages.size(), 2U);
    EXPECT_FALSE(passages[0].is_looped);
    EXPECT_EQ(passages[1].ingress, kB);
    EXPECT_TRUE(passages[1].is_looped);
    change(kC, [](Port &port) { port.loopback = 1; });
    watcher_.take_left();
    send(kA, frame());
    EXPECT_EQ(watcher_.take_lost(), (LostCopies{{kB, Lost::kLoopback, Origin::kSwitched}}));
}

TEST_F(WatcherTest, AMirrorsCopyOfAQueuedFrameComesBackAsItLeaves) {
    ASSERT_EQ(chip_.mirrors().set_port(0, kB, kC, 4), Status::kOk);
    change(kC, [](Port &port) { port.loopback = 1; });
    shape_b();
    send(kA, frame());
    watcher_.take_passages();
    chip_.depart(3s);
    const std::vector<Passage> passages = watcher_.take_passages();
    ASSERT_EQ(passages.size(), 1U) << "not only with the next frame";
    EXPECT_EQ(passages[0].ingress, kC);
    EXPECT_TRUE(passages[0].is_looped);
}

}  // namespace watcher_test
}  // namespace vdevice::chip
