// Calls in pairs: which of their values make a difference.
#include "tools/adptrace/compare/values.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace values_test {

using adptrace::Difference;
using adptrace::differences_of;
using adptrace::Handles;
using adptrace::key_of;
using adptrace::Recording;
using testing::ElementsAre;
using testing::IsEmpty;

/** A recording of one call. */
struct Example {
    std::string call;
    std::string arguments;
    std::string result = "0";
    std::string outputs = "{}";

    [[nodiscard]] Recording recording() const {
        return Recording(R"({"adptrace":1,"byte_order":"big","word_bits":32,"started":"","command":[]}
{"process":1,"parent":0,"at":0,"program":"","library":null}
{"begin":1,"thread":1,"at":0,"call":")" +
                         call + R"(","arguments":)" + arguments + "}\n" + R"({"end":1,"at":0,"result":)" + result +
                         R"(,"outputs":)" + outputs + "}\n");
    }
};

std::vector<std::string> compared(const Example &a, const Example &b, Handles &handles, uint64_t unit = 1) {
    const Recording recording_a = a.recording();
    const Recording recording_b = b.recording();
    std::vector<std::string> lines;
    for (const Difference &each : differences_of(recording_a.calls()[0], recording_b.calls()[0], handles, unit)) {
        lines.push_back(each.what + ": " + each.a + " | " + each.b);
    }
    return lines;
}

std::vector<std::string> compared(const Example &a, const Example &b) {
    Handles handles;
    return compared(a, b, handles);
}

uint64_t key(const std::string &call, const std::string &arguments) {
    return key_of(Example{call, arguments}.recording().calls()[0]);
}

// adp_double_tag_get(intf, *mode) only writes the mode.
Example read_mode(const std::string &before, const std::string &after) {
    return {"adp_double_tag_get", "{\"intf\":1" + (before.empty() ? "" : ",\"mode\":" + before) + "}", "0",
            after.empty() ? "{}" : "{\"mode\":" + after + "}"};
}

TEST(Values, OfOutputsAreComparedIfTheyWereWritten) {
    EXPECT_THAT(compared(read_mode("", "3"), read_mode("", "4")), ElementsAre("output mode: 3 | 4"));
    EXPECT_THAT(compared(read_mode("", "3"), read_mode("", "")), ElementsAre("output mode: 3 | unchanged"));
    EXPECT_THAT(compared(read_mode("", "3"), read_mode("8", "")), ElementsAre("output mode: 3 | unchanged"));
}

TEST(Values, ThatACallLeavesAreNotCompared) {
    EXPECT_THAT(compared(read_mode("7", ""), read_mode("8", "")), IsEmpty());
    EXPECT_THAT(compared(read_mode("7", ""), read_mode("", "")), IsEmpty());
    // What was there before may have been written again.
    EXPECT_THAT(compared(read_mode("3", ""), read_mode("", "3")), IsEmpty());
    EXPECT_THAT(compared(read_mode("3", "0"), read_mode("", "")), IsEmpty());
}

TEST(Values, ThatWouldBeWrittenNowhereAreCompared) {
    EXPECT_THAT(compared(read_mode("null", ""), read_mode("null", "")), IsEmpty());
    EXPECT_THAT(compared(read_mode("null", ""), read_mode("", "")), ElementsAre("argument mode: null | an address"));
}

TEST(Values, OfPartsThatACallLeavesAreNotCompared) {
    const auto group = [](const std::string &before, const std::string &after) {
        return Example{"adp_get_agg_group", R"({"agg_intf":268435458,"max":4,"members":)" + before + "}", "0",
                       R"({"members":)" + after + "}"};
    };
    EXPECT_THAT(compared(group("[0,0,7,7]", "[3,4,7,7]"), group("[0,0,9]", "[3,4,9]")), IsEmpty());
    EXPECT_THAT(compared(group("[0,0,7,7]", "[3,4,7,7]"), group("[0,0,9]", "[3,5,9]")).size(), 1U);
    EXPECT_THAT(compared(group("[0,0,7,7]", "[3,4,7,7]"), group("[0,0,9]", "[3,4,8]")).size(), 1U);
}

TEST(Values, OfArgumentsAreCompared) {
    const auto add = [](const std::string &mac) {
        return Example{"adp_add_mac_addr", R"({"mac":")" + mac + R"(","intf":1,"vid":5,"is_static":1})"};
    };
    EXPECT_THAT(compared(add("0200"), add("0200")), IsEmpty());
    EXPECT_THAT(compared(add("0200"), add("0201")), ElementsAre("argument mac: 02:00:00:00:00:00 | 02:01:00:00:00:00"));
}

TEST(Values, OfCallsOfAnotherVersionAreCompared) {
    const auto call = [](const std::string &step, const std::string &output) {
        return Example{"adp_of_a_later_version", R"({"steps":[1,)" + step + "]}", "0", R"({"more":)" + output + "}"};
    };
    EXPECT_THAT(compared(call("2", "1"), call("2", "1")), IsEmpty());
    EXPECT_THAT(compared(call("2", "1"), call("3", "2")),
                ElementsAre("argument steps: [1, 2] | [1, 3]", "output more: 1 | 2"));
}

TEST(Values, OfResultsAreCompared) {
    EXPECT_THAT(compared({"adp_vlan_create", "{}", "0"}, {"adp_vlan_create", "{}", "102"}),
                ElementsAre("result: 0 | 102 (ADP_E_DRIVER)"));
}

