// Whatever differs from the recording is found, and both sides are shown.
#include <gmock/gmock.h>

#include "tools/adptrace/replay/testing/fakes.h"

namespace differences_test {

using namespace adptrace::replay;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(ReplayDifferences, ShowsBothSidesOfAnArgumentThatDiffersAndAsksTheDriverNoMore) {
    VlanLibrary library;
    FakeDriver driver;
    const Played played =
        replay(with(vlan_recording(), R"("zero":0,"vid":100)", R"("zero":0,"vid":101)"), library, &driver);
    EXPECT_EQ(played.said,
              "line 4: call 2, user_vlan_create, within call 1, adp_vlan_create: the argument vid differs\n"
              "  recorded: 101\n  replayed: 100\n");
    EXPECT_EQ(played.outcome.differences, 1U);
    EXPECT_THAT(driver.asked, IsEmpty());
}

TEST(ReplayDifferences, ShowsResultsThatDiffer) {
    VlanLibrary library;
    FakeDriver driver;
    driver.functions["user_vlan_create"] = [](const void *const *) { return -8; };
    EXPECT_EQ(replay(vlan_recording().recording(), library, &driver).said,
              "line 4: call 2, user_vlan_create, within call 1, adp_vlan_create: the result differs\n"
              "  recorded: 0\n  replayed: -8\n");
    driver.functions.clear();
    EXPECT_THAT(replay(with(vlan_recording(), R"("result":0)", R"("result":102)"), library, &driver).said,
                HasSubstr("line 3: call 1, adp_vlan_create: the result differs\n  recorded: 102\n  replayed: 0\n"));
}

Text default_group_recording(const std::string &inner_outputs, const std::string &outer_outputs) {
    Text text;
    const uint64_t outer = text.begin("adp_stg_default_get", R"({"stg":77})");
    const uint64_t inner = text.begin("user_stg_default_get", R"({"unit":0,"zero":0,"stg":77})", outer);
    text.end(inner, "0", inner_outputs).end(outer, "0", outer_outputs);
    return text;
}

TEST(ReplayDifferences, ShowsOutputsThatDiffer) {
    VlanLibrary library;
    FakeDriver driver;
    driver.functions["user_stg_default_get"] = [](const void *const *arguments) {
        *value_of<uint32_t *>(arguments[2]) = 5;
        return 0;
    };
    const std::string five = R"({"stg":5})";
    EXPECT_EQ(replay(default_group_recording(five, five).recording(), library, &driver).said, "");
    EXPECT_THAT(replay(default_group_recording(R"({"stg":6})", five).recording(), library, &driver).said,
                HasSubstr("line 4: call 2, user_stg_default_get, within call 1, adp_stg_default_get: the output stg "
                          "differs\n  recorded: 6\n  replayed: 5\n"));
    EXPECT_THAT(replay(default_group_recording("{}", five).recording(), library, &driver).said,
                HasSubstr("recorded: unchanged\n  replayed: 5\n"));
    EXPECT_THAT(replay(default_group_recording(five, R"({"stg":6})").recording(), library, &driver).said,
                HasSubstr("line 3: call 1, adp_stg_default_get: the output stg differs\n"));
}

TEST(ReplayDifferences, MemoryThatIsNotWrittenHasTheContentThatItHad) {
    VlanLibrary library;
    FakeDriver driver;  // writes nothing
    EXPECT_EQ(replay(default_group_recording("{}", "{}").recording(), library, &driver).said, "");
}

TEST(ReplayDifferences, FindsAnotherCallInThePlaceOfARecordedOne) {
    VlanLibrary library;
    FakeDriver driver;
    const auto recording = with(vlan_recording(), R"("call":"user_vlan_create")", R"("call":"user_vlan_destroy")");
    Played played = replay(recording, library, &driver, {.is_to_keep_going = true});
    EXPECT_EQ(played.said,
              "line 4: call 2, user_vlan_destroy, within call 1, adp_vlan_create: the call differs\n"
              "  recorded: user_vlan_destroy {\"unit\":0,\"vid\":100,\"zero\":0}\n"
              "  replayed: user_vlan_create {\"unit\":0,\"vid\":100,\"zero\":0}\n");
    EXPECT_EQ(played.outcome.differences, 1U);
    EXPECT_THAT(driver.asked, ElementsAre("user_vlan_create"));
}

TEST(ReplayDifferences, FindsACallTooMany) {
    VlanLibrary library;
    FakeDriver driver;
    Text text;
    text.end(text.begin("adp_vlan_create", R"({"vid":100})"));
    EXPECT_EQ(replay(text.recording(), library, &driver).said,
              "line 3: call 1, adp_vlan_create: the number of calls within it differs\n"
              "  recorded: no call\n  replayed: user_vlan_create {\"unit\":0,\"vid\":100,\"zero\":0}\n");
    EXPECT_THAT(driver.asked, IsEmpty());
}

TEST(ReplayDifferences, FindsACallTooFew) {
    VlanLibrary library;
    FakeDriver driver;
    Text text;
    const uint64_t outer = text.begin("adp_vlan_create", R"({"vid":100})");
    text.end(text.begin("sys_trace_get", "{}", outer));
    text.end(text.begin("user_vlan_create", R"({"unit":0,"zero":0,"vid":100})", outer));
    text.end(text.begin("sys_trace_get", "{}", outer)).end(outer);
    const Played played = replay(text.recording(), library, &driver, {.is_to_keep_going = true});
    EXPECT_EQ(played.outcome.differences, 2U);
    EXPECT_THAT(played.said,
                HasSubstr("line 4: call 2, sys_trace_get, within call 1, adp_vlan_create: the call differs\n"
                          "  recorded: sys_trace_get {}\n  replayed: user_vlan_create {"));
    EXPECT_THAT(played.said,
                HasSubstr("line 8: call 4, sys_trace_get, within call 1, adp_vlan_create: the call differs\n"
                          "  recorded: sys_trace_get {}\n  replayed: no call\n"));
}

TEST(ReplayDifferences, StopsAtTheFirstDifferenceOrGoesOnAndCounts) {
    VlanLibrary library;
    FakeDriver driver;
    Text text;
    for (int vid = 1; vid <= 3; ++vid) {
        const uint64_t outer = text.begin("adp_vlan_create", R"({"vid":)" + std::to_string(vid) + "}");
        text.end(text.begin("user_vlan_create", R"({"unit":0,"zero":0,"vid":9})", outer)).end(outer);
    }
    const Played stopped = replay(text.recording(), library, &driver);
    EXPECT_EQ(stopped.outcome.differences, 1U);
    EXPECT_EQ(stopped.outcome.library_calls, 1U);
    const Played played = replay(text.recording(), library, &driver, {.is_to_keep_going = true});
    EXPECT_EQ(played.outcome.differences, 3U);
    EXPECT_EQ(played.outcome.library_calls, 3U);
    EXPECT_EQ(driver.asked.size(), 3U);
}

TEST(ReplayDifferences, TheLoggersTextIsCompared) {
    VlanLibrary library;
    FakeDriver driver;
    Text text;
    const uint64_t outer = text.begin("adp_vlan_create", R"({"vid":100})");
    text.end(text.begin("user_vlan_create", R"({"unit":0,"zero":0,"vid":100})", outer), "-1");
    text.end(text.begin("Log_logging_func",
                        R"({"level":3,"module":1,"word":"vlan","format":"%u fails","text":"100 fails"})", outer));
    text.end(outer, "-1");
    driver.functions["user_vlan_create"] = [](const void *const *) { return -1; };
    EXPECT_EQ(replay(text.recording(), library, &driver).said, "");
    EXPECT_THAT(replay(with(text, "100 fails", "101 fails"), library, &driver).said,
                HasSubstr("the argument text differs\n  recorded: \"101 fails\"\n  replayed: \"100 fails\"\n"));
}

}  // namespace differences_test
