// Frames that a port on a real interface loses, and that each of them is counted.
#include <cstdlib>

#include "vdevice/io/testing/cable_fixture.h"

namespace vdevice::io {
namespace packet_port_losses_test {

using namespace test;

using LossTest = CableTest;

TEST_P(LossTest, AnInterfaceThatWasDownTakesTheFirstFrameAgain) {
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

TEST_P(LossTest, ARefusedFrameDoesNotHoldUpTheOthers) {
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
TEST_P(LossTest, WhatAFullQueueOfTheInterfaceRefusesIsCounted) {
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

TEST_P(LossTest, WhatWaitsWhenThePortIsClosedIsLostAndCounted) {
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

INSTANTIATE_TEST_SUITE_P(Rings, LossTest, testing::Values(ReceiveRing::kSlots, kSmallRing, kNoRing));

using SmallRingTest = CableTest;

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

}  // namespace packet_port_losses_test
}  // namespace vdevice::io
