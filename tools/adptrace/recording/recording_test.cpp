// Recordings as the format says, and texts that are none: each refused with a sentence.
#include "tools/adptrace/recording/recording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tools/adptrace/recording/testing/lines.h"

namespace recording_test {
namespace {

using adptrace::BadRecording;
using adptrace::Call;
using adptrace::kNone;
using adptrace::Recording;
using adptrace::testing::kHeader;
using adptrace::testing::kStart;

std::string begin(uint64_t number, uint64_t within = 0, const std::string &call = "adp_vlan_create", int64_t at = 10,
                  int64_t process = 0) {
    return adptrace::testing::begin({number, within, call, R"({"vid":100})", at, 1, process});
}

std::string end(uint64_t number, const std::string &result = "0", int64_t at = 20) {
    return adptrace::testing::end({number, result, at, "{}", 0});
}

std::string reason(const std::string &text) {
    try {
        const Recording recording(text);
    } catch (const BadRecording &error) {
        return error.what();
    }
    return "accepted";
}

TEST(Recording, HasHeaderAndProcesses) {
    const Recording recording(kStart + R"({"process":41,"parent":40,"at":5,"program":"/bin/sh","library":null})"
                                       "\n"
                                       R"({"exit":41,"at":7,"status":3})"
                                       "\n"
                                       R"({"exit":40,"at":8,"signal":11})"
                                       "\n");
    EXPECT_TRUE(recording.header().is_big_endian);
    EXPECT_EQ(recording.header().word_bits, 32U);
    EXPECT_EQ(recording.header().started, "2024-05-06T07:08:09Z");
    EXPECT_THAT(recording.header().command, testing::ElementsAre("agent", "-v"));
    ASSERT_EQ(recording.processes().size(), 2U);
    EXPECT_EQ(recording.processes()[0].library, "a1b2");
    EXPECT_EQ(recording.processes()[0].signal, 11);
    EXPECT_EQ(recording.processes()[1].library, "");
    EXPECT_EQ(recording.processes()[1].parent, 40);
    EXPECT_EQ(recording.processes()[1].status, 3);
    EXPECT_EQ(recording.processes()[1].ended, 7);
    EXPECT_FALSE(recording.is_cut());
}

TEST(Recording, JoinsBeginAndEnd) {
    const Recording recording(kStart + begin(1) + begin(2, 1, "user_vlan_create", 11) + end(2, "-9", 12) +
                              end(1, "102", 13) + begin(3, 0, "adp_of_tomorrow", 14));
    const auto &calls = recording.calls();
    ASSERT_EQ(calls.size(), 3U);
    EXPECT_EQ(calls[0].name, "adp_vlan_create");
    EXPECT_EQ(calls[0].kind, Call::Kind::kLibrary);
    EXPECT_EQ(calls[0].within, kNone);
    EXPECT_EQ(calls[0].ended, 13);
    EXPECT_EQ(calls[1].kind, Call::Kind::kImported);
    EXPECT_EQ(calls[1].within, 0U);
    EXPECT_EQ(calls[1].depth, 1U);
    EXPECT_EQ(calls[1].line, 4U);
    EXPECT_EQ(calls[2].name, "adp_of_tomorrow");
    EXPECT_EQ(calls[2].kind, Call::Kind::kUnknown);
    EXPECT_FALSE(calls[2].has_returned);
    EXPECT_EQ(arguments_of(calls[0])["vid"], 100);
    EXPECT_EQ(result_of(calls[1]), -9);
    EXPECT_TRUE(result_of(calls[2]).is_null());
    EXPECT_TRUE(outputs_of(calls[2]).empty());
}

TEST(Recording, IsTheSameAfterAMove) {
    Recording recording(kStart + begin(1, 0, "adp_of_tomorrow"));
    const Recording moved = std::move(recording);
    EXPECT_EQ(moved.calls()[0].name, "adp_of_tomorrow");
    EXPECT_EQ(arguments_of(moved.calls()[0])["vid"], 100);
}

TEST(Recording, KnowsWhatBoardsAndFramesComeBefore) {
    const Recording recording(kStart +
                              R"({"board":[],"at":1})"
                              "\n" +
                              begin(1) +
                              R"({"frame":"sent","within":1,"thread":1,"at":11,"interface":"eth0","octets":"00aB"})"
                              "\n" +
                              end(1));
    ASSERT_EQ(recording.boards().size(), 1U);
    EXPECT_EQ(recording.boards()[0].before, 0U);
    EXPECT_EQ(recording.boards()[0].text, R"({"board":[],"at":1})");
    ASSERT_EQ(recording.frames().size(), 1U);
    EXPECT_EQ(recording.frames()[0].before, 1U);
    EXPECT_EQ(recording.frames()[0].within, 0U);
    EXPECT_TRUE(recording.frames()[0].is_sent);
    EXPECT_EQ(recording.frames()[0].octets, "00aB");
}

TEST(Recording, NumbersCallsInEachProcess) {
    const std::string other = R"({"process":41,"parent":40,"at":5,"program":"/bin/sh","library":null})"
                              "\n";
    const std::string again = R"({"process":41,"parent":40,"at":6,"program":"/bin/true","library":null})"
                              "\n";
    const Recording recording(kStart + begin(1) + other + begin(1, 0, "adp_vlan_create", 10, 41) + again +
                              begin(1, 0, "adp_vlan_create", 3, 41) + end(1));
    EXPECT_EQ(recording.calls()[0].process, 0U);
    EXPECT_TRUE(recording.calls()[0].has_returned);
    EXPECT_EQ(recording.calls()[1].process, 1U);
    EXPECT_FALSE(recording.calls()[1].has_returned) << "it is the first program's";
    EXPECT_EQ(recording.calls()[2].process, 2U) << "another program with the same id";
}

TEST(Recording, IgnoresUnknownMembersAndLines) {
    const Recording recording(
        kStart +
        R"({"weather":"fine","at":"noon"})"
        "\n{}\n" +
        R"({"begin":1,"mood":{"deep":[1]},"mood":7,"thread":1,"at":1,"call":"adp_x","arguments":{}})"
        "\n" +
        end(1));
    EXPECT_EQ(recording.calls().size(), 1U);
}

TEST(Recording, TakesACutLastLine) {
    const std::string whole = kStart + begin(1) + end(1);
    for (size_t size = kStart.size() + 1; size < whole.size() - 1; ++size) {
        const Recording recording(whole.substr(0, size));
        const bool is_whole = size == kStart.size() + begin(1).size() || size == kStart.size() + begin(1).size() - 1;
        EXPECT_EQ(recording.is_cut(), !is_whole) << size;
    }
    EXPECT_FALSE(Recording(whole.substr(0, whole.size() - 1)).is_cut()) << "only the end of the line is missing";
}

TEST(Recording, RefusesWhatIsNoRecording) {
    EXPECT_EQ(reason(""), "the recording is empty.");
    EXPECT_EQ(reason("{}"), "line 1 is no header of a recording, which begins with 'adptrace'.");
    EXPECT_EQ(reason("\x7f"
                     "ELF"),
              "line 1 is no JSON object.");
    EXPECT_EQ(reason(kHeader.substr(0, 20)), "line 1 is no JSON object.");
    EXPECT_EQ(reason(R"({"adptrace":2,"reels":3})"),
              "line 1 says that the recording has version 2; this adptrace knows versions up to 1, a newer one is "
              "needed.");
    EXPECT_EQ(reason(R"({"adptrace":0})"), "line 1 needs a number from 1 to 18446744073709551615 as 'adptrace'.");
    EXPECT_EQ(reason(R"({"adptrace":1,"byte_order":"middle","word_bits":32,"started":"","command":[]})"),
              "line 1 needs \"big\" or \"little\" as 'byte_order'.");
    EXPECT_EQ(reason(R"({"adptrace":1,"byte_order":"big","word_bits":48,"started":"","command":[]})"),
              "line 1 needs 32 or 64 as 'word_bits'.");
    EXPECT_EQ(reason(R"({"adptrace":1,"byte_order":"big","word_bits":32,"started":"","command":[1]})"),
              "line 1 needs texts in 'command'.");
    EXPECT_EQ(reason(kHeader + begin(1)), "line 2 comes before the line of its process.");
}

struct BadLine {
    std::string line;
    const char *reason;
};

/** Each is line 5, after a call 1 of thread 1 that is under way and a call 2 that has ended. */
const BadLine kBadLines[] = {
    {"nonsense", "is no JSON object."},
    {"", "is no JSON object."},
    {"[1]", "is no JSON object."},
    {std::string("{}\0{}", 5), "is no JSON object."},
    {R"({"begin":3} x)", "is no JSON object."},
    {"{\"begin\":\"\xff\"}", "is no JSON object."},
    {R"({"x":1e999})", "is no JSON object."},
    {R"({"x":")" + std::string(1 << 20, 'a') + R"("})", "is longer than 1 MiB."},
    {R"({"x":)" + std::string(1000, '[') + std::string(1000, ']') + "}",
     "has values that are nested more than 32 deep."},
    {R"({"begin":3,"begin":4})", "has the member 'begin' twice."},
    {R"({"adptrace":1})", "is another header."},
    {R"({"begin":0})", "needs a number from 1 to 18446744073709551615 as 'begin'."},
    {R"({"begin":-1})", "needs a number from 1 to 18446744073709551615 as 'begin'."},
    {R"({"begin":1.5})", "needs a number from 1 to 18446744073709551615 as 'begin'."},
    {R"({"begin":18446744073709551616})", "needs a number from 1 to 18446744073709551615 as 'begin'."},
    {R"({"begin":"3"})", "needs a number from 1 to 18446744073709551615 as 'begin'."},
    {R"({"begin":3})", "needs a number from 1 to 4294967295 as 'thread'."},
    {R"({"begin":3,"thread":4294967296})", "needs a number from 1 to 4294967295 as 'thread'."},
    {R"({"begin":3,"thread":1})", "needs a text as 'call'."},
    {R"({"begin":3,"thread":1,"call":""})", "needs the name of a call as 'call'."},
    {R"({"begin":3,"thread":1,"call":"a b"})", "needs the name of a call as 'call'."},
    {R"({"begin":3,"thread":1,"call":"adp\u005fx"})", "needs the name of a call as 'call'."},
    {R"({"begin":3,"thread":1,"call":"adp_x"})", "needs an object as 'arguments'."},
    {R"({"begin":3,"thread":1,"call":"adp_x","arguments":[]})", "needs an object as 'arguments'."},
    {R"({"begin":3,"thread":1,"call":"adp_x","arguments":{}})",
     "needs a number from 0 to 9223372036854775807 as 'at'."},
    {R"({"begin":3,"thread":1,"at":19,"call":"adp_x","arguments":{}})",
     "is earlier than a line of the same thread before it."},
    {R"({"begin":1,"thread":1,"at":20,"call":"adp_x","arguments":{}})", "begins call 1, which has begun before."},
    {R"({"begin":2,"thread":1,"at":20,"call":"adp_x","arguments":{}})", "begins call 2, which has begun before."},
    {R"({"begin":3,"of":41,"thread":1})", "belongs to process 41, which has no line."},
    {R"({"begin":3,"thread":1,"within":9})", "is within call 9, which has not begun."},
    {R"({"begin":3,"thread":1,"within":2})", "is within call 2, which has ended."},
    {R"({"begin":3,"thread":1,"within":3})", "is within call 3, which has not begun."},
    {R"({"begin":3,"thread":2,"within":1})", "is within call 1, which another thread makes."},
    {R"({"end":3})", "ends call 3, which has not begun."},
    {R"({"end":2})", "ends call 2, which has ended before."},
    {R"({"end":1,"at":25})", "has no 'result'."},
    {R"({"end":1,"result":0})", "needs an object as 'outputs'."},
    {R"({"end":1,"result":0,"outputs":{},"at":1})", "is earlier than a line of the same thread before it."},
    {R"({"process":0})", "needs a number from 1 to 2147483647 as 'process'."},
    {R"({"process":41,"parent":40,"at":1})", "needs a text as 'program'."},
    {R"({"process":41,"parent":40,"at":1,"program":"x","library":7})", "needs a text as 'library'."},
    {R"({"board":{}})", "needs an array as 'board'."},
    {R"({"frame":"lost"})", R"(needs "sent" or "received" as 'frame'.)"},
    {R"({"frame":"sent","thread":1,"at":25,"interface":"eth0","octets":"012"})", "needs hexadecimal text as 'octets'."},
    {R"({"frame":"sent","thread":1,"at":25,"interface":"eth0","octets":"0x"})", "needs hexadecimal text as 'octets'."},
    {R"({"frame":"sent","thread":1,"within":2})", "is within call 2, which has ended."},
    {R"({"exit":41})", "belongs to process 41, which has no line."},
    {R"({"exit":40,"at":1})", "needs a number from 0 to 255 as 'status'."},
    {R"({"exit":40,"at":1,"signal":65})", "needs a number from 1 to 64 as 'signal'."},
};

TEST(Recording, RefusesBadLines) {
    const std::string before = kStart + begin(1) + begin(2, 1) + end(2);
    for (const BadLine &bad : kBadLines) {
        EXPECT_EQ(reason(before + bad.line + "\n"), "line 6 " + std::string(bad.reason)) << bad.line.substr(0, 100);
    }
    const std::string exit = R"({"exit":40,"at":30,"status":0})"
                             "\n";
    EXPECT_EQ(reason(before + exit + exit), "line 7 says that process 40 exited, as line 6 does.");
}

TEST(Recording, LimitsHowDeepCallsAreNested) {
    std::string text = kStart + begin(1);
    for (uint64_t number = 2; number <= 201; ++number) {
        text += begin(number, number - 1);
    }
    EXPECT_EQ(Recording(text).calls().back().depth, adptrace::kMaxDepth);
    EXPECT_EQ(reason(text + begin(202, 201)), "line 204 is within more than 200 other calls.");
}

TEST(Recording, NamesTheFile) {
    try {
        Recording::of_file("/nonexistent");
        FAIL();
    } catch (const BadRecording &error) {
        EXPECT_STREQ(error.what(), "/nonexistent: cannot be opened: No such file or directory.");
    }
    EXPECT_THROW(Recording::of_file("/"), BadRecording);
}

struct Outcome {
    const char *call;
    const char *result;
    bool has_failed;
};

constexpr Outcome kOutcomes[] = {
    {"adp_vlan_create", "0", false},
    {"adp_vlan_create", "102", true},
    {"adp_vlan_create", "-1", true},
    {"adp_intf_2_phy_id", "7", false},
    {"adp_intf_2_phy_id", "-1", true},
    {"adp_intf_port_attributes", "4294967295", false},
    {"user_vlan_create", "0", false},
    {"user_vlan_create", "-9", true},
    {"user_vlan_create", "1", true},
    {"equeue_send_ucast", "1", false},
    {"equeue_send_ucast", "0", true},
    {"sys_trace_get", "1", false},
    {"sys_trace_get", "-1", true},
    {"onu_mac2str", "null", true},
    {"onu_mac2str", R"("00:01")", false},
    {"adp_fp_find_list_node_by_entity", "null", true},
    {"adp_fp_find_list_node_by_entity", "{}", false},
    {"adp_bcmtag_dest_port_intf_2_phy", "null", false},
    {"adp_of_tomorrow", "-1", true},
    {"adp_of_tomorrow", "1", false},
    {"user_vlan_create", "{}", false},
    {"user_vlan_create", "1.5", false},
};

TEST(Recording, KnowsWhichCallsFailed) {
    for (const Outcome &outcome : kOutcomes) {
        const Recording recording(kStart + begin(1, 0, outcome.call) + end(1, outcome.result));
        EXPECT_EQ(has_failed(recording.calls()[0]), outcome.has_failed) << outcome.call << " " << outcome.result;
    }
    EXPECT_FALSE(has_failed(Recording(kStart + begin(1, 0, "onu_mac2str")).calls()[0])) << "it has not returned";
}

}  // namespace
}  // namespace recording_test
