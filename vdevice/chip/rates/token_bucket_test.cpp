// What a token bucket adds to a meter's: a depth of one's own, the time of the next frame, and frames as a measure.
#include "vdevice/chip/rates/token_bucket.h"

#include <gtest/gtest.h>

namespace vdevice::chip {
namespace token_bucket_test {

using namespace std::chrono_literals;

constexpr Counting kOctets = Counting::kOctets;
constexpr Counting kFrames = Counting::kFrames;
constexpr size_t kLength = 1000;

TEST(TokenBucket, TheNextFramePassesWhenItSaysAndNotANanosecondBefore) {
    for (const uint32_t rate : {1U, 7U, 997U, 1000U, 99'999'989U}) {
        TokenBucket bucket{kOctets, {rate, 8}, 5s};
        ASSERT_TRUE(bucket.charge(kLength, 5s));
        const Time ready = bucket.ready_at(kLength);
        const int64_t needed = 8'000'000'000;  // a kilobit is a billion
        EXPECT_EQ((ready - 5s).count(), (needed + rate - 1) / rate) << rate;
        EXPECT_FALSE(bucket.charge(kLength, ready - 1ns)) << rate;
        EXPECT_EQ(bucket.ready_at(kLength), ready) << "what was filled in between changes nothing";
        EXPECT_TRUE(bucket.charge(kLength, ready)) << rate;
    }
}

// A shaper's life: every frame leaves at the moment that was named for it. The last one leaves when the rate has let
// all of them in, rounded up once and not once for each frame, as long as the bucket has room for the remainder.
TEST(TokenBucket, WaitingForEveryFrameKeepsToTheRateExactly) {
    constexpr uint32_t kRate = 997;
    constexpr int64_t kCount = 100'000;
    TokenBucket bucket{kOctets, {kRate, 9}, 0s};  // a frame, and a kilobit of room
    Time now{};
    for (int i = 0; i < kCount; ++i) {
        now = bucket.ready_at(kLength);
        ASSERT_TRUE(bucket.charge(kLength, now)) << i;
    }
    EXPECT_EQ(now.count(), ((kCount * 8 - 9) * 1'000'000'000 + kRate - 1) / kRate);
}

TEST(TokenBucket, ANewLimitHoldsFromNowOnAndLeavesWhatIsIn) {
    TokenBucket bucket{kFrames, {1, 10}, 0s};
    bucket.set_limit({5, 4}, 0s);
    EXPECT_EQ(bucket.level(), 4);
    EXPECT_EQ(bucket.limit(), (RateLimit{5, 4}));
    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(bucket.charge(64, 0s));
    }
    EXPECT_EQ(bucket.ready_at(64), 200ms);
    bucket.set_limit({1, 10}, 100ms);
    EXPECT_EQ(bucket.ready_at(64), 600ms) << "half a frame is in";
}

TEST(TokenBucket, ATimeBeyondAllTimesIsTheLastOne) {
    constexpr size_t kAll = 125'000'000;
    TokenBucket bucket{kOctets, {1, TokenBucket::kMaxDepth}, Time::max() - 1s};
    ASSERT_TRUE(bucket.charge(kAll, Time::max() - 1s));
    EXPECT_EQ(bucket.ready_at(125), Time::max()) << "in a second, to the nanosecond";
    EXPECT_EQ(bucket.ready_at(126), Time::max());
    EXPECT_EQ(bucket.ready_at(124), Time::max() - 8ms);
}

}  // namespace token_bucket_test
}  // namespace vdevice::chip