TEST(Values, ThatAreNumbersOfTheMachineAreFailuresOrNot) {
    EXPECT_THAT(compared({"adp_pkt_init", "{}", "5"}, {"adp_pkt_init", "{}", "7"}), IsEmpty());
    EXPECT_THAT(compared({"adp_pkt_init", "{}", "5"}, {"adp_pkt_init", "{}", "-1"}), ElementsAre("result: 5 | -1"));
    EXPECT_THAT(compared({"get_nic_index", R"({"name":"eth0"})", "2"}, {"get_nic_index", R"({"name":"eth0"})", "3"}),
                IsEmpty());
}

TEST(Values, ThatAreLongAreCutToWhatDiffers) {
    std::string frame(200, '0');
    const Example a{"adp_receive_frame", R"({"frame":")" + frame + R"("})"};
    frame[150] = '1';
    const Example b{"adp_receive_frame", R"({"frame":")" + frame + R"("})"};
    const std::vector<std::string> lines = compared(a, b);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_LT(lines[0].size(), 200U);
    EXPECT_NE(lines[0].find(" | ..00:00:00:00:00:00:00:00:10:00"), std::string::npos) << lines[0];
}

Example give(const std::string &list) {
    return {"adp_stg_list", R"({"count":0})", "0", R"({"list":)" + list + R"(,"count":1})"};
}

Example take(const std::string &list) {
    return {"adp_stg_list_destroy", R"({"list":)" + list + R"(,"count":1})"};
}

TEST(Handles, StandForEachOther) {
    Handles handles;
    EXPECT_THAT(compared(give("1000"), give("2000"), handles, 1), IsEmpty());
    EXPECT_THAT(compared(give("1001"), give("2001"), handles, 2), IsEmpty());
    EXPECT_THAT(compared(take("1000"), take("2000"), handles, 3), IsEmpty());
    EXPECT_THAT(compared(take("1000"), take("2001"), handles, 4), ElementsAre("argument list: 1000 | 2001"));
    EXPECT_THAT(compared(take("1000"), take("1000"), handles, 4), ElementsAre("argument list: 1000 | 1000"));
    EXPECT_THAT(compared(take("5"), take("2000"), handles, 4), ElementsAre("argument list: 5 | 2000"));
}

TEST(Handles, CanBeGivenAgain) {
    Handles handles;
    EXPECT_THAT(compared(give("1000"), give("2000"), handles, 1), IsEmpty());
    EXPECT_THAT(compared(give("1000"), give("2001"), handles, 2), IsEmpty());
    EXPECT_THAT(compared(take("1000"), take("2001"), handles, 3), IsEmpty());
    EXPECT_THAT(compared(give("1001"), give("2001"), handles, 4), IsEmpty());
    EXPECT_THAT(compared(take("1000"), take("2001"), handles, 5), ElementsAre("argument list: 1000 | 2001"));
}

TEST(Handles, StayThroughOneCallOfTheLibrary) {
    Handles handles;
    const auto give_in_driver = [](const std::string &list) {
        return Example{"user_stg_list", R"({"unit":0,"zero":0,"count":0})", "0",
                       R"({"list":)" + list + R"(,"count":1})"};
    };
    EXPECT_THAT(compared(give_in_driver("1000"), give_in_driver("2000"), handles, 1), IsEmpty());
    EXPECT_THAT(compared(give("1000"), give("2001"), handles, 1), ElementsAre("output list: 1000 | 2001"));
}

TEST(Handles, OfTheEventQueueBecomeAPairWhenTheyAreUsed) {
    const auto send = [](const std::string &queue) {
        return Example{"equeue_send_ucast", R"({"queue":)" + queue + R"(,"message":[1,99,[2,3]],"timeout":-1})", "1"};
    };
    Handles handles;
    EXPECT_THAT(compared(send("1000"), send("2000"), handles, 1), IsEmpty());
    EXPECT_THAT(compared(send("1000"), send("2000"), handles, 2), IsEmpty());
    EXPECT_THAT(compared(send("1000"), send("3000"), handles, 3), ElementsAre("argument queue: 1000 | 3000"));
    EXPECT_THAT(compared(send("0"), send("4000")), ElementsAre("argument queue: 0 | 4000"));
}

TEST(Handles, ThatNoCallGaveAreNumbers) {
    EXPECT_THAT(compared(take("77"), take("77")), IsEmpty());
    EXPECT_THAT(compared(take("77"), take("78")), ElementsAre("argument list: 77 | 78"));
    EXPECT_THAT(compared(give("0"), give("1000")), ElementsAre("output list: 0 | 1000"));
}

TEST(Keys, AreOfNameAndArguments) {
    EXPECT_EQ(key("adp_vlan_create", R"({"vid":1})"), key("adp_vlan_create", R"({ "vid" : 1 })"));
    EXPECT_NE(key("adp_vlan_create", R"({"vid":1})"), key("adp_vlan_create", R"({"vid":2})"));
    EXPECT_NE(key("adp_vlan_create", R"({"vid":1})"), key("adp_vlan_destroy", R"({"vid":1})"));
}

TEST(Keys, LeaveOutHandlesAndWhatIsOnlyWritten) {
    EXPECT_EQ(key("adp_stg_list_destroy", R"({"list":1,"count":2})"),
              key("adp_stg_list_destroy", R"({"list":9,"count":2})"));
    EXPECT_EQ(key("adp_double_tag_get", R"({"intf":1,"mode":5})"), key("adp_double_tag_get", R"({"intf":1})"));
}

}  // namespace values_test
