// Installation of a rule: its driver calls in order, replacement, refusals, and what is recorded.
#include "fp/testing/support.h"

namespace {

using fp_test::add_action;
using fp_test::add_qualifier;
using fp_test::bytes_of;
using fp_test::joined;
using fp_test::kOfGroup1;
using fp_test::kOfGroup3;
using fp_test::kOfGroup5;
using fp_test::logged;
using fp_test::make_rule;
using fp_test::Trace;
using library_test::installed_rules;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr char kBegin[] = "  =========================== begin to add fp entity rule ======================== ";

/** The driver calls of a rule without qualifiers and actions. */
Trace installed_single(int group, const std::string &entry, const std::string &priority) {
    const std::string at = "(handle=0, unit=0, entry=" + entry;
    return {"user_field_entry_create_id(handle=0, unit=0, group=" + std::to_string(group) + ", entry=" + entry + ")",
            "user_field_entry_prio_set" + at + ", priority=" + priority + ")", "user_field_entry_install" + at + ")"};
}

Trace destroyed(uint32_t entry) {
    const std::string at = "(handle=0, unit=0, entry=" + std::to_string(entry) + ")";
    return {"user_field_action_remove_all" + at, "user_field_qualify_clear" + at, "user_field_entry_destroy" + at};
}

class Install : public fp_test::FpTest {
  protected:
    /** Refused without a driver call or a change, after the first log line. */
    void expect_refused(const FpEntity &rule, int32_t status) {
        const size_t listed = installed_rules().size();
        EXPECT_EQ(install(rule), status);
        EXPECT_THAT(last_trace(), ElementsAreArray(logged("adp_fp_add_entity_rule", 907, kBegin, kBegin)));
        EXPECT_EQ(last_printed(), "");
        EXPECT_EQ(installed_rules().size(), listed);
    }
};

TEST_F(Install, ASingleRuleIsOneEntry) {
    EXPECT_EQ(install(make_rule(kOfGroup3, 0, 7)), 0);
    EXPECT_THAT(last_driver_calls(), ElementsAreArray(installed_single(3, "820", "59")));
}

TEST_F(Install, ADoubleRuleIsAChainedPair) {
    FpEntity rule = make_rule(1, 5, 9);
    add_qualifier(&rule, 10, {0x0A000001}, {0xFFFFFFFF});
    add_qualifier(&rule, 29, {0x0800}, {0xFFFF});
    add_action(&rule, 2, {0xFFFFFFFF});
    EXPECT_EQ(install(rule), 0);
    EXPECT_THAT(
        last_driver_calls(),
        ElementsAre(
            "user_field_entry_create_id(handle=0, unit=0, group=1, entry=1290)",
            "user_field_entry_create_id(handle=0, unit=0, group=1, entry=1291)",
            "user_field_entry_prio_set(handle=0, unit=0, entry=1290, priority=9)",
            "user_field_entry_prio_set(handle=0, unit=0, entry=1291, priority=9)",
            "user_field_set_double_entry(handle=0, unit=0, entry=1290)",
            "user_field_qualify_DstIp(handle=0, unit=0, entry=1291, data=167772161, mask=4294967295)",
            "user_field_set_select_tempate_idx(handle=0, unit=0, entry=1290, index=0)",
            "user_field_qualify_EtherType(handle=0, unit=0, entry=1290, data=2048, mask=65535)",
            "user_field_action_add(handle=0, unit=0, entry=1290, type=2, param=[4294967295, ..], param2=[0, ..])",
            "user_field_action_add(handle=0, unit=0, entry=1291, type=2, param=[4294967295, ..], param2=[0, ..])",
            "user_field_entry_install(handle=0, unit=0, entry=1290)",
            "user_field_entry_install(handle=0, unit=0, entry=1291)"));
}

TEST_F(Install, EverySubmoduleInstallsReplacesAndDeletes) {
    for (const fp_test::Submodule &row : fp_test::kSubmodules) {
        SCOPED_TRACE(row.type);
        FpEntity rule = make_rule(static_cast<uint32_t>(row.type), 9, 100);
        add_qualifier(&rule, 13, {0x7E}, {0xFFFFFFFF});
        add_action(&rule, 53, {0, 0}, {1});
        EXPECT_EQ(install(rule), 0);
        EXPECT_EQ(install(rule), 0);
        EXPECT_EQ(remove(rule.submodule_type, 9, 53), 0);
        EXPECT_THAT(installed_rules(), IsEmpty());
    }
}

TEST_F(Install, EntityAndPriorityAreAddedIn32Bits) {
    EXPECT_EQ(install(make_rule(43, 0, 0)), 0);
    EXPECT_THAT(last_driver_calls(), ElementsAreArray(installed_single(9, "4294967287", "-9")));
    EXPECT_EQ(install(make_rule(42, 0, 8)), 0);
    EXPECT_THAT(last_driver_calls(), ElementsAreArray(installed_single(7, "375", "-1")));
    EXPECT_EQ(install(make_rule(8, 0xFFFFFFFF, 0x80000000)), 0);
    EXPECT_THAT(last_driver_calls(), ElementsAreArray(installed_single(2, "895", "-2147483648")));
}

TEST_F(Install, TheRecordsUnitIsInEveryCallButThoseOfTheRemoval) {
    FpEntity rule = make_rule(kOfGroup1, 5);
    rule.unit = 3;
    add_qualifier(&rule, 29, {0x0800}, {0xFFFF});
    add_action(&rule, 53, {9}, {0});
    EXPECT_EQ(install(rule), 0);
    for (const std::string &call : last_driver_calls()) {
        EXPECT_NE(call.find("unit=3,"), std::string::npos) << call;
    }
    EXPECT_EQ(install(rule), 0);
    const Trace again = last_driver_calls();
    ASSERT_EQ(again.size(), 19u);
    for (size_t i = 0; i < again.size(); ++i) {
        EXPECT_NE(again[i].find(i < 7 ? "unit=0," : "unit=3,"), std::string::npos) << again[i];
    }
}

TEST_F(Install, ReplacingDestroysTheOldEntriesBeforeTheNewOnesAreCreated) {
    const FpEntity rule = make_rule(kOfGroup3, 0);
    ASSERT_EQ(install(rule), 0);
    EXPECT_EQ(install(rule), 0);
    EXPECT_THAT(last_driver_calls(), ElementsAreArray(joined({destroyed(820), installed_single(3, "820", "52")})));
    EXPECT_EQ(installed_rules().size(), 1u);
}

TEST_F(Install, ReplacingGoesToTheEndOfTheList) {
    for (const uint32_t entity : {1u, 2u, 3u, 1u}) {
        EXPECT_EQ(install(make_rule(kOfGroup3, entity)), 0);
    }
    ASSERT_EQ(installed_rules().size(), 3u);
    EXPECT_EQ(recorded(0).entity_id, 2u);
    EXPECT_EQ(recorded(1).entity_id, 3u);
    EXPECT_EQ(recorded(2).entity_id, 1u);
}

TEST_F(Install, ReplacingIgnoresTheRemovalsResult) {
    const FpEntity rule = make_rule(kOfGroup3, 0);
    ASSERT_EQ(install(rule), 0);
    for (const char *call : {"user_field_action_remove_all", "user_field_qualify_clear", "user_field_entry_destroy"}) {
        fail_every(call, -1);
    }
    EXPECT_EQ(install(rule), 0);
}

TEST_F(Install, ReplacingRemovesTheOldRuleAlsoWhenTheNewOneFails) {
    ASSERT_EQ(install(make_rule(kOfGroup3, 0)), 0);
    fail_every("user_field_entry_create_id", -1);
    FpEntity rule = make_rule(kOfGroup3, 0, 8);
    EXPECT_EQ(install(rule), -1);
    ASSERT_EQ(installed_rules().size(), 1u);
    EXPECT_EQ(recorded(0).priority, 8u);
}

TEST_F(Install, ReplacingAMeteredRuleByOneWithoutLeavesTheMeter) {
    FpEntity rule = make_rule(kOfGroup3, 0);
    add_action(&rule, 53, {10}, {0});
    ASSERT_EQ(install(rule), 0);
    EXPECT_EQ(install(make_rule(kOfGroup3, 0)), 0);
    EXPECT_EQ(driver().count("user_field_meter_destroy"), 0u);
    EXPECT_EQ(install(rule), 0);  // a meter that was never set is destroyed
    EXPECT_EQ(driver().count("user_field_meter_destroy"), 1u);
}

TEST_F(Install, AHighEntityIsInstalledDoubleAndDeletedSingly) {
    EXPECT_EQ(install(make_rule(1, 128)), 0);
    EXPECT_EQ(recorded(0).true_entry, 1536u);
    EXPECT_EQ(driver().count("user_field_entry_install"), 2u);
    EXPECT_EQ(remove(1, 128), 0);
    EXPECT_THAT(last_driver_calls(), ElementsAreArray(destroyed(1536)));
}

TEST_F(Install, ASingleEntityAmongTheDoubleEntriesIsDeletedDouble) {
    EXPECT_EQ(install(make_rule(8, 128)), 0);
    EXPECT_EQ(driver().count("user_field_entry_install"), 1u);
    EXPECT_EQ(remove(8, 128), 0);
    EXPECT_THAT(last_driver_calls(), ElementsAreArray(joined({destroyed(1024), destroyed(1025)})));
}

TEST_F(Install, UnknownSubmodulesAre101) {
    ASSERT_EQ(install(make_rule(kOfGroup3, 0)), 0);
    for (const uint32_t type : {0u, 44u, 0x10016u, 0xFFFFFFFFu}) {
        expect_refused(make_rule(type, 0), 101);
        FpEntity overfull = make_rule(type, 0);
        overfull.qualify_num = 17;
        overfull.action_num = 9;
        expect_refused(overfull, 101);
    }
}

TEST_F(Install, ASubmoduleWithoutAGroupIs101) {
    g_stFpInfo[21].group = 0;
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(adp_fp_add_entity_rule(make_rule(22, 0)), 101);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
    EXPECT_THAT(driver().trace(), ElementsAreArray(logged("adp_fp_add_entity_rule", 907, kBegin, kBegin)));
    EXPECT_THAT(installed_rules(), IsEmpty());
}

TEST_F(Install, RecordsWithCountsAboveTheirSizeAreRefused) {
    ASSERT_EQ(install(make_rule(kOfGroup3, 0)), 0);
    for (const int32_t count : {17, 18, INT32_MAX}) {
        FpEntity rule = make_rule(kOfGroup3, 0);
        rule.qualify_num = count;
        expect_refused(rule, -1);
    }
    for (const int32_t count : {9, 16, INT32_MAX}) {
        FpEntity rule = make_rule(kOfGroup3, 0);
        rule.action_num = count;
        expect_refused(rule, -1);
    }
}

TEST_F(Install, NegativeCountsMeanNone) {
    for (const int32_t count : {-1, INT32_MIN}) {
        FpEntity rule = fp_test::full_record(kOfGroup3, 0);
        rule.qualify_num = count;
        rule.action_num = count;
        EXPECT_EQ(install(rule), 0);
        EXPECT_EQ(driver().count("user_field_action_add"), 0u);
        EXPECT_EQ(driver().count("user_field_set_select_tempate_idx"), 0u);
        EXPECT_EQ(recorded(0).qualify_num, count);
    }
}

TEST_F(Install, TheWholeRecordIsRecordedWithItsEntry) {
    FpEntity rule = fp_test::full_record(kOfGroup5, 4);
    rule.true_entry = 12345;
    EXPECT_EQ(install(rule), 0);
    rule.true_entry = 1032;
    EXPECT_TRUE(bytes_of(recorded(0)) == bytes_of(rule));
}

TEST_F(Install, TheCallersRecordIsUnchanged) {
    FpEntity rule = fp_test::full_record(kOfGroup1, 4);
    rule.action_num = 8;
    for (FpAction &action : rule.actions) {
        action.type = 53;
    }
    const FpEntity before = rule;
    EXPECT_EQ(install(rule), 0);
    EXPECT_TRUE(bytes_of(rule) == bytes_of(before));
}

TEST_F(Install, AnotherRulesEntryIsCreatedAndReprogrammedWhenTheDriverRefuses) {
    // Submodule 24's entity 11 and submodule 26's entity 0 are one entry; only the driver knows.
    ASSERT_EQ(install(make_rule(24, 11)), 0);
    driver().on("user_field_entry_create_id").returns(-4);
    fail_every("user_field_entry_create_id", -4);
    EXPECT_EQ(install(make_rule(26, 0, 3)), -4);
    EXPECT_THAT(last_driver_calls(), ElementsAreArray(installed_single(3, "833", "68")));
    ASSERT_EQ(installed_rules().size(), 2u);
    EXPECT_EQ(recorded(0).true_entry, recorded(1).true_entry);
}

}  // namespace
