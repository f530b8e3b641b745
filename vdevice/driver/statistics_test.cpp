// Port counters: frames and octets that really passed, by number, and cleared.
#include <map>

#include "vdevice/chip/testing/document.h"
#include "vdevice/chip/testing/frame_builder.h"
#include "vdevice/driver/statistics.h"
#include "vdevice/driver/testing/driver_fixture.h"

namespace vdevice::driver {
namespace statistics_test {

using namespace chip::test;

constexpr int32_t kA = 4;
constexpr int32_t kB = 5;
constexpr uint64_t kShort = 60;  // addresses, kPayload
constexpr uint64_t kUntouched = 99;

class DriverStatistics : public test::DriverTest {
  protected:
    DriverStatistics() {
        chip_.set_link(kA, true);
        chip_.set_link(kB, true);
    }
    uint64_t get(int32_t port, uint32_t selector) {
        uint64_t value = kUntouched;
        uint64_t other = kUntouched;
        EXPECT_EQ(driver_.user_port_packetstat_get(0, 0, port, selector, &value), kOk);
        EXPECT_EQ(driver_.user_stat_port_get(0, 0, port, selector, &other), kOk);
        EXPECT_EQ(value, other) << "one table for both families";
        return value;
    }
    std::map<uint32_t, uint64_t> all(int32_t port) {
        std::map<uint32_t, uint64_t> values;
        for (const Statistic &statistic : statistic_table()) {
            if (const uint64_t value = get(port, statistic.selector); value != 0) {
                values[statistic.selector] = value;
            }
        }
        return values;
    }
    void send_some() {
        chip_.receive(now_, kA, kBroadcast + station(1) + kPayload);
        chip_.receive(now_, kA, Octets{0x01, 0, 0x5E, 0, 0, 1} + station(1) + kPayload);
        chip_.receive(now_, kA, Octets{0x01, 0, 0x5E, 0, 0, 1} + station(1) + kPayload);
        chip_.receive(now_, kB, station(1) + station(2) + kPayload);
        chip_.receive(now_, kA, station(1) + station(1) + kPayload);  // to its own port: dropped
        chip_.receive(now_, kA, Octets(13, 0));                       // a runt
        chip_.receive(now_, kA, Octets(9601, 0));                     // too long
    }
};

using Values = std::map<uint32_t, uint64_t>;

TEST_F(DriverStatistics, CountWhatPassedAndWhatDidNot) {
    send_some();
    EXPECT_EQ(all(kA), (Values{{0, 4 * kShort + 13 + 9601},
                               {1, 6},
                               {2, 2},
                               {3, 2},
                               {4, 1},
                               {5, 3},
                               {6, 1},
                               {7, 1},
                               {8, kShort},
                               {9, 1},
                               {10, 1}}));
    EXPECT_EQ(all(kB), (Values{{0, kShort}, {1, 1}, {2, 1}, {8, 3 * kShort}, {9, 3}, {11, 2}, {12, 1}}));
}

TEST_F(DriverStatistics, FramesTooLongToLeaveAreCounted) {
    ASSERT_EQ(driver_.user_port_jumboframe_set(0, 0, kB, 0), kOk);
    chip_.receive(now_, kA, kBroadcast + station(1) + kPayload + Octets(1500, 0));
    EXPECT_EQ(all(kB), (Values{{13, 1}}));
}

TEST_F(DriverStatistics, ClearingClearsOnePort) {
    send_some();
    const Values before = all(kB);
    EXPECT_EQ(driver_.user_port_packetstat_clear(0, 0, kA), kOk);
    EXPECT_EQ(all(kA), Values{});
    EXPECT_EQ(all(kB), before);
    EXPECT_TRUE(chip_.port(kA).is_up());
}

TEST(Statistics, AreToldInTheDocument) {
    for (const Statistic &statistic : statistic_table()) {
        chip::test::expect_row("counters.md",
                               "| " + std::to_string(statistic.selector) + " | " + statistic.name + " |");
    }
}

}  // namespace statistics_test
}  // namespace vdevice::driver
