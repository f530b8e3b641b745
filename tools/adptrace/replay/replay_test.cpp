// Replays of small recordings, with a library and a driver that do what a test says.
#include "tools/adptrace/replay/replay.h"

#include <gmock/gmock.h>

#include "platform/netlink_api.h"
#include "tools/adptrace/command.h"
#include "tools/adptrace/replay/testing/fakes.h"

namespace replay_test {

using namespace adptrace::replay;
using testing::ElementsAre;
using testing::HasSubstr;

TEST(Replay, MakesTheCallsAgainAndFindsNoDifference) {
    VlanLibrary library;
    FakeDriver driver;
    const Played played = replay(vlan_recording().recording(), library, &driver);
    EXPECT_EQ(played.said, "");
    EXPECT_EQ(played.outcome.library_calls, 1U);
    EXPECT_EQ(played.outcome.driver_calls, 1U);
    EXPECT_EQ(played.outcome.reason, "");
    EXPECT_THAT(driver.asked, ElementsAre("user_vlan_create"));
}

TEST(Replay, NeedsNoDriverWhereTheRecordingAnswers) {
    VlanLibrary library;
    Text text;
    const uint64_t outer = text.begin("adp_stg_default_get", "{}");
    const uint64_t inner = text.begin("user_stg_default_get", R"({"unit":0,"zero":0,"stg":9})", outer);
    text.end(inner, "-4", R"({"stg":3})").end(outer, "-4", R"({"stg":3})");
    const Played played = replay(text.recording(), library, nullptr);
    EXPECT_EQ(played.said, "");
    EXPECT_EQ(played.outcome.driver_calls, 1U);
}

TEST(Replay, ACallThatHadNotReturnedIsNotMadeUnlessWanted) {
    VlanLibrary library;
    FakeDriver driver;
    Text text = vlan_recording();
    text.begin("user_vlan_create", R"({"unit":0,"zero":0,"vid":5})", text.begin("adp_vlan_create", R"({"vid":5})"));
    const Played played = replay(text.recording(), library, &driver);
    EXPECT_EQ(played.outcome.library_calls, 1U);
    EXPECT_EQ(played.outcome.reason,
              "line 7: call 3, adp_vlan_create had not returned, and is not made (--crash makes it).");
    EXPECT_FALSE(played.outcome.is_trouble);
    EXPECT_EQ(replay(text.recording(), library, &driver, {.is_to_crash = true}).outcome.library_calls, 2U);
}

TEST(Replay, StopsBeforeACallThatTheLibraryDoesNotHave) {
    FakeLibrary library;
    FakeDriver driver;
    const Played played = replay(vlan_recording().recording(), library, &driver);
    EXPECT_EQ(played.outcome.reason, "line 3: call 1, adp_vlan_create: the library does not have this call.");
    EXPECT_TRUE(played.outcome.is_trouble);
}

TEST(Replay, RefusesCallsThatItDoesNotKnow) {
    VlanLibrary library;
    Text text = vlan_recording();
    text.end(text.begin("adp_of_next_year", "{}"));
    EXPECT_THROW(replay(text.recording(), library, nullptr), adptrace::Refusal);
}

TEST(Replay, StopsAtALine) {
    VlanLibrary library;
    FakeDriver driver;
    Text text = vlan_recording();
    const uint64_t outer = text.begin("adp_vlan_create", R"({"vid":5})");
    text.end(text.begin("user_vlan_create", R"({"unit":0,"zero":0,"vid":5})", outer)).end(outer);
    EXPECT_EQ(replay(text.recording(), library, &driver, {.last_line = 6}).outcome.library_calls, 1U);
    EXPECT_EQ(replay(text.recording(), library, &driver, {.last_line = 7}).outcome.library_calls, 2U);
}

TEST(Replay, CallsOfTheProgramItselfAreMadeAndCompared) {
    FakeLibrary library;
    FakeDriver driver;
    Text text;
    text.end(text.begin("user_stg_default_get", R"({"unit":0,"zero":0})"), "0", R"({"stg":4})");
    EXPECT_EQ(replay(text.recording(), library, &driver).outcome.differences, 1U);
    EXPECT_THAT(driver.asked, ElementsAre("user_stg_default_get"));
}

TEST(Replay, AListOfNoElementsIsNotWritten) {
    FakeLibrary library;
    FakeDriver driver;
    library.functions["adp_get_stg_each_time_list"] = [](const void *const *) -> int64_t {
        int32_t group = 0;
        return user_stg_each_time_list(0, 0, &group, 0, 0);
    };
    Text text;
    const std::string arguments = R"("chunk_index":0,"chunk_size":0})";
    const uint64_t outer = text.begin("adp_get_stg_each_time_list", "{" + arguments);
    text.end(text.begin("user_stg_each_time_list", R"({"unit":0,"zero":0,)" + arguments, outer)).end(outer);
    EXPECT_EQ(replay(text.recording(), library, &driver).said, "");
}

TEST(Replay, TheBoardIsThatOfTheProgramUntilTheLibraryChangesIt) {
    FakeLibrary library;
    library.functions["adp_igmp_init"] = [](const void *const *) -> int64_t { return 0; };
    Text text;
    text.line(R"({"board":[{"word1":0,"word2":0,"phy":3,"attributes":0}],"at":1})");
    text.end(text.begin("adp_igmp_init", "{}"));
    text.line(R"({"board":[{"word1":0,"word2":0,"phy":9,"attributes":0}],"at":1})");
    EXPECT_EQ(replay(text.recording(), library, nullptr).said, "");
    EXPECT_EQ(library.rows[0]["phy"], 9);
    library.functions["adp_igmp_init"] = [&library](const void *const *) -> int64_t {
        library.rows[0]["phy"] = 5;
        return 0;
    };
    EXPECT_THAT(replay(text.recording(), library, nullptr).said,
                HasSubstr("line 4: call 1, adp_igmp_init: the port map after it differs\n"));
}

TEST(Replay, BadValuesOfAHostileRecordingAreASentence) {
    VlanLibrary library;
    FakeDriver driver;
    const Played played = replay(with(vlan_recording(), R"({"vid":100})", R"({"vid":"x"})"), library, &driver);
    EXPECT_THAT(played.outcome.reason, HasSubstr("line 3: call 1, adp_vlan_create: "));
    EXPECT_TRUE(played.outcome.is_trouble);
    EXPECT_EQ(played.outcome.library_calls, 0U);
}

TEST(DriverReplay, MakesTheDriverCallsInTheirOrder) {
    FakeDriver driver;
    Text text = vlan_recording();
    text.end(text.begin("Log_logging_func", R"({"level":1,"module":1,"word":"w","format":"%d","text":"5"})"));
    driver.functions["user_vlan_create"] = [](const void *const *arguments) {
        return value_of<uint32_t>(arguments[2]) == 100 ? 0 : -1;
    };
    std::string logged;
    driver.functions["Log_logging_func"] = [&logged](const void *const *arguments) {
        logged = value_of<const char *>(arguments[4]);
        return 0;
    };
    const Played played = replay_driver(text.recording(), driver);
    EXPECT_EQ(played.said, "");
    EXPECT_EQ(played.outcome.driver_calls, 2U);
    EXPECT_THAT(driver.asked, ElementsAre("user_vlan_create", "Log_logging_func"));
    EXPECT_EQ(logged, "5");
}

}  // namespace replay_test
