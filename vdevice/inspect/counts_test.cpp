// The difference of two readings.
#include "vdevice/inspect/counts.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "vdevice/inspect/subject.h"

namespace vdevice::inspect {
namespace counts_test {

using nlohmann::json;

json counters(double time, uint64_t frames, uint64_t storm) {
    return {{"counters", {{{"port", 3}, {"rx_frames", frames}, {"drops", {{"storm", storm}}}}}}, {"time", time}};
}

json difference(json now, const json &before, bool per_second = false, const char *command = "counters") {
    subtract_earlier(now, {{"since", before}, {"per_second", per_second}}, *find(command));
    return now;
}

TEST(Difference, IsOfEachCount) {
    const json row = difference(counters(5, 110, 7), counters(3, 100, 7))["counters"][0];
    EXPECT_EQ(row["rx_frames"], 10);
    EXPECT_EQ(row["drops"]["storm"], 0);
    EXPECT_EQ(row["port"], 3) << "what is no count stays";
}

TEST(Difference, IsARateWhereThatIsAsked) {
    const json row = difference(counters(5, 110, 7), counters(3, 100, 4), true)["counters"][0];
    EXPECT_EQ(row["rx_frames"], 5);
    EXPECT_EQ(row["drops"]["storm"], 2) << "rounded";
}

TEST(Difference, GivesTheTimeBetween) {
    json now = counters(5, 0, 0);
    EXPECT_DOUBLE_EQ(subtract_earlier(now, {{"since", counters(3.5, 0, 0)}}, *find("counters")), 1.5);
}

TEST(Difference, TakesACountWholeThatHasBegunAgain) {
    const json row = difference(counters(5, 4, 0), counters(3, 100, 0))["counters"][0];
    EXPECT_EQ(row["rx_frames"], 4);
}

json rows(const char *table, int time, const json &list) {
    return {{table, list}, {"time", time}};
}

TEST(Difference, FindsRowsByTheirNamesNotTheirPlace) {
    const json one = {{"meter", 1}, {"passed", 10}};
    const json five = {{"meter", 5}, {"passed", 50}};
    const json five_before = {{"meter", 5}, {"passed", 20}};
    const json now = rows("meters", 2, json::array({one, five}));
    const json meters = difference(now, rows("meters", 1, json::array({five_before})), false, "meters")["meters"];
    EXPECT_EQ(meters[0]["passed"], 10);
    EXPECT_EQ(meters[1]["passed"], 30);
}

TEST(Difference, IsOfCountsInListsAndRowsInRows) {
    const auto port = [](int time, const json &sent, int frames) {
        const json queue = {{"queue", 7}, {"frames", frames}};
        const json row = {{"port", 1}, {"tx_queues", sent}, {"queues", json::array({queue})}};
        return rows("ports", time, json::array({row}));
    };
    const json now = port(2, {5, 6}, 9);
    const json before = port(1, {1, 2}, 4);
    EXPECT_EQ(difference(now, before, false, "priorities")["ports"][0]["tx_queues"], (json{4, 4}));
    EXPECT_EQ(difference(now, before, false, "queues")["ports"][0]["queues"][0]["frames"], 5);
    EXPECT_EQ(difference(now, before, false, "queues")["ports"][0]["tx_queues"], (json{5, 6}));
}

TEST(Difference, RefusesWhatIsNoEarlierReading) {
    for (const json &before : {json(nullptr), json(3), json::array(), json::object(), json{{"time", "x"}}}) {
        EXPECT_THROW(difference(counters(5, 1, 1), before), Refusal) << before;
    }
    EXPECT_THROW(difference(counters(5, 1, 1), counters(5, 0, 0)), Refusal) << "not before this one";
    EXPECT_THROW(difference(json{{"vlans", json::array()}}, counters(5, 0, 0), false, "vlans"), Refusal);
}

TEST(Difference, TakesAForeignReadingAsNoneOfTheRows) {
    const json foreign = {{"time", 1}, {"counters", {1, "x", {{"port", 3}, {"rx_frames", "x"}, {"drops", 4}}}}};
    const json row = difference(counters(5, 110, 7), foreign)["counters"][0];
    EXPECT_EQ(row["rx_frames"], 110);
    EXPECT_EQ(row["drops"]["storm"], 7);
    EXPECT_EQ(difference(counters(5, 110, 7), {{"time", 1}, {"counters", 7}})["counters"][0]["rx_frames"], 110);
}

TEST(Counts, AreSeenAtAnyDepth) {
    const std::span<const char *const> names = find("counters")->counts;
    EXPECT_TRUE(has_nonzero_count({{"port", 1}, {"drops", {{"runt", 0}, {"storm", 1}}}}, names));
    EXPECT_FALSE(has_nonzero_count({{"port", 1}, {"drops", {{"runt", 0}}}, {"rx_frames", 0}}, names));
}

}  // namespace counts_test
}  // namespace vdevice::inspect
