// Counters, and the action for packets that match no rule.
#include "fp/testing/support.h"

namespace {

using fp_test::joined;
using fp_test::kFailures;
using fp_test::logged;
using fp_test::Trace;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

/** The driver call, then the log line. */
Trace counter_trace(const std::string &name, const std::string &numbers, int line, const std::string &format,
                    const std::string &text, bool is_traced = false) {
    return joined({{"user_field_" + name + "(handle=0, unit=0, " + numbers + ")"},
                   logged("adp_fp_" + name, line, format, text, is_traced)});
}

Trace read_trace(const std::string &numbers, const std::string &text, bool is_traced = false) {
    return counter_trace("get_statistics", numbers, 1311, " counter_idx=[%d], type=[0x%x], count=[%d]", text,
                         is_traced);
}

Trace clear_trace(const std::string &numbers, const std::string &text, bool is_traced = false) {
    return counter_trace("clear_statistics", numbers, 1335, " counter_idx=[%d], type=[0x%x]", text, is_traced);
}

Trace miss_trace(int port, const std::string &action, const std::string &text, bool is_traced = false) {
    return counter_trace("lookupMissAct_set", "port=" + std::to_string(port) + ", action=" + action, 1349,
                         " unit=[%d] intfId=[%d] phyId=[%d], Missaction=[0x%x]", text, is_traced);
}

class FpStatistics : public fp_test::FpTest {};

TEST_F(FpStatistics, ReadingGivesTheDriversCount) {
    driver().on("user_field_get_statistics").sets("count", -77);
    EXPECT_EQ(adp_fp_get_statistics(5, 0x10), -77);
    EXPECT_THAT(driver().take(),
                ElementsAreArray(read_trace("counter=5, type=16", " counter_idx=[5], type=[0x10], count=[-77]")));
    driver().on("sys_trace_get").returns(1);
    EXPECT_EQ(adp_fp_get_statistics(-2, -1), -77);
    EXPECT_THAT(
        driver().take(),
        ElementsAreArray(read_trace("counter=-2, type=-1", " counter_idx=[-2], type=[0xffffffff], count=[-77]", true)));
}

TEST_F(FpStatistics, ReadingIgnoresTheDriversStatus) {
    driver().on("user_field_get_statistics").sets("count", 9).returns(-1);
    EXPECT_EQ(adp_fp_get_statistics(1, 2), 9);
    for (const int32_t failure : kFailures) {
        driver().fail_every("user_field_get_statistics", failure);
        EXPECT_EQ(adp_fp_get_statistics(1, 2), 0);
    }
}

TEST_F(FpStatistics, ClearingUsesTheThirdAndFourthArgument) {
    EXPECT_EQ(adp_fp_clear_statistics(7, 8, 5, 0x10), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(clear_trace("counter=5, type=16", " counter_idx=[5], type=[0x10]")));
    driver().on("sys_trace_get").returns(1);
    EXPECT_EQ(adp_fp_clear_statistics(0xFFFFFFFF, 0xFFFFFFFF, -5, INT32_MIN), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(clear_trace("counter=-5, type=-2147483648",
                                                              " counter_idx=[-5], type=[0x80000000]", true)));
}

TEST_F(FpStatistics, ClearingReturnsTheDriversStatus) {
    for (const int32_t failure : kFailures) {
        driver().fail_every("user_field_clear_statistics", failure);
        EXPECT_EQ(adp_fp_clear_statistics(7, 8, 5, 16), failure);
        EXPECT_THAT(driver().take(),
                    ElementsAreArray(clear_trace("counter=5, type=16", " counter_idx=[5], type=[0x10]")));
    }
}

TEST_F(FpStatistics, TheMissActionGoesToThePhysicalPort) {
    EXPECT_EQ(adp_fp_lookupMissAct_set(26, 0xABCDEF01), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(miss_trace(
                                     29, "2882400001", " unit=[0] intfId=[26] phyId=[29], Missaction=[0xabcdef01]")));
    driver().on("sys_trace_get").returns(1);
    EXPECT_EQ(adp_fp_lookupMissAct_set(0, 2), 0);
    EXPECT_THAT(driver().take(),
                ElementsAreArray(miss_trace(0, "2", " unit=[0] intfId=[0] phyId=[0], Missaction=[0x2]", true)));
}

TEST_F(FpStatistics, TheMissActionOfAnUnknownInterfaceGoesToPortMinus1) {
    for (const int32_t intf : {27, -1, INT32_MAX, INT32_MIN, 0x10000001, 0x20000001}) {
        EXPECT_EQ(adp_fp_lookupMissAct_set(intf, 1), 0);
        const std::string text = " unit=[0] intfId=[" + std::to_string(intf) + "] phyId=[-1], Missaction=[0x1]";
        EXPECT_THAT(driver().take(), ElementsAreArray(miss_trace(-1, "1", text)));
    }
}

TEST_F(FpStatistics, TheMissActionsLogTranslatesAgain) {
    driver().on("user_field_lookupMissAct_set").does([](recording::Arguments &) {
        return adp_add_phy_port(3, 0, 0, 17, 0);
    });
    EXPECT_EQ(adp_fp_lookupMissAct_set(3, 1), 0);
    EXPECT_THAT(driver().take(),
                ElementsAreArray(miss_trace(6, "1", " unit=[0] intfId=[3] phyId=[17], Missaction=[0x1]")));
}

TEST_F(FpStatistics, TheMissActionReturnsTheDriversStatus) {
    for (const int32_t failure : kFailures) {
        driver().fail_every("user_field_lookupMissAct_set", failure);
        EXPECT_EQ(adp_fp_lookupMissAct_set(1, 1), failure);
        EXPECT_THAT(driver().take(),
                    ElementsAreArray(miss_trace(4, "1", " unit=[0] intfId=[1] phyId=[4], Missaction=[0x1]")));
    }
}

TEST_F(FpStatistics, ABitmapIsVisitedFromTheLowestInterface) {
    EXPECT_EQ(adp_fp_lookupMissAct_pbmp_set({{1u << 3 | 1u << 1, 0}}, 9), 0);
    EXPECT_THAT(driver().take(),
                ElementsAreArray(joined({miss_trace(4, "9", " unit=[0] intfId=[1] phyId=[4], Missaction=[0x9]"),
                                         miss_trace(6, "9", " unit=[0] intfId=[3] phyId=[6], Missaction=[0x9]")})));
}

TEST_F(FpStatistics, ABitmapNamesTheInterfaces0To26Only) {
    EXPECT_EQ(adp_fp_lookupMissAct_pbmp_set({{0xFFFFFFFF, 0xFFFFFFFF}}, 9), 0);
    Trace expected;
    for (int32_t intf = 0; intf <= 26; ++intf) {
        const int32_t port = intf == 0 ? 0 : intf + 3;
        expected = joined({expected, miss_trace(port, "9",
                                                " unit=[0] intfId=[" + std::to_string(intf) + "] phyId=[" +
                                                    std::to_string(port) + "], Missaction=[0x9]")});
    }
    EXPECT_THAT(driver().take(), ElementsAreArray(expected));
    EXPECT_EQ(adp_fp_lookupMissAct_pbmp_set({{0xF8000000, 0xFFFFFFFF}}, 9), 0);
    EXPECT_EQ(adp_fp_lookupMissAct_pbmp_set({{0, 0}}, 9), 0);
    EXPECT_THAT(driver().take(), IsEmpty());
}

TEST_F(FpStatistics, ABitmapsResultIsThatOfTheLastInterface) {
    for (const int32_t failure : kFailures) {
        driver().once("user_field_lookupMissAct_set").returns(failure);
        driver().once("user_field_lookupMissAct_set").returns(5);
        EXPECT_EQ(adp_fp_lookupMissAct_pbmp_set({{1u << 26 | 1u << 2, 0}}, 9), 5);
        driver().once("user_field_lookupMissAct_set").returns(failure);
        EXPECT_EQ(adp_fp_lookupMissAct_pbmp_set({{1u << 26 | 1u << 2, 0}}, 9), 0);
        driver().once("user_field_lookupMissAct_set").returns(5);
        driver().once("user_field_lookupMissAct_set").returns(failure);
        EXPECT_EQ(adp_fp_lookupMissAct_pbmp_set({{1u << 26 | 1u << 2, 0}}, 9), failure);
    }
    EXPECT_EQ(driver().count("user_field_lookupMissAct_set"), 6 * std::size(kFailures));
}

}  // namespace
