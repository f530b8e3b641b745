// Storm control and the ingress policer: each holds exactly its own frames to its limit, on the time handed in.
#include <gtest/gtest.h>

#include "vdevice/chip/testing/chip_fixture.h"

namespace vdevice::chip {
namespace storm_test {

using namespace std::chrono_literals;

using namespace test;

constexpr uint32_t kRate = 1000;            // kbit/s: 125 octets a millisecond
constexpr RateLimit kFourFrames{kRate, 4};  // 500 octets
constexpr size_t kBodyBytes = 125 - kAddressBytes - kCheckSequenceBytes;
const Octets kBody = test::octets16(0x0800) + Octets(kBodyBytes - 2, 0x5A);  // so that a frame is of 125 octets
const Octets kGroup = {0x01, 0x00, 0x5E, 1, 2, 3};
const Octets kUnknown = station(99);
constexpr uint64_t kFour = 4;

class StormTest : public test::ChipTest {
  protected:
    StormTest() { send(kB, kBroadcast + station(2) + kBody); }

    /** How many of so many frames to this address come through. */
    uint64_t pass(const Octets &destination, int frames, Time now, int port = kA) {
        uint64_t passed = 0;
        for (int i = 0; i < frames; ++i) {
            passed += send(port, destination + station(1) + kBody, now).empty() ? 0U : 1U;
        }
        return passed;
    }

