// The whole start-up, which step stops it and with what message; and the steps that are one or two driver calls.
#include "board/testing/startup.h"

namespace {

using namespace startup_test;
using ::testing::ElementsAre;
using ::testing::Not;
using ::testing::StartsWith;

constexpr int32_t kResults[] = {0, 1, 77, INT32_MAX, -1, -33, INT32_MIN};

/** The driver's calls of a start-up that finds the table of reserved addresses empty; all of them succeed. */
Lines all_lines() {
    Lines lines;
    for (uint32_t index = 0; index < kEntries; ++index) {
        lines.push_back(read_line(index));
    }
    for (uint32_t index = 0; index < kAddresses; ++index) {
        lines.push_back(read_line(index));
        lines.push_back(write_line(index, reserved(index)));
    }
    return lines + Lines{line_of("user_field_init"), line_of("user_trunk_init"),  line_of("user_stg_init"),
                         line_of("user_lldp_init"),  line_of("user_mirror_init"), turn_on_line(125)} +
           igmp_lines() + Lines{turn_on_line(89), line_of("user_dos_attack_prevent_init")};
}

/** The lines up to and including the last one that equals @p last. */
Lines lines_to(const std::string &last) {
    const Lines lines = all_lines();
    const auto end = std::find(lines.rbegin(), lines.rend(), last).base();
    EXPECT_NE(end, lines.begin()) << last;
    return {lines.begin(), end};
}

class StartUp : public library_test::LibraryTest {
  protected:
    void SetUp() override { start_with_empty_table(); }

