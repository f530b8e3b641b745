// Ports on real interfaces, with rings of several sizes and without one: which frames arrive, in which order, and
// what a full ring does. Needs a network namespace of its own; the test run makes it.
#include "vdevice/io/packet_port.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <cstdlib>
#include <random>
#include <thread>

#include "vdevice/chip/testing/frame_builder.h"
#include "vdevice/io/interfaces.h"

namespace vdevice::io {
namespace packet_port_test {

using chip::test::Octets;
using Frames = std::vector<Octets>;
using chip::test::octets16;
using chip::test::octets32;
using chip::test::operator+;

constexpr uint32_t kMark = 77;
constexpr char kNear[] = "near0";
constexpr char kFar[] = "far0";
constexpr size_t kNoRing = 0;
constexpr size_t kSmallRing = ReceiveRing::kSlotsInBlock;
constexpr int kPatience = 2000;  // milliseconds, far longer than a frame takes
constexpr uint16_t kType = 0x88B5;

/** A cable; its near end is a port with a ring of so many slots. */
class PacketPortTest : public testing::TestWithParam<size_t> {
  protected:
    PacketPortTest() {
        for (const char *name : {kNear, kFar}) {
            make_transparent(name);
            set_interface_up(name, true);
        }
        near_.open();
        far_.open();
        expect_link();
        EXPECT_EQ(near_.has_ring(), GetParam() != kNoRing);
    }

    static Octets frame(uint32_t number, size_t octets = 64, const Octets &tags = {}) {
        Octets made = chip::test::station(1) + chip::test::station(2) + tags + octets16(kType) + octets32(number);
        made.resize(std::max(made.size(), octets), static_cast<uint8_t>(number));
        return made;
    }
    void send(const Octets &frame) { send_by(far_, frame); }
    static void send_by(PacketPort &port, const Octets &frame) {
        port.queue(chip::split_frame(frame));
        port.flush();
    }
    static bool is_readable(const PacketPort &port, int patience) {
        pollfd asked{port.fd(), POLLIN, 0};
        return poll(&asked, 1, patience) == 1;
    }
    /** The frames of one call of receive(). */
    Frames receive() {
        Frames frames;
        near_.receive(batch_, [&](chip::Bytes frame, WallTime arrival) {
            frames.emplace_back(frame.begin(), frame.end());
            arrivals_.push_back(arrival);
        });
        return frames;
    }
    /** So many frames, or fewer if no more come. */
    Frames receive(size_t count) {
        Frames frames;
        while (frames.size() < count && is_readable(near_, kPatience)) {
            for (Octets &frame : receive()) {
                frames.push_back(std::move(frame));
            }
        }
        return frames;
    }
    void expect_passes(const Octets &frame) {
        send(frame);
        EXPECT_EQ(receive(1), Frames{frame}) << frame.size();
    }

    /** Waits until frames pass: the kernel needs a while after an interface was raised. */
    void expect_link() {
        constexpr int kTries = 100;
        int tries = 0;
        do {
            send(frame(0));
        } while (!is_readable(near_, kPatience / kTries) && ++tries < kTries);
        EXPECT_LT(tries, kTries);
        receive();
    }

