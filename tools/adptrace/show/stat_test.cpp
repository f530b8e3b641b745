// Counts of calls, in each order.
#include "tools/adptrace/show/stat.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tools/adptrace/recording/testing/lines.h"

namespace stat_test {
namespace {

using adptrace::Filter;
using adptrace::Order;
using adptrace::Recording;
using adptrace::testing::begin;
using adptrace::testing::end;
using adptrace::testing::kStart;
using nlohmann::json;
using testing::ElementsAre;

/** Two calls of the library with three driver calls, of which two failed; one by the program; one that did not return.
 */
const Recording kRecording(kStart + begin({}) + begin({2, 1, "user_vlan_create", "{}", 11, 1, 0}) +
                           end({2, "-11", 12, "{}", 0}) + begin({3, 1, "user_vlan_create", "{}", 13, 1, 0}) +
                           end({3, "-11", 14, "{}", 0}) + end({1, "-11", 20, "{}", 0}) +
                           begin({4, 0, "adp_vlan_destroy", "{}", 30, 1, 0}) +
                           begin({5, 4, "user_vlan_destroy", "{}", 31, 1, 0}) + end({5, "0", 131, "{}", 0}) +
                           end({4, "0", 140, "{}", 0}) + begin({6, 0, "user_vlan_create", "{}", 150, 1, 0}) +
                           end({6, "0", 151, "{}", 0}) + begin({7, 0, "adp_vlan_create", "{}", 160, 1, 0}));

json counted(const Filter &filter = {}, Order order = Order::kTime) {
    return json::parse(stat_json(kRecording, filter, order));
}

std::vector<std::string> names(const json &rows) {
    std::vector<std::string> result;
    for (const json &row : rows) {
        result.push_back(row["call"]);
    }
    return result;
}

TEST(Stat, CountsCallsErrorsTimeAndDriverCalls) {
    EXPECT_EQ(counted(), json::parse(R"({
        "library": [
            {"call":"adp_vlan_destroy","count":1,"errors":0,"nanoseconds":110,"unreturned":0,"driver_calls":1},
            {"call":"adp_vlan_create","count":2,"errors":1,"nanoseconds":10,"unreturned":1,"driver_calls":2}],
        "driver": [
            {"call":"user_vlan_destroy","count":1,"errors":0,"nanoseconds":100,"unreturned":0},
            {"call":"user_vlan_create","count":3,"errors":2,"nanoseconds":3,"unreturned":0}],
        "driver_calls_by_program": 1})"));
}

TEST(Stat, SortsByEachColumn) {
    EXPECT_THAT(names(counted({}, Order::kTime)["library"]), ElementsAre("adp_vlan_destroy", "adp_vlan_create"));
    EXPECT_THAT(names(counted({}, Order::kCount)["library"]), ElementsAre("adp_vlan_create", "adp_vlan_destroy"));
    EXPECT_THAT(names(counted({}, Order::kErrors)["driver"]), ElementsAre("user_vlan_create", "user_vlan_destroy"));
    EXPECT_THAT(names(counted({}, Order::kName)["driver"]), ElementsAre("user_vlan_create", "user_vlan_destroy"));
}

TEST(Stat, CountsChosenCalls) {
    Filter filter;
    filter.patterns = {"adp_*"};
    const json library = counted(filter);
    EXPECT_TRUE(library["driver"].empty());
    EXPECT_EQ(library["library"][1]["driver_calls"], 2) << "they belong to a chosen call";
    filter = {};
    filter.is_driver = true;
    filter.is_failed = true;
    EXPECT_EQ(counted(filter), json::parse(R"({"library":[],"driver_calls_by_program":0,"driver":[
        {"call":"user_vlan_create","count":2,"errors":2,"nanoseconds":2,"unreturned":0}]})"));
}

TEST(Stat, ShowsTables) {
    EXPECT_EQ(stat_text(kRecording, {}, Order::kTime),
              "    calls    errors       time       each  driver calls  call of the library\n"
              "        1         0     110 ns     110 ns           1.0  adp_vlan_destroy\n"
              "        2         1      10 ns      10 ns           1.0  adp_vlan_create\n"
              "        3         1     120 ns      60 ns           1.0  total\n"
              "\n"
              "    calls    errors       time       each  call of the driver and the services\n"
              "        1         0     100 ns     100 ns  user_vlan_destroy\n"
              "        3         2       3 ns       1 ns  user_vlan_create\n"
              "        4         2     103 ns      25 ns  total\n"
              "\n"
              "1 of the driver's calls was made by the program itself.\n"
              "1 of adp_vlan_create did not return.\n");
}

TEST(Stat, AddsTimesThatAreTooLong) {
    const std::string latest = "9223372036854775807";
    std::string text = kStart;
    for (uint64_t number = 1; number <= 3; ++number) {
        text += begin({number, 0, "adp_vlan_create", "{}", 0, static_cast<uint32_t>(number), 0}) + R"({"end":)" +
                std::to_string(number) + R"(,"at":)" + latest + R"(,"result":0,"outputs":{}})" + "\n";
    }
    const json counts = json::parse(stat_json(Recording(text), {}, Order::kTime));
    EXPECT_EQ(counts["library"][0]["nanoseconds"], UINT64_MAX);
}

}  // namespace
}  // namespace stat_test