    static void start_with_empty_table() {
        start_over();
        driver().on("user_l2_bpdu_get").sets_bytes("mac", kFree);
    }
};

TEST_F(StartUp, BringsTheFeaturesUpInOrder) {
    const std::string tables = library_test::table_bytes();
    EXPECT_EQ(outcome_of(adp_modules_init), Outcome{});
    EXPECT_EQ(driver().trace(), all_lines());
    EXPECT_EQ(library_test::table_bytes(), tables);
}

TEST_F(StartUp, ReturnsTheLastStepsResult) {
    for (const int32_t result : {0, 1, 102, INT32_MAX}) {
        start_with_empty_table();
        driver().on("user_dos_attack_prevent_init").returns(result);
        EXPECT_EQ(outcome_of(adp_modules_init), (Outcome{result, "", ""}));
        EXPECT_EQ(driver().trace(), all_lines());
    }
}

/** The IGMP step prints about its own calls; the last line shows that start-up itself prints nothing. */
TEST_F(StartUp, PositiveResultStopsNoStep) {
    constexpr int32_t kPositive = 7;
    const Lines lines = all_lines();
    for (size_t number = 0; number < lines.size(); ++number) {
        if (lines[number].starts_with("user_l2_bpdu_set")) {
            continue;  // any result but 0 of this write is a failure of its step, which is -1
        }
        start_with_empty_table();
        driver().fail_call(number, kPositive);
        const Outcome outcome = outcome_of(adp_modules_init);
        EXPECT_EQ(outcome.result, number + 1 == lines.size() ? kPositive : 0) << lines[number];
        EXPECT_THAT(outcome.out, Not(StartsWith("switch"))) << lines[number];
        EXPECT_THAT(outcome.out, Not(::testing::HasSubstr("init fail"))) << lines[number];
        EXPECT_EQ(outcome.err, "") << lines[number];
        EXPECT_EQ(driver().trace(), lines) << lines[number];
    }
}

TEST_F(StartUp, StopsWhenAReservedAddressCannotBeWritten) {
    driver().on("user_l2_bpdu_set").once();
    driver().on("user_l2_bpdu_set").returns(-5);
    EXPECT_EQ(outcome_of(adp_modules_init), (Outcome{-1,
                                                     "l2_user_entry_add_all_bpdu 156 i = 1 ERROR\n"
                                                     "l2_user_entry_init l2_user_entry_add_all_bpdu  ERROR!\n"
                                                     "adp_modules_init ERROR\n",
                                                     ""}));
    EXPECT_EQ(driver().trace(), lines_to(write_line(1, reserved(1))));
}

TEST_F(StartUp, StopsWhenAReservedAddressCannotBeCleared) {
    driver().on("user_l2_bpdu_get").sets_bytes("mac", reserved(0));
    driver().fail_every("user_l2_bpdu_set", 5);
    EXPECT_EQ(outcome_of(adp_modules_init), (Outcome{-1,
                                                     "l2_user_entry_del_all_bpdu 96 ret = 5  i = 0 ERROR\n"
                                                     "l2_user_entry_init l2_user_entry_del_all_bpdu ERROR!\n"
                                                     "adp_modules_init ERROR\n",
                                                     ""}));
    EXPECT_THAT(driver().trace(), ElementsAre(read_line(0), write_line(0, kFree)));
}

TEST_F(StartUp, StopsWhenTheFieldProcessorFailsThreeTimes) {
    driver().on("user_field_init").once().returns(-5);
    driver().on("user_field_init").once().returns(-6);
    driver().on("user_field_init").once().returns(-7);
    EXPECT_EQ(outcome_of(adp_modules_init),
              (Outcome{-7, "adp_fp_init:[00428]  error funtion ret=-6 \nswitch fp init fail \n", ""}));
    const std::string line = line_of("user_field_init");
    EXPECT_EQ(driver().trace(), lines_to(line) + Lines(2, line));
}

TEST_F(StartUp, ContinuesWhenTheFieldProcessorsThirdTrySucceeds) {
    for (const int32_t third : {0, 3}) {
        start_with_empty_table();
        driver().on("user_field_init").once().returns(-5);
        driver().on("user_field_init").once().returns(-6);
        driver().on("user_field_init").once().returns(third);
        EXPECT_EQ(outcome_of(adp_modules_init), (Outcome{0, "adp_fp_init:[00428]  error funtion ret=-6 \n", ""}));
        Lines lines = all_lines();
        const std::string line = line_of("user_field_init");
        lines.insert(std::find(lines.begin(), lines.end(), line), 2, line);
        EXPECT_EQ(driver().trace(), lines);
    }
}

TEST_F(StartUp, IgnoresFailuresToTurnControlsOn) {
    driver().fail_every("user_switch_control_set", -5);
    EXPECT_EQ(outcome_of(adp_modules_init), (Outcome{0,
                                                     "ret:-5 bcmSwitchIgmpReservedMcastEnable:215 \n"
                                                     "set igmp packet to cpu fail ret:-5\n",
                                                     ""}));
    EXPECT_EQ(driver().trace(), all_lines());
}

/** A driver call whose failure stops the start-up, the last call then made, and what is printed for the result -5. */
struct Stop {
    const char *name;
    const char *call;
    std::string last;
    const char *out;
    const char *err;
};

const Stop kStops[] = {
    {"Trunk", "user_trunk_init", line_of("user_trunk_init"), "switch trunk init fail \n", ""},
    {"SpanningTree", "user_stg_init", line_of("user_stg_init"), "switch stg init fail \n",
     "adp_stg_init 251: MSTP set bcmSwitchCpuProtoBpduPriority failed!\n"},
    {"Lldp", "user_lldp_init", line_of("user_lldp_init"), "switch lldp init fail\n",
     "adp_lldp_init 265:LLDP set default handle failed!\n"},
    {"Mirror", "user_mirror_init", turn_on_line(125), "switch mirror init fail \n", ""},
    {"IgmpSnooping", "user_igmp_snooping_init", line_of("user_igmp_snooping_init"), "switch igmp init fail \n", ""},
    {"Multicast", "User_mcast_init", line_of("User_mcast_init"), "switch igmp init fail \n", ""},
    {"IgmpToCpu", "user_switch_control_get", kReadIgmpToCpu,
     "ret:-5 bcmSwitchIgmpPktToCpu:92 enable:0 \n ret:-5 enable:0\nswitch igmp init fail \n", ""},
    {"DenialOfService", "user_dos_attack_prevent_init", line_of("user_dos_attack_prevent_init"),
     "switch dos init fail \n", ""},
};

void PrintTo(const Stop &stop, std::ostream *out) {
    *out << stop.name;
}

class StartUpStop : public StartUp, public ::testing::WithParamInterface<Stop> {};

TEST_P(StartUpStop, PrintsItsMessageAndMakesNoLaterCall) {
    driver().fail_every(GetParam().call, -5);
    EXPECT_EQ(outcome_of(adp_modules_init), (Outcome{-5, GetParam().out, GetParam().err}));
    EXPECT_EQ(driver().trace(), lines_to(GetParam().last));
}

TEST_P(StartUpStop, ReturnsTheStepsResult) {
    for (const int32_t result : {-1, -102, INT32_MIN}) {
        start_with_empty_table();
        driver().fail_every(GetParam().call, result);
        EXPECT_EQ(outcome_of(adp_modules_init).result, result);
        EXPECT_EQ(driver().trace(), lines_to(GetParam().last));
    }
}

INSTANTIATE_TEST_SUITE_P(Steps, StartUpStop, ::testing::ValuesIn(kStops),
                         [](const auto &stop) { return stop.param.name; });

/** A step that returns its driver call's result. */
struct SimpleStep {
    const char *name;
    adp_status_t (*run)();
    const char *call;
    Lines after;  // later calls, made whatever the result
    const char *err_if_negative;
};

const SimpleStep kSimpleSteps[] = {
    {"Trunk", adp_trunk_init, "user_trunk_init", {}, ""},
    {"SpanningTree",
     adp_stg_init,
     "user_stg_init",
     {},
     "adp_stg_init 251: MSTP set bcmSwitchCpuProtoBpduPriority failed!\n"},
    {"Lldp", adp_lldp_init, "user_lldp_init", {}, "adp_lldp_init 265:LLDP set default handle failed!\n"},
    {"Mirror", adp_mirror_init, "user_mirror_init", {turn_on_line(125)}, ""},
    {"DenialOfService", adp_dos_attack_init, "user_dos_attack_prevent_init", {}, ""},
};

void PrintTo(const SimpleStep &step, std::ostream *out) {
    *out << step.name;
}

class StartUpStep : public library_test::LibraryTest, public ::testing::WithParamInterface<SimpleStep> {};

TEST_P(StartUpStep, ReturnsTheDriversResult) {
    const SimpleStep &step = GetParam();
    for (const int32_t result : kResults) {
        driver().on(step.call).returns(result);
        EXPECT_EQ(outcome_of(step.run), (Outcome{result, "", result < 0 ? step.err_if_negative : ""}));
        EXPECT_EQ(driver().take(), Lines{line_of(step.call)} + step.after);
    }
}

INSTANTIATE_TEST_SUITE_P(Steps, StartUpStep, ::testing::ValuesIn(kSimpleSteps),
                         [](const auto &step) { return step.param.name; });

TEST_F(StartUp, MirrorStepIgnoresItsControl) {
    driver().fail_every("user_switch_control_set", -5);
    EXPECT_EQ(outcome_of(adp_mirror_init), Outcome{});
}

TEST_F(StartUp, Ipv6StepIgnoresItsControl) {
    for (const int32_t result : kResults) {
        driver().on("user_switch_control_set").returns(result);
        EXPECT_EQ(outcome_of(ipv6_user_init), Outcome{});
        EXPECT_THAT(driver().take(), ElementsAre(turn_on_line(89)));
    }
}

}  // namespace
