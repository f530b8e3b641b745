// Start-up of IGMP: which of its six driver calls stop it, which only print, and which one decides.
#include "board/testing/startup.h"

namespace {

using namespace startup_test;

constexpr const char *kFirstReadFailed = "ret:-5 bcmSwitchIgmpPktToCpu:92 enable:0 \n";

class IgmpStart : public library_test::LibraryTest {};

TEST_F(IgmpStart, SendsIgmpToTheCpu) {
    EXPECT_EQ(outcome_of(adp_igmp_init), Outcome{});
    EXPECT_EQ(driver().trace(), igmp_lines());
}

/** One of the calls returns something other than 0: how many calls are made, and what is returned and printed. */
struct OneFailure {
    const char *name;
    size_t number;
    int32_t failure;
    size_t calls;
    Outcome outcome;
};

const OneFailure kFailures[] = {
    {"NegativeSnooping", 0, -5, 1, {-5, "", ""}},
    {"PositiveSnooping", 0, 5, 6, {0, "", ""}},
    {"LowestSnooping", 0, INT32_MIN, 1, {INT32_MIN, "", ""}},
    {"NegativeMulticast", 1, -5, 2, {-5, "", ""}},
    {"PositiveMulticast", 1, 5, 6, {0, "", ""}},
    {"LowestMulticast", 1, INT32_MIN, 2, {INT32_MIN, "", ""}},
    {"NegativeFirstRead", 2, -5, 6, {0, kFirstReadFailed, ""}},
    {"PositiveFirstRead", 2, 5, 6, {0, "ret:5 bcmSwitchIgmpPktToCpu:92 enable:0 \n", ""}},
    {"NegativeReservedMulticast", 3, -5, 6, {0, "ret:-5 bcmSwitchIgmpReservedMcastEnable:215 \n", ""}},
    {"PositiveReservedMulticast", 3, 5, 6, {0, "ret:5 bcmSwitchIgmpReservedMcastEnable:215 \n", ""}},
    {"NegativeToCpu", 4, -5, 6, {0, "set igmp packet to cpu fail ret:-5\n", ""}},
    {"PositiveToCpu", 4, 5, 6, {0, "set igmp packet to cpu fail ret:5\n", ""}},
    {"NegativeLastRead", 5, -5, 6, {-5, " ret:-5 enable:0\n", ""}},
    {"PositiveLastRead", 5, 5, 6, {5, " ret:5 enable:0\n", ""}},
    {"LowestLastRead", 5, INT32_MIN, 6, {INT32_MIN, " ret:-2147483648 enable:0\n", ""}},
};

void PrintTo(const OneFailure &failure, std::ostream *out) {
    *out << failure.name;
}

class IgmpStartFailure : public IgmpStart, public ::testing::WithParamInterface<OneFailure> {};

TEST_P(IgmpStartFailure, StopsOrPrints) {
    driver().fail_call(GetParam().number, GetParam().failure);
    EXPECT_EQ(outcome_of(adp_igmp_init), GetParam().outcome);
    EXPECT_EQ(driver().trace(), first_of(igmp_lines(), GetParam().calls));
}

INSTANTIATE_TEST_SUITE_P(Calls, IgmpStartFailure, ::testing::ValuesIn(kFailures),
                         [](const auto &failure) { return failure.param.name; });

TEST_F(IgmpStart, OnlyTheLastReadDecides) {
    driver().on("user_switch_control_get").once().returns(-5);
    driver().fail_every("user_switch_control_set", -6);
    EXPECT_EQ(outcome_of(adp_igmp_init),
              (Outcome{0,
                       std::string(kFirstReadFailed) + "ret:-6 bcmSwitchIgmpReservedMcastEnable:215 \n"
                                                       "set igmp packet to cpu fail ret:-6\n",
                       ""}));
    EXPECT_EQ(driver().trace(), igmp_lines());
}

TEST_F(IgmpStart, PrintsAllFourWhenAllControlsFail) {
    driver().fail_every("user_switch_control_get", -5);
    driver().fail_every("user_switch_control_set", -6);
    EXPECT_EQ(outcome_of(adp_igmp_init),
              (Outcome{-5,
                       std::string(kFirstReadFailed) + "ret:-6 bcmSwitchIgmpReservedMcastEnable:215 \n"
                                                       "set igmp packet to cpu fail ret:-6\n"
                                                       " ret:-5 enable:0\n",
                       ""}));
    EXPECT_EQ(driver().trace(), igmp_lines());
}

TEST_F(IgmpStart, PrintsWhatFailedReadsLeftInTheBuffer) {
    driver().on("user_switch_control_get").once().sets("value", 3u).returns(-5);
    driver().on("user_switch_control_get").once().sets("value", 0xFFFFFFFFu).returns(-7);
    EXPECT_EQ(outcome_of(adp_igmp_init),
              (Outcome{-7, "ret:-5 bcmSwitchIgmpPktToCpu:92 enable:3 \n ret:-7 enable:-1\n", ""}));
}

// Both reads share one buffer.
TEST_F(IgmpStart, LastReadThatWritesNothingPrintsTheFirstReadsValue) {
    driver().on("user_switch_control_get").once().sets("value", 1u);
    driver().on("user_switch_control_get").once().returns(-7);
    EXPECT_EQ(outcome_of(adp_igmp_init), (Outcome{-7, " ret:-7 enable:1\n", ""}));
}

// The value is not checked: it is enough that the read succeeds.
TEST_F(IgmpStart, ValueReadDoesNotMatter) {
    for (const uint32_t value : {0u, 1u, 0xFFFFFFFFu}) {
        driver().on("user_switch_control_get").sets("value", value);
        EXPECT_EQ(outcome_of(adp_igmp_init), Outcome{});
        EXPECT_EQ(driver().take(), igmp_lines());
    }
}

}  // namespace
