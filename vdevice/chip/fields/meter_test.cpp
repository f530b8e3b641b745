// Meters keep flows to their rate, exactly and for as long as one likes, on the time handed in.
#include "vdevice/chip/fields/meter.h"

#include <gtest/gtest.h>

namespace vdevice::chip {
namespace meter_test {

using namespace std::chrono_literals;

constexpr uint32_t kMegabit = 1000;
constexpr size_t kFrame = 1000;

/** Offers a frame of kFrame octets at every step and gives the octets that passed. */
uint64_t run(Meter &meter, Time from, Time step, int frames) {
    uint64_t passed = 0;
    for (int i = 0; i < frames; ++i) {
        passed += meter.charge(kFrame, from + i * step) ? kFrame : 0;
    }
    return passed;
}

// A million seconds of a flow of twice the rate: not an octet more or less than the rate and the first bucketful.
TEST(Meter, IsExactOverALongTime) {
    constexpr uint32_t kRate = 997;  // kbit/s, no divisor of anything here
    Meter meter{kRate, 0s};
    constexpr int kFrames = 1'000'000;
    constexpr Time kStep = 3'999'983ns;  // a kilobyte each: some 2000 kbit/s
    const uint64_t passed = run(meter, 0s, kStep, kFrames);
    const auto let_in =
        static_cast<uint64_t>(kRate) * static_cast<uint64_t>(((kFrames - 1) * kStep).count()) / 8'000'000;
    EXPECT_LE(passed, let_in + meter.depth());
    EXPECT_GT(passed + kFrame, let_in);
    EXPECT_GE(passed, let_in + meter.depth() - kFrame) << "the bucket was never full again";
}

TEST(Meter, ANewRateHoldsFromNowOn) {
    Meter meter{kMegabit, 0s};
    run(meter, 0s, 0s, 100);              // leaves 84 octets
    meter.set_rate(100 * kMegabit, 8ms);  // what the old rate let in: 1000
    EXPECT_EQ(meter.rate(), 100 * kMegabit);
    EXPECT_TRUE(meter.charge(1084, 8ms));
    EXPECT_FALSE(meter.charge(1, 8ms));
    EXPECT_TRUE(meter.charge(12500, 9ms));
    EXPECT_FALSE(meter.charge(1, 9ms));
    EXPECT_FALSE(meter.charge(12501, 10ms));
    meter.set_rate(kMegabit, 10s);
    EXPECT_TRUE(meter.charge(3084, 10s));
    EXPECT_FALSE(meter.charge(1, 10s)) << "a full bucket was poured into a smaller one";
}

TEST(MeterTable, MakesChangesAndTakesAway) {
    MeterTable table;
    EXPECT_FALSE(table.find(63));
    EXPECT_TRUE(table.passes(63, kFrame, 0s)) << "no meter limits nothing";
    EXPECT_EQ(table.set(63, kMegabit, 0s), Status::kOk);
    EXPECT_EQ(table.set(63, 2 * kMegabit, 0s), Status::kOk);
    ASSERT_TRUE(table.find(63));
    EXPECT_EQ(table.find(63)->rate(), 2 * kMegabit);
    EXPECT_TRUE(table.remove(63));
    EXPECT_FALSE(table.remove(63));
    EXPECT_EQ(table.set(64, kMegabit, 0s), Status::kMeterRange);
    EXPECT_EQ(table.set(0, 0, 0s), Status::kBadArgument);
    EXPECT_EQ(table.set(0, Meter::kMaxRate + 1, 0s), Status::kBadArgument);
    EXPECT_FALSE(table.find(0));
}

TEST(MeterTable, CountsCheckSequenceAndGapUntilTheGapIsExcluded) {
    MeterTable table;
    ASSERT_EQ(table.set(0, kMegabit, 0s), Status::kOk);
    ASSERT_EQ(table.set(1, kMegabit, 0s), Status::kOk);
    EXPECT_TRUE(table.passes(0, 3084 - 24, 0s));
    EXPECT_FALSE(table.passes(0, 0, 0s)) << "nothing left, not for the gap alone";
    table.exclude_gap();
    EXPECT_TRUE(table.passes(1, 3084 - 4 - 4, 0s));
    EXPECT_TRUE(table.passes(1, 0, 0s)) << "four octets left for a check sequence";
    EXPECT_FALSE(table.passes(1, 0, 0s));
    table.clear();
    EXPECT_FALSE(table.find(0));
    EXPECT_FALSE(table.counts_gap()) << "what is counted is no meter's own";
}

}  // namespace meter_test
}  // namespace vdevice::chip