    Cables cables_{{{kNear, kFar}}, kMark};
    PacketPort near_{kNear, GetParam()};
    PacketPort far_{kFar, kNoRing};
    ReceiveBatch batch_;
    std::vector<WallTime> arrivals_; /**< of all frames */
};

TEST_P(PacketPortTest, FramesComeInOrderRoundTheRing) {
    std::mt19937 random{1};
    uint32_t number = 0;
    while (number < 3 * ReceiveRing::kSlots) {
        Frames burst(1 + random() % kSmallRing);
        for (Octets &each : burst) {
            each = frame(number++, 60 + random() % 1500);
            send(each);
        }
        ASSERT_EQ(receive(burst.size()), burst) << number;
    }
}

TEST_P(PacketPortTest, FramesOfEveryLengthAroundThatOfASlot) {
    for (size_t octets = ReceiveRing::kSlotBytes - 120; octets < ReceiveRing::kSlotBytes + 8; ++octets) {
        expect_passes(frame(static_cast<uint32_t>(octets), octets));
    }
}

TEST_P(PacketPortTest, LongFramesKeepTheirPlaceAmongShortOnes) {
    constexpr size_t kLongest = kMtu + chip::kHeaderBytes;
    Frames burst;
    for (const size_t octets : std::initializer_list<size_t>{64, 9000, 1514, 64, kLongest, 2100, 64}) {
        burst.push_back(frame(static_cast<uint32_t>(burst.size()), octets));
        send(burst.back());
    }
    EXPECT_EQ(receive(burst.size()), burst);
}

TEST_P(PacketPortTest, TagsAreBackInTheirPlace) {
    const Octets customer = octets16(0x8100) + octets16(0x6123);
    const Octets service = octets16(0x88A8) + octets16(0x0FFE);
    const Octets old_service = octets16(0x9100) + octets16(0x0005);
    for (const Octets &tags :
         {customer, service, old_service, service + customer, customer + customer, octets16(0x8100) + octets16(0)}) {
        for (const size_t octets : std::initializer_list<size_t>{64, 1518, 2048, 9000}) {
            expect_passes(frame(7, octets, tags));
        }
    }
}

TEST_P(PacketPortTest, OwnFramesDoNotComeBack) {
    send_by(near_, frame(1));
    const Octets other = frame(2);
    send(other);
    EXPECT_EQ(receive(1), Frames{other});
    EXPECT_TRUE(receive().empty());
}

TEST_P(PacketPortTest, OneCallLeavesTimeForOtherPorts) {
    constexpr size_t kFrames = 150;
    if (GetParam() == kSmallRing) {
        GTEST_SKIP() << "so many frames do not fit in";
    }
    Frames sent;
    for (uint32_t number = 0; number < kFrames; ++number) {
        sent.push_back(frame(number));
        send(sent.back());
    }
    Frames received = receive();
    EXPECT_LT(received.size(), kFrames);
    EXPECT_GT(received.size(), kFrames / 3);
    EXPECT_TRUE(is_readable(near_, 0)) << "the rest is not forgotten";
    for (Octets &each : receive(kFrames - received.size())) {
        received.push_back(std::move(each));
    }
    EXPECT_EQ(received, sent);
    EXPECT_FALSE(is_readable(near_, 0));
}

TEST_P(PacketPortTest, FramesTellWhenTheyCameIn) {
    if (GetParam() == kNoRing) {
        GTEST_SKIP() << "only a ring tells";
    }
    arrivals_.clear();
    std::vector<WallTime> sent;
    for (const size_t octets : std::initializer_list<size_t>{64, 9000, 64}) {
        sent.emplace_back(std::chrono::system_clock::now());
        send(frame(1, octets));
        std::this_thread::sleep_for(std::chrono::milliseconds{20});
    }
    sent.emplace_back(std::chrono::system_clock::now());
    receive(3);
    ASSERT_EQ(arrivals_.size(), 3U);
    for (size_t i = 0; i < arrivals_.size(); ++i) {
        EXPECT_LE(sent[i], arrivals_[i]);
        EXPECT_LE(arrivals_[i], sent[i + 1]);
    }
}

TEST_P(PacketPortTest, AnInterfaceThatGoesDownIsHeardOnce) {
    set_interface_up(kNear, false);
    EXPECT_TRUE(is_readable(near_, kPatience));
    EXPECT_TRUE(receive().empty());
    EXPECT_FALSE(is_readable(near_, 0)) << "the loop would spin";
    set_interface_up(kNear, true);
    expect_link();
    expect_passes(frame(1));
}

TEST_P(PacketPortTest, AnInterfaceThatWasDownTakesTheFirstFrameAgain) {
    set_interface_up(kFar, false);
    send(frame(1));
    EXPECT_EQ(far_.send_failures(), 1U);
    set_interface_up(kFar, true);
    expect_link();
    const uint64_t before = far_.send_failures();
    EXPECT_LE(before, 1U) << "of an interface that is up";
    expect_passes(frame(2));
    EXPECT_EQ(far_.send_failures(), before);
}

TEST_P(PacketPortTest, FramesFromBeforeTheInterfaceWentDownKeepTheirPlace) {
    const Octets before = frame(1, 9000);
    const Octets after = frame(2, 9000);
    send(before);
    set_interface_up(kNear, false);
    EXPECT_EQ(receive(), Frames{before});
    set_interface_up(kNear, true);
    expect_link();
    expect_passes(after);
}

TEST_P(PacketPortTest, ARefusedFrameDoesNotHoldUpTheOthers) {
    const Octets before = frame(1);
    const Octets too_long = frame(2, 9500);
    const Octets behind = frame(3);
    for (const Octets *each : {&before, &too_long, &behind}) {
        far_.queue(chip::split_frame(*each));
    }
    far_.flush();
    EXPECT_EQ(far_.send_failures(), 1U);
    EXPECT_EQ(receive(2), (Frames{before, behind}));
}

// A queue of the kernel that holds some hundred frames and passes them on slowly.
TEST_P(PacketPortTest, WhatAFullQueueOfTheInterfaceRefusesIsCounted) {
    if (std::system("tc qdisc add dev far0 root tbf rate 80kbit burst 1600 limit 6400") != 0) {
        GTEST_SKIP() << "this kernel has no such queue";
    }
    constexpr size_t kFrames = 500;
    for (uint32_t number = 0; number < kFrames; ++number) {
        far_.queue(chip::split_frame(frame(number)));
    }
    far_.flush();
    const size_t taken = kFrames - far_.send_failures();
    EXPECT_LT(taken, kFrames / 2);
    EXPECT_GT(taken, kFrames / 10);
    Frames received;
    while (received.size() < taken && is_readable(near_, kPatience)) {
        for (Octets &each : receive()) {
            received.push_back(std::move(each));
        }
    }
    EXPECT_EQ(received.size() + near_.receive_losses(), taken);
    EXPECT_FALSE(is_readable(near_, kPatience / 100));
}

TEST_P(PacketPortTest, AClosedPortOpensAgain) {
    near_.close();
    send(frame(1));
    near_.open();
    EXPECT_EQ(near_.has_ring(), GetParam() != kNoRing);
    expect_passes(frame(2));
    EXPECT_EQ(near_.receive_losses(), 0U);
}

TEST_P(PacketPortTest, WhatWaitsWhenThePortIsClosedIsLostAndCounted) {
    for (const size_t octets : std::initializer_list<size_t>{64, 9000, 64}) {
        send(frame(1, octets));
    }
    for (const uint32_t number : std::initializer_list<uint32_t>{1, 2}) {
        near_.queue(chip::split_frame(frame(number)));
    }
    near_.close();
    EXPECT_EQ(near_.receive_losses(), 3U);
    EXPECT_EQ(near_.send_failures(), 2U);
    near_.close();
    near_.open();
    expect_passes(frame(2));
    EXPECT_EQ(near_.receive_losses(), 3U);
    EXPECT_EQ(near_.send_failures(), 2U);
}

INSTANTIATE_TEST_SUITE_P(Rings, PacketPortTest, testing::Values(ReceiveRing::kSlots, kSmallRing, kNoRing));

using SmallRingTest = PacketPortTest;

TEST_P(SmallRingTest, WhatDoesNotFitInIsLostAndTheRestComes) {
    Frames sent;
    for (uint32_t number = 0; number < 3 * kSmallRing; ++number) {
        sent.push_back(frame(number, number % 4 == 0 ? 9000 : 64));
        send(sent.back());
    }
    const Frames first(sent.begin(), sent.begin() + kSmallRing);
    EXPECT_EQ(receive(kSmallRing), first);
    EXPECT_TRUE(receive().empty()) << "none of the lost long frames waits in the socket";
    EXPECT_EQ(near_.receive_losses(), sent.size() - kSmallRing);
    for (uint32_t number = 0; number < 2 * kSmallRing; ++number) {
        expect_passes(frame(number, number % 4 == 0 ? 9000 : 64));
    }
}

// The socket has room for fewer long frames than the ring has slots.
TEST_P(SmallRingTest, WhatTheSocketHasNoRoomForIsLostAlone) {
    const int least = 1;
    ASSERT_EQ(setsockopt(near_.fd(), SOL_SOCKET, SO_RCVBUF, &least, sizeof(least)), 0);
    Frames sent;
    for (uint32_t number = 0; number < kSmallRing; ++number) {
        sent.push_back(frame(number, number % 2 == 0 ? 9000 : 64));
        send(sent.back());
    }
    const Frames received = receive(kSmallRing / 2 + 1);
    Frames expected{sent.front()};
    for (size_t i = 1; i < sent.size(); i += 2) {
        expected.push_back(sent[i]);
    }
    EXPECT_EQ(received, expected);
    EXPECT_EQ(near_.receive_losses(), sent.size() - expected.size());
}

INSTANTIATE_TEST_SUITE_P(Rings, SmallRingTest, testing::Values(kSmallRing));

}  // namespace packet_port_test
}  // namespace vdevice::io
