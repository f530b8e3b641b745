// Lines for people about JSON that differs.
#include "text/differences.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

namespace text {
namespace differences_test {

using nlohmann::json;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> lines(const char *first, const char *second) {
    return differences(json::parse(first), json::parse(second));
}

TEST(Differences, EqualValuesHaveNone) {
    EXPECT_THAT(lines(R"({"a": {"b": [1, 2]}, "c": 1})", R"({"c": 1, "a": {"b": [1, 2]}})"), IsEmpty());
}

TEST(Differences, NameThePlaceAndBothValues) {
    EXPECT_THAT(lines(R"({"vlans": {"100": {"members": [1, 2], "untagged": []}}})",
                      R"({"vlans": {"100": {"members": [1, 2, 3], "untagged": []}}})"),
                ElementsAre("vlans 100 members: {1,2} / {1,2,3}"));
}

TEST(Differences, WriteValuesForPeople) {
    EXPECT_THAT(
        lines(R"({"a": true, "b": null, "c": "x", "d": -1, "e": {}})",
              R"({"a": false, "b": 18446744073709551615, "c": "", "d": {"f": {"g": 1}}, "e": []})"),
        ElementsAre("a: yes / no", "b: none / 18446744073709551615", "c: x / ", "d: -1 / f (g 1)", "e: empty / {}"));
}

TEST(Differences, ShortenRunsOfNumbers) {
    EXPECT_THAT(lines(R"({"a": ["cpu", 1, 2, 3, 5, 6, 7, 8, "chip 30"]})", R"({"a": [3, 2, 1, 0, -1, 0, 1, 2]})"),
                ElementsAre("a: {cpu,1,2,3,5-8,chip 30} / {3,2,1,0,-1-2}"));
}

TEST(Differences, OfAMissingRowAreOneLineAndOfAMissingTableOneForEachRow) {
    EXPECT_THAT(lines(R"({"vlans": {}})", R"({"vlans": {"9": {"members": [1], "untagged": []}}})"),
                ElementsAre("vlans 9: - / members {1}, untagged {}"));
    EXPECT_THAT(
        lines(R"({})", R"({"fields": {"3": {"priority": 1, "is": {"dscp": {"data": 8}}, "do": [{"drop": 1}]}}})"),
        ElementsAre("fields 3: - / do {(drop 1)}, is (dscp (data 8)), priority 1"));
    EXPECT_THAT(lines(R"({"vlans": {"10": {"members": [1]}, "9": {"members": []}}})", R"({})"),
                ElementsAre("vlans 9: members {} / -", "vlans 10: members {1} / -"));
}

TEST(Differences, AreOrderedByTheNumbersInNames) {
    EXPECT_THAT(lines(R"({"cpu": 1, "2": 1, "10": 1, "2 10": 1, "2 9": 1, "02": 1})", "{}"),
                ElementsAre("02: 1 / -", "2: 1 / -", "2 9: 1 / -", "2 10: 1 / -", "10: 1 / -", "cpu: 1 / -"));
}

TEST(Differences, StayOnTheirLine) {
    EXPECT_THAT(lines(R"({"a\n": "\u001b[2J"})", R"({"a\n": "b"})"), ElementsAre(R"(a\n: \x1b[2J / b)"));
}

}  // namespace differences_test
}  // namespace text
