// The log lines of an installation, written out whole, in the log and in the trace.
#include "fp/testing/support.h"

namespace {

using fp_test::add_action;
using fp_test::add_qualifier;
using fp_test::log_calls;
using fp_test::make_rule;
using fp_test::Trace;

using ::testing::ElementsAreArray;

constexpr char kInstall[] = "adp_fp_add_entity_rule";

/** One line as it is written to the log: its format, and its text after the place. */
struct Line {
    const char *function;
    int line;
    const char *format;
    const char *text;
};

constexpr char kPair[] = "  ---------ret=[%d] fent=[%d] fent+1=[%d]-------";
constexpr char kQualify[] = "  ---------i=[%d] type=[%d] ret=[%d]-------";
constexpr char kAct[] = "  ---------ret=[%d] fent=[%d] i=[%d] actionNum=[%d] type=[%d]-------";
constexpr char kAdd[] = "  ---------ret=[%d] fent=[%d] type=[%d]-------";
constexpr char kBegin[] = "  =========================== begin to add fp entity rule ======================== ";

constexpr Line kDoubleRule[] = {
    {kInstall, 907, kBegin, kBegin},
    {"adp_fp_get_true_entity_id", 864, " entry=[%d] group=[%d] prio_base=[%d] true_entry=[%d]-",
     " entry=[5] group=[1] prio_base=[60] true_entry=[1410]-"},
    {kInstall, 939, " install entry=[%d] true_entry=[%d]", " install entry=[5] true_entry=[1410]"},
    {kInstall, 945, " idDoubleEntry=[%d] ", " idDoubleEntry=[1] "},
    {kInstall, 954, " unit=[%d] fg=[%d] fent=[%d]------------", " unit=[0] fg=[1] fent=[1410]------------"},
    {kInstall, 960, " create entry [%d] ret=[%d] ------------", " create entry [1410] ret=[1] ------------"},
    {kInstall, 969, kPair, "  ---------ret=[8] fent=[1410] fent+1=[1411]-------"},
    {kInstall, 971, " set entry [%d] priority=[%d] ret=[%d] ------------",
     " set entry [1410] priority=[67] ret=[8] ------------"},
    {kInstall, 995, kQualify, "  ---------i=[0] type=[9] ret=[8]-------"},
    {kInstall, 1086, "  src-ip i=[%d] ret=[%d] fent=[%d]-------", "  src-ip i=[0] ret=[0] fent=[1411]-------"},
    {kInstall, 995, kQualify, "  ---------i=[1] type=[13] ret=[16]-------"},
    {kInstall, 1024, "  inports i=[%d] ret=[%d] fent=[%d] ------", "  inports i=[1] ret=[16] fent=[1410] ------"},
    {kInstall, 995, kQualify, "  ---------i=[2] type=[21] ret=[16]-------"},
    {kInstall, 1071, "  ivlan format i=[%d] ret=[%d] fent=[%d]-------",
     "  ivlan format i=[2] ret=[0] fent=[1410]-------"},
    {kInstall, 1146, kAct, "  ---------ret=[0] fent=[1410] i=[0] actionNum=[3] type=[30]-------"},
    {kInstall, 1225, " acl action user-port=[%d] ----> phy-port=[%d]", " acl action user-port=[7] ----> phy-port=[7]"},
    {kInstall, 1260, kAdd, "  ---------ret=[0] fent=[1410] type=[30]-------"},
    {kInstall, 1267, kPair, "  ---------ret=[0] fent=[1410] fent+1=[1411]-------"},
    {kInstall, 1146, kAct, "  ---------ret=[0] fent=[1410] i=[1] actionNum=[3] type=[30]-------"},
    {kInstall, 1225, " acl action user-port=[%d] ----> phy-port=[%d]", " acl action user-port=[5] ----> phy-port=[8]"},
    {kInstall, 1260, kAdd, "  ---------ret=[0] fent=[1410] type=[30]-------"},
    {kInstall, 1267, kPair, "  ---------ret=[0] fent=[1410] fent+1=[1411]-------"},
    {kInstall, 1146, kAct, "  ---------ret=[0] fent=[1410] i=[2] actionNum=[3] type=[53]-------"},
    {kInstall, 1260, kAdd, "  ---------ret=[64] fent=[1410] type=[53]-------"},
    {kInstall, 1267, kPair, "  ---------ret=[64] fent=[1410] fent+1=[1411]-------"},
    {kInstall, 1272, "  add action ret=[%d] ", "  add action ret=[64] "},
    {kInstall, 1276, "  ---------ret=[%d] fent=[%d] fent=[%d]-------",
     "  ---------ret=[192] fent=[1410] fent=[1410]-------"},
    {kInstall, 1280, kPair, "  ---------ret=[192] fent=[1410] fent+1=[1411]-------"},
    {kInstall, 1283, " install ret=[%d] entry=[%d] true_entry=[%d]", " install ret=[192] entry=[5] true_entry=[1410]"},
};

constexpr Line kSingleRule[] = {
    {kInstall, 907, kBegin, kBegin},
    {"adp_fp_get_true_entity_id", 864, " entry=[%d] group=[%d] prio_base=[%d] true_entry=[%d]-",
     " entry=[0] group=[9] prio_base=[-9] true_entry=[-9]-"},
    {kInstall, 939, " install entry=[%d] true_entry=[%d]", " install entry=[0] true_entry=[-9]"},
    {kInstall, 945, " idDoubleEntry=[%d] ", " idDoubleEntry=[0] "},
    {"adp_fp_delete_entity_rule_ex", 612, " del entry=[%d] true_entry=[%d]", " del entry=[0] true_entry=[-9]"},
    {kInstall, 954, " unit=[%d] fg=[%d] fent=[%d]------------", " unit=[-1] fg=[9] fent=[-9]------------"},
    {kInstall, 960, " create entry [%d] ret=[%d] ------------", " create entry [-9] ret=[-1] ------------"},
    {kInstall, 971, " set entry [%d] priority=[%d] ret=[%d] ------------",
     " set entry [-9] priority=[-10] ret=[-1] ------------"},
    {kInstall, 1146, kAct, "  ---------ret=[-1] fent=[-9] i=[0] actionNum=[1] type=[-2]-------"},
    {kInstall, 1260, kAdd, "  ---------ret=[-1] fent=[-9] type=[-2]-------"},
    {kInstall, 1272, "  add action ret=[%d] ", "  add action ret=[-1] "},
    {kInstall, 1276, "  ---------ret=[%d] fent=[%d] fent=[%d]-------",
     "  ---------ret=[-1] fent=[-9] fent=[-9]-------"},
    {kInstall, 1283, " install ret=[%d] entry=[%d] true_entry=[%d]", " install ret=[-1] entry=[0] true_entry=[-9]"},
};

class InstallLog : public fp_test::FpTest, public ::testing::WithParamInterface<bool> {
  protected:
    void SetUp() override {
        FpTest::SetUp();
        if (GetParam()) {
            trace_on();
        }
    }

