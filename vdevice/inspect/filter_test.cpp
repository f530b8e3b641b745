// Filters: which rows they leave, and which values they refuse.
#include "vdevice/inspect/filter.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "vdevice/inspect/subject.h"

namespace vdevice::inspect {
namespace filter_test {

using nlohmann::json;

json filtered(const char *command, json answer, const json &request) {
    filter(answer, request, *find(command));
    return answer;
}

json macs() {
    return {{"macs",
             {{{"vid", 1}, {"port", 0}, {"mac", "02:00:00:00:00:0a"}, {"kind", "static"}},
              {{"vid", 100}, {"port", 3}, {"mac", "02:00:00:00:00:0b"}, {"kind", "dynamic"}},
              {{"vid", 100}, {"port", 4}, {"mac", "02:00:00:00:00:0c"}, {"kind", "dynamic"}}}},
            {"capacity", 8192}};
}

std::vector<int> ports_of(const json &answer) {
    std::vector<int> ports;
    for (const json &row : answer["macs"]) {
        ports.push_back(row["port"].get<int>());
    }
    return ports;
}

std::vector<int> ports_with(const json &request) {
    return ports_of(filtered("macs", macs(), request));
}

using Ports = std::vector<int>;

TEST(Filter, KeepsRowsWithOneOfTheNumbers) {
    EXPECT_EQ(ports_with(json::object()), (Ports{0, 3, 4}));
    EXPECT_EQ(ports_with({{"vlan", 100}}), (Ports{3, 4}));
    EXPECT_EQ(ports_with({{"vlan", "2-100"}}), (Ports{3, 4}));
    EXPECT_EQ(ports_with({{"vlan", "2-99"}}), Ports{});
    EXPECT_EQ(ports_with({{"port", "cpu,4-9"}}), (Ports{0, 4}));
    EXPECT_EQ(ports_with({{"port", {0, "3"}}}), (Ports{0, 3}));
    EXPECT_EQ(ports_with({{"vlan", 100}, {"port", 3}}), (Ports{3})) << "all filters hold together";
}

TEST(Filter, KeepsRowsWithTheWordAndTheLastRows) {
    EXPECT_EQ(ports_with({{"mac", "02:00:00:00:00:0C"}}), (Ports{4}));
    EXPECT_EQ(ports_with({{"kind", "dynamic"}, {"last", 1}}), (Ports{4}));
    EXPECT_EQ(ports_with({{"last", 0}}), Ports{});
    EXPECT_EQ(ports_with({{"last", 99}}), (Ports{0, 3, 4}));
}

TEST(Filter, KeepsRowsWithACountThatIsNotZero) {
    const json rows = {{{"port", 1}, {"rx_frames", 0}, {"drops", {{"runt", 0}}}},
                       {{"port", 2}, {"rx_frames", 0}, {"drops", {{"runt", 7}}}},
                       {{"port", 3}, {"rx_frames", 1}, {"drops", {{"runt", 0}}}}};
    const json left = filtered("counters", {{"counters", rows}}, {{"nonzero", true}});
    EXPECT_EQ(left["counters"], json::array({rows[1], rows[2]}));
    const json queues = {{"ports", {{{"port", 1}, {"rate", 9}, {"queues", {{{"queue", 5}, {"frames", 0}}}}}}}};
    EXPECT_TRUE(filtered("queues", queues, {{"nonzero", true}})["ports"].empty()) << "a setting is not a count";
}

TEST(Filter, LooksIntoListsAndRuns) {
    const json vlans = {{"vlans", {{{"vid", 1}, {"members", {0, 1, 2}}}, {{"vid", 2}, {"members", json::array()}}}}};
    EXPECT_EQ(filtered("vlans", vlans, {{"port", 2}})["vlans"].size(), 1U);
    EXPECT_EQ(filtered("vlans", vlans, {{"port", "3-26"}})["vlans"].size(), 0U);
    const json groups = {
        {"groups", {{{"group", 1}, {"vlans", {{1, 9}, {20, 29}}}}, {{"group", 2}, {"vlans", {{10, 19}}}}}}};
    EXPECT_EQ(filtered("groups", groups, {{"vlan", "9-12"}})["groups"].size(), 2U);
    EXPECT_EQ(filtered("groups", groups, {{"vlan", 15}})["groups"][0]["group"], 2);
}

TEST(Filter, TellsHowManyRowsItLeft) {
    json answer = macs();
    const RowCount rows = filter(answer, {{"vlan", 100}}, *find("macs"));
    EXPECT_EQ(rows.shown, 2U);
    EXPECT_EQ(rows.all, 3U);
    EXPECT_EQ(answer["capacity"], 8192);
}

TEST(Filter, RefusesValuesWithoutAMeaning) {
    const char *const wrong[] = {"", "x", "1-", "-1", "2-1", "1,,2", "1,", "99999999999", "1 2", "0x1-"};
    for (const char *value : wrong) {
        EXPECT_THROW(ports_with({{"port", value}}), Refusal) << value;
    }
    for (const json &value : {json(nullptr), json(1.5), json(true), json::object()}) {
        EXPECT_THROW(ports_with({{"port", value}}), Refusal) << value;
        EXPECT_THROW(ports_with({{"mac", value}}), Refusal) << value;
    }
    EXPECT_THROW(ports_with({{"last", -1}}), Refusal);
    EXPECT_THROW(ports_with({{"last", "1-4"}}), Refusal);
    EXPECT_THROW(filtered("counters", {{"counters", json::array()}}, {{"nonzero", false}}), Refusal);
}

TEST(Filter, NamesAreTheSubjectsOwn) {
    for (const Subject *subject : subjects()) {
        std::string seen = " ";
        for (const Filter &filter : subject->filters) {
            EXPECT_EQ(seen.find(" " + std::string{filter.name} + " "), std::string::npos) << subject->name;
            seen += std::string{filter.name} + " ";
            EXPECT_TRUE(filter.kind == FilterKind::kOwn ||
                        (filter.value[0] == '\0') == (filter.kind == FilterKind::kNonzero))
                << subject->name;
            EXPECT_TRUE(filter.kind != FilterKind::kNonzero || !subject->counts.empty()) << subject->name;
        }
    }
}

}  // namespace filter_test
}  // namespace vdevice::inspect
