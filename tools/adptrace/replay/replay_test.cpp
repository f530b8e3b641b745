// Replays of small recordings, with a library and a driver that do what a test says.
#include "tools/adptrace/replay/replay.h"

#include <adp/agg.h>
#include <adp/pkt.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <set>
#include <thread>

#include "platform/device_services.h"
#include "platform/netlink_api.h"
#include "tools/adptrace/command.h"
#include "tools/adptrace/replay/testing/fakes.h"

namespace replay_test {

using namespace adptrace::replay;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/** A library whose adp_vlan_create() creates it in the driver, and logs a failure. */
struct VlanLibrary : FakeLibrary {
    VlanLibrary() {
        functions["adp_vlan_create"] = [](const void *const *arguments) -> int64_t {
            const auto vid = value_of<uint32_t>(arguments[0]);
            const int32_t result = user_vlan_create(0, 0, vid);
            if (result != 0) {
                Log_logging_func(3, 1, "vlan", "%u fails", vid);
            }
            return result;
        };
        functions["adp_stg_default_get"] = [](const void *const *arguments) -> int64_t {
            return user_stg_default_get(0, 0, value_of<uint32_t *>(arguments[0]));
        };
    }
};

/** Lines 3 to 6. */
Text vlan_recording() {
    Text text;
    const uint64_t outer = text.begin("adp_vlan_create", R"({"vid":100})");
    const uint64_t inner = text.begin("user_vlan_create", R"({"unit":0,"zero":0,"vid":100})", outer);
    text.end(inner).end(outer);
    return text;
}

adptrace::Recording with(const Text &text, const std::string &from, const std::string &to) {
    std::string changed = text.text();
    const size_t at = changed.rfind(from);
    EXPECT_NE(at, std::string::npos) << from;
    return adptrace::Recording(changed.replace(at, from.size(), to));
}

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

TEST(Replay, ShowsBothSidesOfAnArgumentThatDiffersAndAsksTheDriverNoMore) {
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

TEST(Replay, ShowsResultsThatDiffer) {
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

TEST(Replay, ShowsOutputsThatDiffer) {
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

TEST(Replay, MemoryThatIsNotWrittenHasTheContentThatItHad) {
    VlanLibrary library;
    FakeDriver driver;  // writes nothing
    EXPECT_EQ(replay(default_group_recording("{}", "{}").recording(), library, &driver).said, "");
}

TEST(Replay, FindsAnotherCallInThePlaceOfARecordedOne) {
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

TEST(Replay, FindsACallTooMany) {
    VlanLibrary library;
    FakeDriver driver;
    Text text;
    text.end(text.begin("adp_vlan_create", R"({"vid":100})"));
    EXPECT_EQ(replay(text.recording(), library, &driver).said,
              "line 3: call 1, adp_vlan_create: the number of calls within it differs\n"
              "  recorded: no call\n  replayed: user_vlan_create {\"unit\":0,\"vid\":100,\"zero\":0}\n");
    EXPECT_THAT(driver.asked, IsEmpty());
}

TEST(Replay, FindsACallTooFew) {
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

TEST(Replay, StopsAtTheFirstDifferenceOrGoesOnAndCounts) {
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

TEST(Replay, TheLoggersTextIsCompared) {
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

TEST(Replay, CallsWithinACallbackAreMadeInIt) {
    VlanLibrary library;
    FakeDriver driver;
    library.functions["adp_register_agg_event_cb"] = [&library](const void *const *arguments) -> int64_t {
        const auto callback = value_of<adp_agg_event_cb_t>(arguments[0]);
        library.functions["adp_agg_linkscan_handle"] = [callback](const void *const *) -> int64_t {
            user_vlan_create(0, 0, 1);
            const adp_agg_event_t event{};
            callback(&event);
            user_vlan_create(0, 0, 3);
            return 0;
        };
        return 0;
    };
    Text text;
    text.end(text.begin("adp_register_agg_event_cb", R"({"callback":"set"})"));
    const uint64_t outer = text.begin("adp_agg_linkscan_handle", R"({"intf":4,"is_up":1})");
    text.end(text.begin("user_vlan_create", R"({"unit":0,"zero":0,"vid":1})", outer));
    const uint64_t inner = text.begin("adp_vlan_create", R"({"vid":2})", outer);
    text.end(text.begin("user_vlan_create", R"({"unit":0,"zero":0,"vid":2})", inner)).end(inner);
    text.end(text.begin("user_vlan_create", R"({"unit":0,"zero":0,"vid":3})", outer)).end(outer);
    const Played played = replay(text.recording(), library, &driver);
    EXPECT_EQ(played.said, "");
    EXPECT_EQ(played.outcome.library_calls, 3U);
    EXPECT_EQ(driver.asked.size(), 3U);
}

TEST(Replay, ACallbackThatIsNotMadeIsADifference) {
    VlanLibrary library;
    FakeDriver driver;
    Text text;
    const uint64_t outer = text.begin("adp_vlan_create", R"({"vid":100})");
    text.end(text.begin("user_vlan_create", R"({"unit":0,"zero":0,"vid":100})", outer));
    text.end(text.begin("adp_vlan_create", R"({"vid":2})", outer)).end(outer);
    EXPECT_EQ(replay(text.recording(), library, &driver).said,
              "line 6: call 3, adp_vlan_create, within call 1, adp_vlan_create: the call differs\n"
              "  recorded: adp_vlan_create {\"vid\":2}\n  replayed: no call\n");
}

TEST(Replay, TheReceiverOfLinkChangesMayCallTheDriverAndGivesTheRecordedResult) {
    FakeLibrary library;
    FakeDriver driver;
    adp_link_event_cb_t receiver = nullptr;
    library.functions["adp_linkscan_register"] = [&receiver](const void *const *arguments) -> int64_t {
        receiver = value_of<adp_link_event_cb_t>(arguments[0]);
        return 0;
    };
    library.functions["linkscan_handle_cb"] = [&receiver](const void *const *) -> int64_t { return receiver(0, 4, 1); };
    Text text;
    text.end(text.begin("adp_linkscan_register", R"({"handler":"set"})"));
    const uint64_t outer = text.begin("linkscan_handle_cb", R"({"unit":0,"port":4,"info":[0,0,0,1]})", 0, 2);
    text.end(text.begin("user_vlan_create", R"({"unit":0,"zero":0,"vid":1})", outer, 2)).end(outer, "17");
    const Played played = replay(text.recording(), library, &driver);
    EXPECT_EQ(played.said, "");
    EXPECT_THAT(driver.asked, ElementsAre("user_vlan_create"));
}

TEST(Replay, EachThreadOfTheRecordingHasOneOfItsOwn) {
    FakeLibrary library;
    std::vector<std::thread::id> ids;
    library.functions["adp_igmp_init"] = [&ids](const void *const *) -> int64_t {
        ids.push_back(std::this_thread::get_id());
        return 0;
    };
    Text text;
    for (const uint32_t thread : {1U, 2U, 1U, 3U}) {
        text.end(text.begin("adp_igmp_init", "{}", 0, thread));
    }
    EXPECT_EQ(replay(text.recording(), library, nullptr).said, "");
    ASSERT_EQ(ids.size(), 4U);
    EXPECT_EQ(ids[0], ids[2]);
    EXPECT_EQ(std::set(ids.begin(), ids.end()).size(), 3U);
}

/** A library with lists whose handles the driver gives. */
struct ListLibrary : FakeLibrary {
    ListLibrary() {
        functions["adp_stg_list"] = [](const void *const *arguments) -> int64_t {
            return user_stg_list(0, 0, value_of<adp_word_t *>(arguments[0]), value_of<int32_t *>(arguments[1]));
        };
        functions["adp_stg_list_destroy"] = [](const void *const *arguments) -> int64_t {
            return user_stg_list_destroy(0, 0, value_of<adp_word_t>(arguments[0]), value_of<int32_t>(arguments[1]));
        };
    }
};

Text list_recording(const std::string &handle, const std::string &destroyed) {
    Text text("big", 32);
    const uint64_t first = text.begin("adp_stg_list", "{}");
    const std::string outputs = R"({"list":)" + handle + R"(,"count":2})";
    text.end(text.begin("user_stg_list", R"({"unit":0,"zero":0})", first), "0", outputs).end(first, "0", outputs);
    const std::string arguments = R"("list":)" + destroyed + R"(,"count":2})";
    const uint64_t second = text.begin("adp_stg_list_destroy", "{" + arguments);
    text.end(text.begin("user_stg_list_destroy", R"({"unit":0,"zero":0,)" + arguments, second)).end(second);
    return text;
}

TEST(Replay, HandlesOfListsArePairedWithThoseOfTheRecording) {
    ListLibrary library;
    FakeDriver driver;
    driver.functions["user_stg_list"] = [](const void *const *arguments) {
        *value_of<adp_word_t *>(arguments[2]) = 0x1234;
        *value_of<int32_t *>(arguments[3]) = 2;
        return 0;
    };
    adp_word_t destroyed = 0;
    driver.functions["user_stg_list_destroy"] = [&destroyed](const void *const *arguments) {
        destroyed = value_of<adp_word_t>(arguments[2]);
        return 0;
    };
    EXPECT_EQ(replay(list_recording("77", "77").recording(), library, &driver).said, "");
    EXPECT_EQ(destroyed, 0x1234U);
    EXPECT_EQ(replay(list_recording("77", "78").recording(), library, &driver).said, "");
    EXPECT_EQ(destroyed, 78U);
    EXPECT_EQ(replay(list_recording("77", "77").recording(), library, nullptr).said, "");
    EXPECT_EQ(replay_driver(list_recording("77", "77").recording(), driver).said, "");
    EXPECT_EQ(destroyed, 0x1234U);
}

/** A library that sends a frame as libadp does. */
struct SendingLibrary : FakeLibrary {
    int index = 0;
    int descriptor = -1;
    SendingLibrary() {
        functions["adp_transmit_frame"] = [this](const void *const *) -> int64_t {
            descriptor = socket(AF_PACKET, SOCK_RAW, 0x0800);
            ifreq request = {};
            index = ioctl(descriptor, SIOCGIFINDEX, &request) == 0 ? request.ifr_ifindex : -1;
            const char frame[64] = {};
            const sockaddr_ll address{};
            const ssize_t sent = sendto(descriptor, frame, sizeof frame, 0,
                                        reinterpret_cast<const sockaddr *>(&address), sizeof address);
            close(descriptor);
            return sent == sizeof frame ? 0 : -1;
        };
    }
};

Text sending_recording(const std::string &result) {
    Text text;
    text.end(text.begin("adp_transmit_frame",
                        R"({"frame":"0180c2000001020304050607","length":12,"unused":0,"intf":1,"opcode":3})"),
             result);
    return text;
}

TEST(Replay, FramesAreNotSentButAnsweredAsRecorded) {
    SendingLibrary library;
    EXPECT_EQ(replay(sending_recording("0").recording(), library, nullptr).said, "");
    EXPECT_GT(library.index, 0);
    EXPECT_EQ(fcntl(library.descriptor, F_GETFD), -1);
    EXPECT_EQ(replay(sending_recording("-1").recording(), library, nullptr).said, "");
    EXPECT_EQ(library.index, -1);
}

TEST(Replay, FramesAreSentIfWanted) {
    SendingLibrary library;
    const Played played = replay(sending_recording("0").recording(), library, nullptr, {.is_to_send_frames = true});
    EXPECT_EQ(library.index, -1);  // there is no interface without a name
    EXPECT_EQ(played.outcome.differences, 1U);
}

TEST(Replay, OtherDescriptorsOfTheProgramWorkAsEver) {
    const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
    ASSERT_GE(descriptor, 0);
    EXPECT_EQ(close(descriptor), 0);
    EXPECT_EQ(close(descriptor), -1);
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
