// Hashes of frames, and how long they are remembered.
#include "switchd/frames/forwarded_frames.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <random>
#include <set>

#include "vdevice/chip/testing/frame_builder.h"

namespace switchd {
namespace forwarded_frames_test {

using namespace std::chrono_literals;
using vdevice::chip::Bytes;
using vdevice::chip::split_frame;
using vdevice::chip::test::Octets;
using vdevice::chip::test::octets16;
using vdevice::chip::test::operator+;

constexpr HashKey kKey{0x0706050403020100, 0x0F0E0D0C0B0A0908};
constexpr uint16_t kVid = 100;

uint64_t hash(const Octets &octets, uint16_t vid = kVid, const HashKey &key = kKey) {
    return hash_of(key, vid, split_frame(octets));
}

TEST(ForwardedFrames, EveryBitOfAFrameAndItsVlanMakeAnotherHash) {
    for (const size_t length : {14U, 60U, 61U, 63U, 64U, 1514U}) {
        Octets frame(length, 0);
        std::set<uint64_t> hashes{hash(frame)};
        for (size_t bit = 0; bit < 8 * length; ++bit) {
            frame[bit / 8] ^= static_cast<uint8_t>(1U << bit % 8);
            hashes.insert(hash(frame));
            frame[bit / 8] ^= static_cast<uint8_t>(1U << bit % 8);
        }
        for (const uint16_t vid : std::initializer_list<uint16_t>{0, 1, 101, 4094}) {
            hashes.insert(hash(frame, vid));
        }
        EXPECT_EQ(hashes.size(), 1 + 8 * length + 4) << length;
        EXPECT_EQ(hash(frame), hash(frame));
    }
}

TEST(ForwardedFrames, ZerosAtTheEndCountToo) {
    std::set<uint64_t> hashes;
    for (size_t length = 14; length < 100; ++length) {
        hashes.insert(hash(Octets(length, 0)));
    }
    EXPECT_EQ(hashes.size(), 86U);
}

TEST(ForwardedFrames, PaddingBehindAPacketDoesNotCount) {
    const Octets addresses = vdevice::chip::test::kBroadcast + vdevice::chip::test::station(1);
    Octets packet4 = octets16(0x0800) + Octets(32, 0);
    packet4[2] = 0x45;
    packet4[5] = 32;
    Octets packet6 = octets16(0x86DD) + Octets(44, 0);
    packet6[2] = 0x60;
    packet6[7] = 4;
    for (Octets packet : {packet4, packet6}) {
        const uint64_t plain = hash(addresses + packet);
        EXPECT_EQ(hash(addresses + packet + Octets(9, 0x55)), plain);
        packet.back() ^= 1;
        EXPECT_NE(hash(addresses + packet), plain);
        packet.back() ^= 1;
        packet[0] ^= 1;
        EXPECT_NE(hash(addresses + packet + Octets(9, 0x55)), hash(addresses + packet)) << "not an IP packet";
    }
}

TEST(ForwardedFrames, APacketThatLiesAboutItsLengthIsAFrameAllTheSame) {
    const Octets addresses = vdevice::chip::test::kBroadcast + vdevice::chip::test::station(1);
    for (const uint16_t type : std::initializer_list<uint16_t>{0x0800, 0x86DD}) {
        std::set<uint64_t> hashes;
        for (size_t length = 0; length < 64; ++length) {
            Octets packet = octets16(type) + Octets(length, 0xFF);
            if (length != 0) {
                packet[2] = type == 0x0800 ? 0x4F : 0x6F;
            }
            hashes.insert(hash(addresses + packet));
        }
        EXPECT_EQ(hashes.size(), 64U);
    }
}

TEST(ForwardedFrames, WithoutTheKeyNoHashIsKnown) {
    const Octets frame(64, 7);
    EXPECT_NE(hash(frame), hash(frame, kVid, {kKey[0] + 1, kKey[1]}));
    EXPECT_NE(hash(frame), hash(frame, kVid, {kKey[0], kKey[1] + 1}));
}

TEST(ForwardedFrames, AFrameIsRememberedForASecond) {
    ForwardedFrames frames;
    EXPECT_FALSE(frames.has(5, 0s));
    frames.remember(5, 10s);
    EXPECT_TRUE(frames.has(5, 10s));
    EXPECT_TRUE(frames.has(5, 11s - 1ns));
    EXPECT_FALSE(frames.has(5, 11s));
    EXPECT_FALSE(frames.has(6, 10s));
}

TEST(ForwardedFrames, TheSameFrameAgainIsRememberedAnew) {
    ForwardedFrames frames;
    frames.remember(5, 10s);
    frames.remember(5, 10500ms);
    EXPECT_TRUE(frames.has(5, 11s));
    EXPECT_FALSE(frames.has(5, 11500ms));
}

TEST(ForwardedFrames, TheOldestGivesWayInAFullRow) {
    ForwardedFrames frames;
    constexpr uint64_t kSameRow = ForwardedFrames::kFrames / 8;
    for (uint64_t i = 0; i < 9; ++i) {
        frames.remember(1 + i * kSameRow, std::chrono::milliseconds{100 + i});
    }
    EXPECT_FALSE(frames.has(1, 200ms));
    for (uint64_t i = 1; i < 9; ++i) {
        EXPECT_TRUE(frames.has(1 + i * kSameRow, 200ms)) << i;
    }
}

TEST(ForwardedFrames, TheQueuesOfAllInterfacesFitIn) {
    constexpr size_t kInQueues = 26 * 500;
    ForwardedFrames frames;
    std::mt19937_64 random{1};
    std::vector<uint64_t> hashes(kInQueues);
    for (uint64_t &each : hashes) {
        each = random();
        frames.remember(each, 1s);
    }
    size_t known = 0;
    for (const uint64_t each : hashes) {
        known += frames.has(each, 1s) ? 1U : 0U;
    }
    EXPECT_GE(known, kInQueues - 5) << "rows of unequal length cost hardly any";
}

}  // namespace forwarded_frames_test
}  // namespace switchd
