// A hundred thousand frames on each kind of bad cable, with exact bounds, on the time handed in.
#include "vdevice/cable/bad_cable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>

namespace vdevice::cable {
namespace bad_cable_test {

using namespace std::chrono_literals;
using chip::Time;

constexpr uint32_t kFrames = 100'000;
constexpr uint32_t kSomeFrames = 5'000;
constexpr size_t kOctets = 60;
constexpr int kPort = 3;

struct Arrival {
    uint32_t number; /**< of the frame, as its first octets say */
    Time due;
    std::vector<uint8_t> octets;
};

std::vector<uint8_t> frame_of(uint32_t number, size_t octets = kOctets) {
    std::vector<uint8_t> frame(octets);
    chip::write32(frame.data(), number);
    return frame;
}

class BadCableTest : public testing::Test {
  protected:
    OneWay way(Direction direction = Direction::kIn) const { return {conditions_, kPort, direction}; }

    static void take(OneWay &way, uint32_t number, Time now, size_t octets = kOctets) {
        const std::vector<uint8_t> frame = frame_of(number, octets);
        way.take({{}, frame}, now);
    }
    static void deliver(OneWay &way, Time now, std::vector<Arrival> &arrivals) {
        way.deliver(now, [&](chip::Bytes octets, Time due) {
            arrivals.push_back({chip::read32(octets, 0), due, {octets.begin(), octets.end()}});
        });
    }
    static std::vector<Arrival> delivered(OneWay &way, Time now) {
        std::vector<Arrival> arrivals;
        deliver(way, now, arrivals);
        return arrivals;
    }
    /** Sends so many frames, each so long after the one before it, and lets everything arrive. */
    static std::vector<Arrival> all(OneWay &way, Time gap, uint32_t frames = kFrames) {
        std::vector<Arrival> arrivals;
        for (uint32_t number = 0; number < frames; ++number) {
            take(way, number, number * gap);
            deliver(way, number * gap, arrivals);
        }
        deliver(way, Time::max(), arrivals);
        expect_sum(way);
        return arrivals;
    }
    static void expect_sum(const OneWay &way) {
        const Counts &counts = way.counts();
        EXPECT_EQ(counts.frames + counts.duplicated,
                  counts.passed + counts.lost + counts.no_room + counts.cut + way.waiting());
    }
    static void expect_share(uint64_t count, double share) {
        const double sigma = std::sqrt(kFrames * share * (1 - share));
        EXPECT_NEAR(static_cast<double>(count), kFrames * share, 4 * sigma);
    }
    static std::vector<uint32_t> numbers(const std::vector<Arrival> &arrivals) {
        std::vector<uint32_t> numbers;
        for (const Arrival &arrival : arrivals) {
            numbers.push_back(arrival.number);
        }
        return numbers;
    }