    template <size_t kCount>
    static Trace whole(const Line (&lines)[kCount]) {
        Trace all;
        for (const Line &line : lines) {
            const Trace one = fp_test::logged(line.function, line.line, line.format, line.text, GetParam());
            all.insert(all.end(), one.begin(), one.end());
        }
        return all;
    }
};

TEST_P(InstallLog, OfADoubleRule) {
    FpEntity rule = make_rule(3, 5, 7);
    add_qualifier(&rule, 9, {1}, {1});
    add_qualifier(&rule, 13, {2}, {2});
    add_qualifier(&rule, 21, {3}, {3});
    add_action(&rule, 30, {4});
    add_action(&rule, 30, {5});
    add_action(&rule, 53, {0}, {0});
    fail_every("user_field_entry_create_id", 1);
    fail_every("user_field_set_double_entry", 8);
    fail_every("user_field_set_select_tempate_idx", 16);
    fail_every("user_field_meter_entry_set", 64);
    fail_every("user_field_entry_install", 128);
    EXPECT_EQ(install(rule), 192);
    EXPECT_THAT(log_calls(last_trace()), ElementsAreArray(whole(kDoubleRule)));
}

TEST_P(InstallLog, OfASingleRuleThatReplacesAnother) {
    FpEntity rule = make_rule(43, 0, 0xFFFFFFFF);
    rule.unit = 0xFFFFFFFF;
    add_action(&rule, 0xFFFFFFFE);
    EXPECT_EQ(install(rule), 0);
    fail_every("user_field_entry_create_id", -1);
    EXPECT_EQ(install(rule), -1);
    EXPECT_THAT(log_calls(last_trace()), ElementsAreArray(whole(kSingleRule)));
}

INSTANTIATE_TEST_SUITE_P(With, InstallLog, ::testing::Bool(),
                         [](const auto &is_traced) { return is_traced.param ? "TraceOn" : "TraceOff"; });

class Log : public fp_test::FpTest {};

TEST_F(Log, EveryLineChecksAgainWhetherTracingIsOn) {
    bool is_on = false;
    driver().on("sys_trace_get").does([&](recording::Arguments &) {
        is_on = !is_on;
        return is_on ? 1 : 0;
    });
    EXPECT_EQ(adp_fp_add_entity_rule(make_rule(22, 0)), 0);
    EXPECT_EQ(driver().count("sys_trace_get"), 10u);
    EXPECT_EQ(driver().count("sys_trace_add_log"), 5u);
    EXPECT_EQ(driver().count("Log_logging_func"), 10u);
}

}  // namespace
