// Clearing: which counts become 0, and that nothing else changes.
#include <gtest/gtest.h>

#include "vdevice/chip/testing/chip_fixture.h"

namespace vdevice::chip {
namespace clear_counts_test {

using namespace std::chrono_literals;
using namespace test;

const Octets kBody = test::octets16(0x0800) + Octets(60, 0x5A);

class ClearCounts : public test::ChipTest {
  protected:
    /** Frames on two ports, some over a storm limit and an ingress limit, and learned addresses. */
    ClearCounts() {
        for (const int port : {kA, kB}) {
            change(port, [](Port &state) {
                EXPECT_EQ(state.storm.of(StormType::kBroadcast).limiter.set({8, 1}, 1s), Status::kOk);
                EXPECT_EQ(state.policer.set({8, 2}, 1s), Status::kOk);
            });
            for (int i = 0; i < 9; ++i) {
                send(port, kBroadcast + station(static_cast<uint8_t>(port)) + kBody);
            }
        }
    }
};

TEST_F(ClearCounts, OfAPortLeavesTheOthers) {
    const auto storm = [&](int port) { return chip_.port(port).storm.of(StormType::kBroadcast).limiter; };
    const auto level = storm(kA).bucket_at(1s)->level();
    ASSERT_GT(storm(kA).passed() * storm(kA).dropped(), 0U);
    ASSERT_GT(chip_.queues().port(kA).counters(0).frames, 0U);
    chip_.clear_counts(kA);
    EXPECT_EQ(chip_.port(kA).counters.rx_frames, 0U);
    EXPECT_EQ(dropped(kA, Drop::kStorm), 0U);
    EXPECT_EQ(storm(kA).passed() + storm(kA).dropped(), 0U);
    EXPECT_EQ(storm(kA).bucket_at(1s)->level(), level);
    EXPECT_EQ(chip_.port(kA).policer.passed() + chip_.port(kA).policer.dropped(), 0U);
    EXPECT_TRUE(chip_.port(kA).storm.of(StormType::kBroadcast).exceeded) << "software's to clear";
    EXPECT_EQ(chip_.queues().port(kA).counters(0).frames, 0U);
    EXPECT_GT(chip_.port(kB).counters.rx_frames, 0U);
    EXPECT_GT(storm(kB).dropped(), 0U);
    EXPECT_GT(chip_.port(kB).policer.passed(), 0U);
    EXPECT_GT(chip_.queues().port(kB).counters(0).frames, 0U);
    EXPECT_EQ(chip_.macs().counters().learned, 2U);
}

TEST_F(ClearCounts, OfTablesLeavesThePortsAndTheEntries) {
    FieldProcessor &fields = chip_.fields();
    constexpr uint32_t kEntry = 768;
    ASSERT_EQ(fields.meters().set(5, 8, 1s), Status::kOk);
    ASSERT_EQ(fields.table().create(3, kEntry), Status::kOk);
    ASSERT_EQ(fields.table().install(kEntry), Status::kOk);
    fields.meters().passes(5, 64, 1s);
    fields.counters().add(7, 64);
    send(kC, kBroadcast + station(3) + kBody);
    ASSERT_EQ(fields.table().find(kEntry)->matches, 1U);
    chip_.clear_table_counts();
    EXPECT_EQ(chip_.macs().counters().learned, 0U);
    EXPECT_EQ(chip_.macs().size(), 3U);
    EXPECT_EQ(fields.table().find(kEntry)->matches, 0U);
    EXPECT_EQ(fields.meters().find(5)->passed() + fields.meters().find(5)->dropped(), 0U);
    EXPECT_EQ(fields.counters().get(7, CounterType::kFrames), 0U);
    EXPECT_GT(chip_.port(kC).counters.rx_frames, 0U);
}

}  // namespace clear_counts_test
}  // namespace vdevice::chip
