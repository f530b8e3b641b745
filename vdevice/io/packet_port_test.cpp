// Ports on real interfaces, with rings of several sizes and without one: which frames arrive, in which order, and when.
#include "vdevice/io/packet_port.h"

#include <random>
#include <thread>

#include "vdevice/io/testing/cable_fixture.h"

namespace vdevice::io {
namespace packet_port_test {

using namespace test;

using PacketPortTest = CableTest;

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

TEST_P(PacketPortTest, AClosedPortOpensAgain) {
    near_.close();
    send(frame(1));
    near_.open();
    EXPECT_EQ(near_.has_ring(), GetParam() != kNoRing);
    expect_passes(frame(2));
    EXPECT_EQ(near_.receive_losses(), 0U);
}

INSTANTIATE_TEST_SUITE_P(Rings, PacketPortTest, testing::Values(ReceiveRing::kSlots, kSmallRing, kNoRing));

}  // namespace packet_port_test
}  // namespace vdevice::io