    Conditions conditions_;
};

TEST_F(BadCableTest, LosesItsShare) {
    conditions_.loss = 50'000;
    OneWay way = this->way();
    const std::vector<Arrival> arrivals = all(way, 1us);
    EXPECT_EQ(way.counts().frames, kFrames);
    EXPECT_EQ(way.counts().passed, arrivals.size());
    EXPECT_EQ(way.counts().lost, kFrames - arrivals.size());
    expect_share(way.counts().lost, 0.05);
}

TEST_F(BadCableTest, DuplicatesItsShareAtOnce) {
    conditions_.duplicate = 10'000;
    OneWay way = this->way();
    const std::vector<Arrival> arrivals = all(way, 1us);
    expect_share(way.counts().duplicated, 0.01);
    ASSERT_EQ(arrivals.size(), kFrames + way.counts().duplicated);
    uint64_t twice = 0;
    for (size_t i = 1; i < arrivals.size(); ++i) {
        ASSERT_LE(arrivals[i].number - arrivals[i - 1].number, 1U);
        if (arrivals[i].number == arrivals[i - 1].number) {
            ++twice;
            EXPECT_EQ(arrivals[i].octets, arrivals[i - 1].octets);
            EXPECT_EQ(arrivals[i].due, arrivals[i - 1].due);
        }
    }
    EXPECT_EQ(twice, way.counts().duplicated);
}

TEST_F(BadCableTest, ALostFrameIsNotDuplicated) {
    conditions_.loss = conditions_.duplicate = Conditions::kWhole;
    OneWay way = this->way();
    EXPECT_TRUE(all(way, 1us, kSomeFrames).empty());
    EXPECT_EQ(way.counts().duplicated, 0U);
}

TEST_F(BadCableTest, ChangesExactlyOneBitOfItsShare) {
    conditions_.corrupt = 100'000;
    OneWay way = this->way();
    const std::vector<Arrival> arrivals = all(way, 1us);
    ASSERT_EQ(arrivals.size(), kFrames);
    std::vector<uint64_t> flips(kOctets * 8);
    uint64_t changed = 0;
    for (uint32_t number = 0; number < kFrames; ++number) {
        const std::vector<uint8_t> sent = frame_of(number);
        int bits = 0;
        for (size_t i = 0; i < kOctets; ++i) {
            const auto difference = static_cast<uint8_t>(sent[i] ^ arrivals[number].octets[i]);
            bits += std::popcount(difference);
            flips[i * 8 + static_cast<size_t>(std::countr_zero(difference)) % 8] += difference != 0 ? 1 : 0;
        }
        ASSERT_LE(bits, 1);
        changed += static_cast<uint64_t>(bits);
    }
    EXPECT_EQ(changed, way.counts().corrupted);
    expect_share(changed, 0.1);
    const double each = static_cast<double>(changed) / static_cast<double>(flips.size());
    for (const uint64_t count : flips) {
        EXPECT_NEAR(static_cast<double>(count), each, 6 * std::sqrt(each)) << "every bit has its turn";
    }
}

TEST_F(BadCableTest, DelaysEveryFrameByTheSame) {
    conditions_.delay = 20'000'000;
    OneWay way = this->way();
    take(way, 1, 5ms);
    EXPECT_EQ(way.next(), 25ms);
    EXPECT_TRUE(delivered(way, 25ms - 1ns).empty());
    EXPECT_EQ(way.waiting(), 1U);
    EXPECT_EQ(delivered(way, 25ms).size(), 1U);
    EXPECT_EQ(way.next(), std::nullopt);
    expect_sum(way);
}

TEST_F(BadCableTest, JitterIsUniformAroundTheDelay) {
    conditions_.delay = 20'000'000;
    conditions_.jitter = 2'000'000;
    OneWay way = this->way();
    double sum = 0;
    Time least = Time::max();
    Time most{};
    const std::vector<Arrival> arrivals = all(way, 4001us);  // so far apart that none meets the one before it
    ASSERT_EQ(arrivals.size(), kFrames);
    for (const Arrival &arrival : arrivals) {
        const Time took = arrival.due - arrival.number * Time{4001us};
        least = std::min(least, took);
        most = std::max(most, took);
        sum += std::chrono::duration<double>(took).count();
    }
    EXPECT_TRUE(least >= 18ms && least < 18ms + 4us) << least.count();
    EXPECT_TRUE(most <= 22ms && most > 22ms - 4us) << most.count();
    const double sigma = 0.004 / std::sqrt(12.0) / std::sqrt(static_cast<double>(kFrames));
    EXPECT_NEAR(sum / static_cast<double>(kFrames), 0.020, 4 * sigma);
}

TEST_F(BadCableTest, FramesKeepTheirOrder) {
    conditions_.delay = conditions_.jitter = 5'000'000;
    OneWay way = this->way();
    const std::vector<Arrival> arrivals = all(way, 1us);
    ASSERT_EQ(arrivals.size(), kFrames);
    for (uint32_t number = 0; number < kFrames; ++number) {
        ASSERT_EQ(arrivals[number].number, number);
        ASSERT_GE(arrivals[number].due, number * Time{1us});
        ASSERT_LE(arrivals[number].due, number * Time{1us} + 10ms);
    }
}

TEST_F(BadCableTest, KeepsToItsRateAsALineDoes) {
    constexpr size_t kLong = 1514;
    constexpr Time kOnLine{(kLong + 24) * 8 * 10};  // a bit of 100 Mbit/s takes 10 ns
    conditions_.rate = 100'000;
    OneWay way = this->way();
    for (uint32_t number = 0; number < 2000; ++number) {
        take(way, number, 1s, kLong);
    }
    const std::vector<Arrival> arrivals = delivered(way, Time::max());
    ASSERT_EQ(arrivals.size(), 2000U);
    for (const Arrival &arrival : arrivals) {
        ASSERT_EQ(arrival.due, 1s + (arrival.number + 1) * kOnLine);
    }
    take(way, 0, 100s, 20);
    EXPECT_EQ(way.next(), 100s + Time{84 * 8 * 10}) << "an idle line saves nothing up, a short frame is padded";
}

TEST_F(BadCableTest, TheDelayBeginsWhenTheFrameHasLeftTheLine) {
    conditions_.rate = 1;
    conditions_.delay = 1'000'000'000;
    OneWay way = this->way();
    take(way, 0, 0s, 101);
    EXPECT_EQ(way.next(), 2s);
}

TEST_F(BadCableTest, DropsWhatItHasNoRoomFor) {
    conditions_.delay = 10'000'000'000;
    for (const size_t octets : {size_t{60}, size_t{9600}}) {
        OneWay way = this->way();
        for (uint32_t number = 0; number < 20'000; ++number) {
            take(way, number, Time{number}, octets);
        }
        const size_t room = std::min(OneWay::kMostFrames, OneWay::kMostOctets / octets);
        EXPECT_EQ(way.waiting(), room);
        EXPECT_EQ(way.counts().no_room, 20'000 - room);
        expect_sum(way);
        EXPECT_EQ(delivered(way, Time::max()).back().number, room - 1);
        take(way, 7, 20s, octets);
        EXPECT_EQ(way.waiting(), 1U) << "there is room again";
    }
}

TEST_F(BadCableTest, ACutLineLosesWhatWaits) {
    conditions_.delay = 1'000'000;
    OneWay way = this->way();
    take(way, 1, 0ms);
    take(way, 2, 0ms);
    way.cut();
    EXPECT_TRUE(delivered(way, Time::max()).empty());
    EXPECT_EQ(way.counts().cut, 2U);
    expect_sum(way);
    take(way, 3, 1ms);
    EXPECT_THAT(numbers(delivered(way, 2ms)), testing::ElementsAre(3));
}

TEST_F(BadCableTest, TheSameSeedHasTheSameFates) {
    conditions_.loss = conditions_.duplicate = conditions_.corrupt = 100'000;
    conditions_.delay = conditions_.jitter = 1'000'000;
    const auto lived = [&](Direction direction) {
        OneWay way = this->way(direction);
        std::vector<std::pair<Time, std::vector<uint8_t>>> life;
        for (Arrival &arrival : all(way, 1us, kSomeFrames)) {
            life.emplace_back(arrival.due, std::move(arrival.octets));
        }
        return life;
    };
    const auto life = lived(Direction::kIn);
    EXPECT_EQ(life, lived(Direction::kIn));
    EXPECT_NE(life, lived(Direction::kOut));
    ++conditions_.seed;
    EXPECT_NE(life, lived(Direction::kIn));
}

TEST_F(BadCableTest, AnotherConditionDoesNotChangeWhichFramesAreLost) {
    conditions_.loss = 50'000;
    OneWay plain = way();
    const std::vector<uint32_t> passed = numbers(all(plain, 1us, kSomeFrames));
    conditions_.corrupt = 10;
    conditions_.delay = conditions_.jitter = 1'000'000;
    conditions_.rate = 1'000'000;
    OneWay mixed = way();
    std::vector<uint32_t> other;
    for (uint32_t number = 0; number < kSomeFrames; ++number) {
        const uint64_t before = mixed.counts().lost;
        take(mixed, number, number * Time{1us});
        if (mixed.counts().lost == before) {
            other.push_back(number);
        }
        delivered(mixed, number * Time{1us});
    }
    EXPECT_EQ(passed, other);
}

}  // namespace bad_cable_test
}  // namespace vdevice::cable