    void limit(StormType type, RateLimit limit, int port = kA, Time now = 1s) {
        change(port, [&](Port &state) { EXPECT_EQ(state.storm.of(type).limiter.set(limit, now), Status::kOk); });
    }
    void police(RateLimit limit, int port = kA) {
        change(port, [&](Port &state) { EXPECT_EQ(state.policer.set(limit, 1s), Status::kOk); });
    }
    const PortStorm::Kind &kind(StormType type, int port = kA) { return chip_.port(port).storm.of(type); }
};

struct Storm {
    StormType type;
    Octets destination;
};
const Storm kStorms[] = {
    {StormType::kBroadcast, kBroadcast}, {StormType::kMulticast, kGroup}, {StormType::kUnknownUnicast, kUnknown}};

TEST_F(StormTest, ALimitHoldsItsTypeOnItsPortAndNothingElse) {
    for (const Storm &limited : kStorms) {
        limit(limited.type, kFourFrames);
        for (const Storm &storm : kStorms) {
            EXPECT_EQ(pass(storm.destination, 10, 1s), storm.type == limited.type ? kFour : 10U);
            EXPECT_EQ(pass(storm.destination, 10, 1s, kC), 10U) << "another port";
            EXPECT_EQ(kind(storm.type).exceeded, storm.type == limited.type);
        }
        EXPECT_EQ(pass(station(2), 10, 1s), 10U) << "to a station that is known";
        limit(limited.type, {});
        change(kA, [&](Port &port) { port.storm.of(limited.type).exceeded = false; });
    }
    EXPECT_EQ(dropped(kA, Drop::kStorm), 3 * 6U);
}

TEST_F(StormTest, KeepsToTheRateExactly) {
    limit(StormType::kBroadcast, kFourFrames);
    EXPECT_EQ(pass(kBroadcast, 10, 1s), kFour);
    EXPECT_EQ(pass(kBroadcast, 1, 1s + 999'999ns), 0U) << "a frame a millisecond";
    EXPECT_EQ(pass(kBroadcast, 2, 1s + 1ms), 1U);
    EXPECT_EQ(pass(kBroadcast, 10, 1s + 4ms), 3U);
    EXPECT_EQ(pass(kBroadcast, 10, 10s), kFour);
    EXPECT_EQ(kind(StormType::kBroadcast).limiter.passed(), 2 * kFour + 4);
    EXPECT_EQ(kind(StormType::kBroadcast).limiter.dropped(), 6U + 1 + 1 + 7 + 6);
    EXPECT_EQ(dropped(kA, Drop::kStorm), kind(StormType::kBroadcast).limiter.dropped());
}

TEST_F(StormTest, CountsTheTagAndTheCheckSequence) {
    limit(StormType::kBroadcast, kFourFrames);
    const Octets tagged = kBroadcast + station(1) + test::vlan_tag(1) + kBody;
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(send(kA, tagged).size(), 3U);
    }
    EXPECT_EQ(kind(StormType::kBroadcast).limiter.bucket_at(1s)->level(), 500 - 3 * 129);
    EXPECT_TRUE(send(kA, tagged).empty()) << "113 octets are there, 129 needed";
}

TEST_F(StormTest, CountsFramesIfItIsToldTo) {
    chip_.set_storm_counting(StormType::kBroadcast, Counting::kFrames, 1s);
    EXPECT_EQ(chip_.storm_counting(StormType::kBroadcast), Counting::kFrames);
    EXPECT_EQ(chip_.storm_counting(StormType::kMulticast), Counting::kOctets);
    limit(StormType::kBroadcast, {10, 7});
    EXPECT_EQ(pass(kBroadcast, 10, 1s), 7U);
    EXPECT_TRUE(send(kA, kBroadcast + station(1) + test::octets16(0x0800), 1s + 99'999'999ns).empty());
    EXPECT_EQ(pass(kBroadcast, 10, 1s + 100ms), 1U);
    limit(StormType::kMulticast, kFourFrames);
    EXPECT_EQ(pass(kGroup, 10, 1s), kFour) << "counted in octets as before";
    chip_.set_storm_counting(StormType::kBroadcast, Counting::kOctets, 2s);
    EXPECT_EQ(kind(StormType::kBroadcast).limiter.bucket_at(2s)->depth(), 875U) << "seven kilobits, all there";
    EXPECT_EQ(pass(kBroadcast, 10, 2s), 7U);
}

TEST_F(StormTest, TheJointLimitIsOnAllTypesTogether) {
    limit(StormType::kJoint, kFourFrames);
    EXPECT_EQ(pass(kBroadcast, 2, 1s), 2U);
    EXPECT_EQ(pass(kGroup, 1, 1s), 1U);
    EXPECT_EQ(pass(kUnknown, 2, 1s), 1U);
    EXPECT_EQ(pass(kBroadcast, 1, 1s), 0U);
    EXPECT_EQ(pass(station(2), 10, 1s), 10U);
    EXPECT_TRUE(kind(StormType::kJoint).exceeded);
    EXPECT_FALSE(kind(StormType::kUnknownUnicast).exceeded);
}

TEST_F(StormTest, TheJointLimitLeavesATypeAloneThatIsNotSelected) {
    limit(StormType::kJoint, kFourFrames);
    EXPECT_TRUE(chip_.port(kA).storm.is_in_joint(StormType::kJoint));
    change(kA, [](Port &port) { port.storm.set_in_joint(StormType::kMulticast, false); });
    EXPECT_FALSE(chip_.port(kA).storm.is_in_joint(StormType::kMulticast));
    EXPECT_FALSE(chip_.port(kA).storm.is_in_joint(StormType::kJoint));
    EXPECT_TRUE(chip_.port(kA).storm.is_in_joint(StormType::kBroadcast));
    EXPECT_EQ(pass(kGroup, 10, 1s), 10U);
    EXPECT_EQ(pass(kBroadcast, 10, 1s), kFour);
    change(kA, [](Port &port) { port.storm.set_in_joint(StormType::kJoint, true); });
    EXPECT_EQ(pass(kGroup, 10, 1s), 0U);
}

TEST_F(StormTest, RefusesRatesAndDepthsThatTheChipHasNot) {
    Limiter limiter;
    EXPECT_EQ(limiter.set({TokenBucket::kMaxRate, TokenBucket::kMaxDepth}, 1s), Status::kOk);
    EXPECT_EQ(limiter.set({TokenBucket::kMaxRate + 1, 1}, 1s), Status::kBadArgument);
    EXPECT_EQ(limiter.set({1, TokenBucket::kMaxDepth + 1}, 1s), Status::kBadArgument);
    EXPECT_EQ(limiter.limit(), (RateLimit{TokenBucket::kMaxRate, TokenBucket::kMaxDepth}));
}

TEST_F(StormTest, AChangedLimitIsNoFreshOne) {
    limit(StormType::kBroadcast, kFourFrames);
    EXPECT_EQ(pass(kBroadcast, 10, 1s), kFour);
    limit(StormType::kBroadcast, {kRate, 8});
    EXPECT_EQ(pass(kBroadcast, 10, 1s), 0U);
    EXPECT_EQ(pass(kBroadcast, 10, 1s + 8ms), 8U);
    limit(StormType::kBroadcast, {0, 8});
    EXPECT_EQ(pass(kBroadcast, 10, 1s), 10U);
    EXPECT_EQ(kind(StormType::kBroadcast).limiter.dropped(), 0U) << "what was counted went with the limit";
    limit(StormType::kBroadcast, kFourFrames);
    EXPECT_EQ(pass(kBroadcast, 10, 1s), kFour);
}

TEST_F(StormTest, ThePolicerIsOnAllThatComesIn) {
    police(kFourFrames);
    EXPECT_EQ(pass(kBroadcast, 1, 1s), 1U);
    EXPECT_EQ(pass(station(2), 1, 1s), 1U);
    EXPECT_EQ(pass(kGroup, 1, 1s), 1U);
    EXPECT_EQ(pass(kUnknown, 2, 1s), 1U);
    EXPECT_EQ(pass(station(2), 5, 1s + 4ms), kFour);
    EXPECT_EQ(dropped(kA, Drop::kPoliced), 2U);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(send(kB, station(1) + station(2) + kBody).size(), 1U) << "what goes to the port is not limited";
    }
    EXPECT_EQ(pass(kBroadcast, 10, 1s, kC), 10U);
}

TEST_F(StormTest, ThePolicerKeepsToTheRateExactly) {
    police({997, 2});
    uint64_t passed = 0;
    constexpr int kFrames = 10'000;
    for (int i = 0; i < kFrames; ++i) {
        passed += pass(station(2), 1, 1s + i * 500us);  // twice as many as there is room for
    }
    // A frame is a kilobit: two to begin with, and 997 in each of 4.9995 seconds.
    EXPECT_EQ(passed, 2U + 4'984);
    EXPECT_EQ(chip_.port(kA).policer.passed() + dropped(kA, Drop::kPoliced), static_cast<uint64_t>(kFrames));
}

TEST_F(StormTest, TypesAreFoundByTheirNumbersAndCodes) {
    EXPECT_EQ(find_storm_type(3), StormType::kBroadcast);
    EXPECT_EQ(find_storm_type(2), StormType::kMulticast);
    EXPECT_EQ(find_storm_type(4), StormType::kUnknownUnicast);
    EXPECT_EQ(find_storm_type(1), StormType::kJoint);
    EXPECT_EQ(find_storm_code(1), StormType::kBroadcast);
    EXPECT_EQ(find_storm_code(2), StormType::kMulticast);
    EXPECT_EQ(find_storm_code(4), StormType::kUnknownUnicast);
    EXPECT_EQ(find_storm_code(8), StormType::kJoint);
    for (const uint32_t other : {0U, 5U, 257U, UINT32_MAX}) {
        EXPECT_FALSE(find_storm_type(other)) << other;
    }
    for (const uint32_t other : {0U, 3U, 5U, 9U, 16U, 257U}) {
        EXPECT_FALSE(find_storm_code(other)) << other;
    }
}

}  // namespace storm_test
}  // namespace vdevice::chip
