// The picture says what happened, and its size does not grow with the recording.
#include "tools/adptrace/show/timeline.h"

#include <gtest/gtest.h>

#include "tools/adptrace/recording/testing/lines.h"
#include "tools/adptrace/show/marks.h"

namespace timeline_test {
namespace {

using adptrace::Mark;
using adptrace::Marks;
using adptrace::Recording;
using adptrace::testing::begin;
using adptrace::testing::end;
using adptrace::testing::kStart;

constexpr double kWidth = 1000;

size_t count_of(const std::string &text, const std::string &part) {
    size_t count = 0;
    for (size_t place = text.find(part); place != std::string::npos; place = text.find(part, place + 1)) {
        ++count;
    }
    return count;
}

/** A call of 1000 ns with a driver call in its middle that fails, then one that does not return. */
const std::string kShort = begin({1, 0, "adp_vlan_create", "{}", 1000, 1, 0}) +
                           begin({2, 1, "user_vlan_create", "{}", 1250, 1, 0}) + end({2, "-11", 1750, "{}", 0}) +
                           end({1, "0", 2000, "{}", 0}) + begin({3, 0, "adp_vlan_destroy", "{}", 3000, 2, 0}) +
                           begin({4, 0, "adp_vlan_create", "{}", 5000, 3, 0}) + end({4, "0", 5000, "{}", 0});

TEST(Marks, ArePlacedByTime) {
    const Marks marks = marks_of(Recording(kStart + kShort), {}, kWidth);
    EXPECT_EQ(marks.from, 1000);
    EXPECT_EQ(marks.until, 5000);
    ASSERT_EQ(marks.lanes.size(), 3U);
    ASSERT_EQ(marks.lanes[0].rows.size(), 2U);
    const Mark &outer = marks.lanes[0].rows[0].at(0);
    const Mark &inner = marks.lanes[0].rows[1].at(0);
    EXPECT_EQ(outer.left, 0);
    EXPECT_EQ(outer.right, 250);
    EXPECT_EQ(inner.left, 62.5);
    EXPECT_EQ(inner.right, 187.5);
    EXPECT_EQ(inner.failed, 1U);
    const Mark &under_way = marks.lanes[1].rows[0].at(0);
    EXPECT_EQ(under_way.right, kWidth);
    EXPECT_EQ(under_way.unreturned, 1U);
}

TEST(Marks, LastUntilTheProcessEnds) {
    const std::string exit = R"({"exit":40,"at":9000,"signal":9})"
                             "\n";
    const Marks marks = marks_of(Recording(kStart + kShort + exit), {}, kWidth);
    EXPECT_EQ(marks.until, 9000);
    EXPECT_EQ(marks.lanes[1].rows[0].at(0).until, 9000);
}

/** So many calls of 10 ns each, one every 20 ns, of which every second one is within the one before it. */
std::string many(uint64_t count, uint32_t threads = 1) {
    std::string text = kStart;
    for (uint64_t i = 1; i <= count; ++i) {
        const auto at = static_cast<int64_t>(20 * i);
        const auto thread = static_cast<uint32_t>(i % threads + 1);
        text += begin({2 * i, 0, "adp_vlan_create", "{}", at, thread, 0}) +
                begin({2 * i + 1, 2 * i, "user_vlan_create", "{}", at + 2, thread, 0}) +
                end({2 * i + 1, i % 3 == 0 ? "-11" : "0", at + 5, "{}", 0}) + end({2 * i, "0", at + 10, "{}", 0});
    }
    return text;
}

TEST(Marks, AreJoinedWhereTheyAreTooClose) {
    const Marks marks = marks_of(Recording(many(500)), {}, kWidth);
    EXPECT_EQ(marks.calls, 1'000U);
    EXPECT_LT(marks.marks, 400U);
    size_t calls = 0;
    size_t failed = 0;
    for (const auto &row : marks.lanes[0].rows) {
        for (const Mark &mark : row) {
            calls += mark.count;
            failed += mark.failed;
            EXPECT_LT(mark.right - mark.left, 7);
            EXPECT_LT(mark.busy, mark.right - mark.left);
        }
    }
    EXPECT_EQ(calls, 1'000U) << "none is forgotten";
    EXPECT_EQ(failed, 166U);
}

TEST(Marks, AreThoseOfTheChosenPart) {
    adptrace::Filter filter;
    filter.since = 2'000;
    filter.until = 4'000;
    const Marks marks = marks_of(Recording(many(300)), filter, kWidth);
    EXPECT_EQ(marks.from, 2'000);
    EXPECT_EQ(marks.until, 4'000);
    EXPECT_EQ(marks.calls, 101U + 100U);
}

TEST(Timeline, SaysWhatItShowsAndWhatNot) {
    EXPECT_EQ(timeline_of(Recording(kStart), {}).summary, "No call is chosen.");
    EXPECT_EQ(timeline_of(Recording(kStart + kShort), {}).summary,
              "4 calls of 3 threads, from 0.000001 s to 0.000005 s of the recording.");
    const std::string summary = timeline_of(Recording(many(150, 30)), {}).summary;
    EXPECT_NE(summary.find("120 calls of 12 threads"), std::string::npos) << summary;
    EXPECT_NE(summary.find("Left out: 180 calls of 18 more threads;"), std::string::npos) << summary;
    std::string deep = kStart + begin({});
    for (uint64_t number = 2; number <= 6; ++number) {
        deep += begin({number, number - 1, "adp_vlan_create", "{}", 10, 1, 0});
    }
    EXPECT_NE(timeline_of(Recording(deep), {}).summary.find("Left out: 2 calls deep within others."),
              std::string::npos);
}

TEST(Timeline, MarksFailuresNotByColourAlone) {
    const std::string legend = timeline_of(Recording(kStart), {}).svg;
    const std::string svg = timeline_of(Recording(kStart + kShort), {}).svg;
    EXPECT_EQ(count_of(svg, "<path class=\"x\"") - count_of(legend, "<path class=\"x\""), 1U);
    EXPECT_NE(svg.find("user_vlan_create() = -11 (vlan_exists)"), std::string::npos);
    EXPECT_NE(svg.find("adp_vlan_destroy() = ?  (did not return)"), std::string::npos);
    EXPECT_NE(svg.find(">4000 ns</text>"), std::string::npos) << "the axis has units";
    EXPECT_EQ(svg.find("<script"), std::string::npos);
}

TEST(Timeline, StaysSmall) {
    EXPECT_LT(timeline_of(Recording(many(1'000)), {}).svg.size(), 150'000U);
}

TEST(Timeline, EscapesTexts) {
    const std::string text =
        begin({1, 0, "Log_logging_func", R"({"word":"</title><script>&\u0000\u00ff\uffff"})", 10, 1, 0});
    const std::string svg = timeline_of(Recording(kStart + text), {}).svg;
    EXPECT_NE(svg.find("&lt;/title&gt;&lt;script&gt;&amp;\\x00"), std::string::npos) << svg;
    for (const char c : svg) {
        EXPECT_TRUE(c == '\n' || (c >= ' ' && c <= '~'));
    }
}

}  // namespace
}  // namespace timeline_test
