// Recordings that differ in one thing, and what the comparison says of it.
#include "tools/adptrace/compare/compare.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools/adptrace/compare/testing/script.h"

namespace compare_test {
namespace {

using adptrace::compare;
using adptrace::CompareOptions;
using adptrace::Comparison;
using adptrace::testing::Script;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

Comparison compared(const Script &a, const Script &b, const CompareOptions &options = {}) {
    return compare(a.recording(), b.recording(), options);
}

Script &create_vlan(Script &script, int vid, const std::string &driver_result = "0") {
    const std::string number = std::to_string(vid);
    return script.begin("adp_vlan_create", "{\"vid\":" + number + "}")
        .call("user_vlan_create", R"({"unit":0,"zero":0,"vid":)" + number + "}", driver_result)
        .end(driver_result == "0" ? "0" : "102");
}

TEST(Comparison, OfARecordingWithItselfHasNoDifference) {
    Script script;
    create_vlan(script, 100);
    create_vlan(script, 200).call("adp_vlan_dump", "{}");
    const Comparison comparison = compared(script, script);
    EXPECT_EQ(comparison.differences, 0U);
    EXPECT_EQ(comparison.text, "A and B are equal in meaning: 5 calls\n");
}

TEST(Comparison, LeavesOutTimesAndIds) {
    Script a(40);
    Script b(4711);
    create_vlan(a, 100);
    create_vlan(b, 100);
    EXPECT_EQ(compared(a, b).differences, 0U);
}

TEST(Comparison, ShowsAnArgumentThatDiffers) {
    Script a;
    Script b;
    create_vlan(a, 100).call("adp_vlan_port_add", R"({"vid":100,"ports":[4,5],"untagged":[]})");
    create_vlan(b, 100).call("adp_vlan_port_add", R"({"vid":100,"ports":[4],"untagged":[]})");
    const Comparison comparison = compared(a, b);
    EXPECT_EQ(comparison.differences, 1U);
    EXPECT_EQ(comparison.text, R"(--- A
+++ B
@@ thread 1 @@
       3      3  adp_vlan_create(vid=100) = 0
-      7         adp_vlan_port_add(vid=100, ports={4,5}, untagged={}) = 0
+             7  adp_vlan_port_add(vid=100, ports={4}, untagged={}) = 0
                   argument ports: {4,5} | {4}
1 call differs: 1 in both, 0 only in A, 0 only in B
)");
}

TEST(Comparison, ShowsADriverCallThatDiffersWithWhatIsAroundIt) {
    Script a;
    Script b;
    create_vlan(create_vlan(a, 100), 200).call("adp_vlan_dump", "{}");
    create_vlan(create_vlan(b, 100), 200, "-3").call("adp_vlan_dump", "{}");
    const Comparison comparison = compared(a, b);
    EXPECT_EQ(comparison.differences, 1U);
    EXPECT_EQ(comparison.text, R"(--- A
+++ B
@@ thread 1 @@
       3      3  adp_vlan_create(vid=100) = 0
-      7         adp_vlan_create(vid=200) = 0
+             7  adp_vlan_create(vid=200) = 102 (ADP_E_DRIVER)
                   result: 0 | 102 (ADP_E_DRIVER)
-      8           user_vlan_create(unit=0, zero=0, vid=200) = 0
+             8    user_vlan_create(unit=0, zero=0, vid=200) = -3 (bad_argument)
                   result: 0 | -3 (bad_argument)
1 call differs: 1 in both, 0 only in A, 0 only in B
)");
}

TEST(Comparison, FindsWhatOneAloneHas) {
    Script a;
    Script b;
    for (int vid = 2; vid < 40; ++vid) {
        create_vlan(a, vid);
        if (vid == 20) {
            b.call("adp_vlan_dump", "{}");
        }
        if (vid != 10) {
            create_vlan(b, vid);
        }
    }
    const Comparison all = compared(a, b, {.shows_all = true});
    EXPECT_EQ(all.differences, 2U);
    EXPECT_THAT(all.text, HasSubstr("-     35         adp_vlan_create(vid=10) = 0\n"
                                    "-     36           user_vlan_create(unit=0, zero=0, vid=10) = 0\n"));
    EXPECT_THAT(all.text, HasSubstr("\n+            71  adp_vlan_dump() = 0\n"));
    EXPECT_THAT(all.text, HasSubstr("2 calls differ: 0 in both, 1 only in A, 1 only in B\n"));
    const Comparison first = compared(a, b);
    EXPECT_THAT(first.text, Not(HasSubstr("adp_vlan_dump")));
    EXPECT_THAT(first.text,
                HasSubstr("2 calls differ: 0 in both, 1 only in A, 1 only in B; the first is shown, --all"));
}

CompareOptions chosen(const std::vector<std::string> &patterns) {
    CompareOptions options;
    options.filter.patterns = patterns;
    return options;
}

TEST(Comparison, IsOfTheChosenCalls) {
    Script a;
    Script b;
    create_vlan(create_vlan(a, 100), 200).call("adp_vlan_dump", "{}");
    create_vlan(create_vlan(b, 100, "-1"), 200).call("adp_vlan_dump", "{}", "1");
    EXPECT_EQ(compared(a, b).differences, 2U);
    EXPECT_EQ(compared(a, b, chosen({"adp_vlan_d*"})).differences, 1U);
    EXPECT_EQ(compared(a, b, chosen({"user_*"})).differences, 1U);
    EXPECT_EQ(compared(a, b, chosen({"user_mac_*", "adp_mac_*"})).differences, 0U);
}

TEST(Comparison, CanLeaveOutDriverCalls) {
    Script a;
    Script b;
    const std::string vlan = R"({"unit":0,"zero":0,"vid":5})";
    a.begin("adp_vlan_dump", "{}").call("user_vlan_create", vlan).end();
    b.call("user_vlan_create", vlan).call("adp_vlan_dump", "{}");
    EXPECT_EQ(compared(a, b).differences, 2U);
    EXPECT_EQ(compared(a, b, {.with_imported = false}).differences, 0U);
}

TEST(Comparison, PairsThreadsByTheirFirstCalls) {
    Script a;
    Script b;
    a.in(1).call("adp_vlan_dump", "{}").in(2);
    b.in(7).call("adp_vlan_dump", "{}").in(3);
    create_vlan(a, 5).in(1);
    create_vlan(b, 5).in(7);
    create_vlan(a, 6);
    create_vlan(b, 6);
    EXPECT_EQ(compared(a, b).differences, 0U);
}

TEST(Comparison, PairsProcessesByTheirOrder) {
    Script a(40);
    Script b(50);
    a.start(41, 40).of(41).call("adp_vlan_dump", "{}").of(40);
    b.start(99, 50).of(99).call("adp_vlan_dump", "{}").of(50);
    create_vlan(a, 5);
    create_vlan(b, 6);
    const Comparison comparison = compared(a, b);
    EXPECT_EQ(comparison.differences, 1U);
    EXPECT_THAT(comparison.text, HasSubstr("@@ process 1, thread 1 @@"));
}

TEST(Comparison, ShowsAThreadThatOneAloneHas) {
    Script a;
    Script b;
    create_vlan(a, 5).in(2).call("adp_vlan_dump", "{}");
    create_vlan(b, 5);
    const Comparison comparison = compared(a, b);
    EXPECT_EQ(comparison.differences, 1U);
    EXPECT_THAT(comparison.text, HasSubstr("@@ thread 2 @@\n-      7         adp_vlan_dump() = 0\n"));
}

TEST(Comparison, ShowsACallThatDidNotReturn) {
    Script a;
    Script b;
    a.call("adp_vlan_dump", "{}");
    b.begin("adp_vlan_dump", "{}");
    const Comparison comparison = compared(a, b);
    EXPECT_EQ(comparison.differences, 1U);
    EXPECT_THAT(comparison.text, HasSubstr("returned: yes | no"));
}

TEST(Comparison, ShowsManyDriverCallsInPart) {
    Script a;
    Script b;
    a.begin("adp_vlan_dump", "{}");
    b.begin("adp_vlan_dump", "{}");
    for (int vid = 1; vid <= 50; ++vid) {
        const std::string arguments = R"({"unit":0,"zero":0,"vid":)" + std::to_string(vid) + "}";
        a.call("user_vlan_create", arguments);
        b.call("user_vlan_create", arguments, vid == 30 ? "-1" : "0");
    }
    const Comparison comparison = compared(a.end(), b.end());
    EXPECT_THAT(comparison.text, HasSubstr("... 27 calls\n"));
    EXPECT_THAT(comparison.text, HasSubstr("... 20 calls\n"));
    EXPECT_THAT(comparison.text, HasSubstr("vid=29"));
    EXPECT_THAT(comparison.text, Not(HasSubstr("vid=27")));
}

TEST(Comparison, ShowsWhatCameBeforeOnce) {
    Script a;
    Script b;
    create_vlan(create_vlan(create_vlan(create_vlan(a, 1), 2), 3), 4, "-1");
    create_vlan(create_vlan(create_vlan(create_vlan(b, 1), 2, "-1"), 3), 4);
    const std::string third = "      11     11  adp_vlan_create(vid=3) = 0\n";
    const std::string all = compared(a, b, {.shows_all = true}).text;
    EXPECT_THAT(all, HasSubstr("vlan_create(unit=0, zero=0, vid=2) = -1\n"
                               "                   result: 0 | -1\n@@ thread 1 @@\n" +
                               third + "-     15 "));
    // A call that is not chosen is shown as what it is.
    b = Script();
    create_vlan(b, 1, "-1").call("adp_vlan_dump", "{}");
    a = Script();
    create_vlan(a, 1).call("adp_vlan_dump", "{}", "-1");
    EXPECT_THAT(compared(a, b, chosen({"adp_vlan_dump"})).text,
                HasSubstr("@@\n-      3         adp_vlan_create(vid=1) = 0\n"
                          "+             3  adp_vlan_create(vid=1) = 102 (ADP_E_DRIVER)\n"
                          "-      7         adp_vlan_dump() = -1"));
}

TEST(Comparison, RemarksWhatIsNotCompared) {
    Script a(40, "a1b2", true);
    Script b(40, "c3d4", false);
    a.line(R"({"board":[1,2],"at":100000})").line(R"({"exit":40,"at":100001,"status":0})");
    b.line(R"({"board":[1,3],"at":100000})").line(R"({"exit":40,"at":100001,"signal":11})");
    const Comparison comparison = compared(a, b, {.name_a = "old", .name_b = "new"});
    EXPECT_EQ(comparison.differences, 0U);
    EXPECT_EQ(comparison.text, R"(remark: library builds: a1b2 | c3d4
remark: machines: 32 bits, big-endian | 32 bits, little-endian
remark: end of the program: exit status 0 | signal 11
remark: the port maps differ
old and new are equal in meaning: 0 calls
)");
}

TEST(Comparison, SaysWhereItGivesUpTheSmallestAlignment) {
    Script a;
    Script b;
    for (int vid = 2; vid < 40; ++vid) {
        create_vlan(a, vid);
        create_vlan(b, vid + 1000);
    }
    EXPECT_THAT(compared(a, b, {.most_differences = 10}).text,
                StartsWith("remark: more than 10 differences; from line 23 of A and line 23 of B on"));
    EXPECT_THAT(compared(a, b).text, Not(HasSubstr("remark")));
}

}  // namespace
}  // namespace compare_test
