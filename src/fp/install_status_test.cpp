// The status of an installation: which failures its caller sees. Every step goes on whatever fails.
#include "fp/testing/support.h"

namespace {

using fp_test::add_action;
using fp_test::add_qualifier;
using fp_test::kFailures;
using fp_test::kOfGroup1;
using fp_test::kOfGroup3;
using fp_test::kOfGroup5;
using fp_test::make_rule;
using library_test::installed_rules;
using ::testing::Contains;
using ::testing::SizeIs;

/** A rule with qualifiers on both halves, an unknown one, and every action that the library treats specially. */
FpEntity busy_rule(uint32_t submodule_type) {
    FpEntity rule = fp_test::with_qualifiers(make_rule(submodule_type, 4, 6), {13, 6, 2, 10, 27, 30});
    add_action(&rule, 30, {5});
    add_action(&rule, 33, {0x7E, 1}, {8});
    add_action(&rule, 53, {0}, {2});
    add_action(&rule, 4, {1, 2}, {3});
    return rule;
}

class InstallStatus : public fp_test::FpTest {};

class InEachWidth : public InstallStatus, public ::testing::WithParamInterface<uint32_t> {};

TEST_P(InEachWidth, InstallingWithEachCallFailingInTurn) {
    const FpEntity rule = busy_rule(GetParam());
    fail_each_call([] {}, [&] { install(rule); });
    EXPECT_THAT(installed_rules(), SizeIs(1));
}

TEST_P(InEachWidth, ReplacingWithEachCallFailingInTurn) {
    const FpEntity rule = busy_rule(GetParam());
    fail_each_call([&] { install(rule); }, [&] { install(rule); });
    EXPECT_THAT(installed_rules(), SizeIs(1));
}

TEST_P(InEachWidth, InstallingWithEveryCallOfOneNameFailing) {
    for (const char *name :
         {"user_field_entry_create_id", "user_field_entry_prio_set", "user_field_set_double_entry",
          "user_field_set_select_tempate_idx", "user_field_qualify_InPorts", "user_field_qualify_SrcMac",
          "user_field_qualify_DstIp", "user_field_qualify_L4SrcPort", "user_field_qualify_IpProtocol",
          "user_field_meter_entry_set", "user_field_action_add", "user_field_entry_install",
          "user_field_action_remove_all", "user_field_qualify_clear", "user_field_entry_destroy",
          "user_field_meter_destroy", "sys_trace_get", "sys_trace_add_log", "Log_logging_func"}) {
        for (const int32_t failure : kFailures) {
            SCOPED_TRACE(std::string(name) + " gives " + std::to_string(failure));
            start();
            fail_every(name, failure);
            install(busy_rule(GetParam()));
            install(busy_rule(GetParam()));
        }
    }
}

TEST_P(InEachWidth, LateFailuresAreOredTogether) {
    FpEntity rule = make_rule(GetParam(), 4);
    add_action(&rule, 53, {1}, {1});
    fail_every("user_field_meter_entry_set", 0x10);
    fail_every("user_field_action_add", 0x20);
    fail_every("user_field_entry_install", 0x40);
    EXPECT_EQ(install(rule), 0x70);
}

TEST_P(InEachWidth, ALaterQualifierHidesWhatFailedBefore) {
    FpEntity rule = make_rule(GetParam(), 4);
    add_qualifier(&rule, 6, {1}, {1});
    add_qualifier(&rule, 7, {1}, {1});
    for (const char *name : {"user_field_entry_create_id", "user_field_entry_prio_set", "user_field_set_double_entry",
                             "user_field_qualify_SrcMac"}) {
        fail_every(name, -1);
    }
    EXPECT_EQ(install(rule), 0);
    rule.qualify_num = 1;
    EXPECT_EQ(install(rule), -1);
}

INSTANTIATE_TEST_SUITE_P(Of, InEachWidth, ::testing::Values(kOfGroup1, kOfGroup5, kOfGroup3),
                         [](const auto &type) { return "Submodule" + std::to_string(type.param); });

TEST_F(InstallStatus, OfASingleRuleCreateAndPriorityAreOred) {
    fail_every("user_field_entry_create_id", 1);
    fail_every("user_field_entry_prio_set", 2);
    fail_every("user_field_entry_install", 4);
    EXPECT_EQ(install(make_rule(kOfGroup3, 1)), 7);
}

TEST_F(InstallStatus, OfADoubleRuleThePairingReplacesCreateAndPriority) {
    fail_every("user_field_entry_create_id", 1);
    fail_every("user_field_entry_prio_set", 2);
    EXPECT_EQ(install(make_rule(kOfGroup1, 1)), 0);
    fail_every("user_field_set_double_entry", 8);
    fail_every("user_field_entry_install", 4);
    EXPECT_EQ(install(make_rule(kOfGroup1, 1)), 12);
}

TEST_F(InstallStatus, OfADoubleRuleBothCreationsAreOred) {
    for (const int32_t first : {1, 0}) {
        driver().once("user_field_entry_create_id").returns(first);
        driver().once("user_field_entry_create_id").returns(2);
        EXPECT_EQ(adp_fp_add_entity_rule(make_rule(kOfGroup1, 1)), 0);
        const std::string created = "adp_fp_add_entity_rule:[00960] create entry [1402] ret=[" +
                                    std::to_string(first | 2) + "] ------------\\n\")";
        EXPECT_THAT(driver().take(), Contains(::testing::EndsWith(created)));
    }
}

TEST_F(InstallStatus, OfADoubleRuleBothActionsAndBothInstallationsAreOred) {
    FpEntity rule = make_rule(kOfGroup5, 1);
    add_action(&rule, 4);
    int32_t bit = 1;
    for (const char *name : {"user_field_action_add", "user_field_entry_install"}) {
        for (int half = 0; half < 2; ++half) {
            driver().once(name).returns(bit);
            bit <<= 1;
        }
    }
    EXPECT_EQ(adp_fp_add_entity_rule(rule), 15);
}

TEST_F(InstallStatus, IngressPortsAddToTheTemplateCallsResultOnly) {
    FpEntity rule = make_rule(kOfGroup1, 1);
    add_qualifier(&rule, 13, {2}, {2});
    fail_every("user_field_set_double_entry", 4);
    fail_every("user_field_qualify_InPorts", 2);
    EXPECT_EQ(install(rule), 2);
    fail_every("user_field_set_select_tempate_idx", 1);
    EXPECT_EQ(install(rule), 3);
}

TEST_F(InstallStatus, AFailedRuleIsStillRecorded) {
    for (const int32_t failure : kFailures) {
        fail_every("user_field_entry_install", failure);
        EXPECT_EQ(install(make_rule(kOfGroup3, 1)), failure);
        EXPECT_THAT(installed_rules(), SizeIs(1));
    }
}

}  // namespace
