// Remark rules: the rule that each request becomes, and what its caller gets.
#include <stddef.h>

#include "fp/testing/remark.h"

namespace {

using fp_test::add_qualifier;
using fp_test::kOneField;
using fp_test::kPortsOnly;
using fp_test::ports_rule;
using fp_test::RemarkTest;
using fp_test::word_of;
using library_test::installed_rules;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class Remark : public RemarkTest {};

TEST_F(Remark, RequestsHaveAFixedLayout) {
    EXPECT_EQ(sizeof(RemarkRule), 32u);
    EXPECT_EQ(offsetof(RemarkRule, rule_id), 0u);
    EXPECT_EQ(offsetof(RemarkRule, port_bitmap), 8u);
    EXPECT_EQ(offsetof(RemarkRule, remark_kind), 16u);
    EXPECT_EQ(offsetof(RemarkRule, remark_value), 18u);
    EXPECT_EQ(offsetof(RemarkRule, rule_form), 20u);
    EXPECT_EQ(offsetof(RemarkRule, match_field), 21u);
    EXPECT_EQ(offsetof(RemarkRule, match_value), 24u);
}

TEST_F(Remark, ANullRecordIs101) {
    EXPECT_EQ(adp_add_remark_rule(nullptr), 101);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(Remark, PortsAreOneQualifierAndOneActionOnBothEntries) {
    RemarkRule rule = request();
    EXPECT_EQ(adp_add_remark_rule(&rule), 0);
    EXPECT_THAT(
        fp_test::driver_calls(driver().trace()),
        ElementsAre("user_field_entry_create_id(handle=0, unit=0, group=1, entry=1290)",
                    "user_field_entry_create_id(handle=0, unit=0, group=1, entry=1291)",
                    "user_field_entry_prio_set(handle=0, unit=0, entry=1290, priority=5)",
                    "user_field_entry_prio_set(handle=0, unit=0, entry=1291, priority=5)",
                    "user_field_set_double_entry(handle=0, unit=0, entry=1290)",
                    "user_field_set_select_tempate_idx(handle=0, unit=0, entry=1290, index=0)",
                    "user_field_qualify_InPorts(handle=0, unit=0, entry=1290, data={4}, mask={0,4,5,6,7,8,9,10,11,12,"
                    "13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29})",
                    "user_field_action_add(handle=0, unit=0, entry=1290, type=11, param=[46, ..], param2=[0, ..])",
                    "user_field_action_add(handle=0, unit=0, entry=1291, type=11, param=[46, ..], param2=[0, ..])",
                    "user_field_entry_install(handle=0, unit=0, entry=1290)",
                    "user_field_entry_install(handle=0, unit=0, entry=1291)"));
    EXPECT_EQ(word_of(recorded(0).actions[0].param), 46u);
}

TEST_F(Remark, TheRecordHoldsTheRequestAndIsEmptyElsewhere) {
    const RemarkRule rule = request();
    expect_added(rule, expected_ports(rule));
}

TEST_F(Remark, BitKOfTheRequestIsInterfaceKPlus1) {
    const struct {
        uint32_t high, low;
        uint32_t shifted_high, shifted_low;
    } rows[] = {
        {0, 1, 0, 2},
        {0, 0x02000000, 0, 0x04000000},
        {0, 0x80000000, 1, 0},           // carried from word to word
        {1, 0x80000001, 3, 2},           //
        {0x80000000, 0, 0, 0},           // lost
        {0xC0000000, 0, 0x80000000, 0},  //
        {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFE},
        {0, 0, 0, 0},
    };
    for (const auto &row : rows) {
        RemarkRule rule = request();
        rule.port_bitmap[0] = row.high;
        rule.port_bitmap[1] = row.low;
        expect_added(rule, ports_rule(rule, row.shifted_low, row.shifted_high));
        EXPECT_EQ(adp_add_remark_rule(&rule), 0);
        EXPECT_THAT(rule.port_bitmap, ElementsAre(row.shifted_high, row.shifted_low));
        EXPECT_FALSE(driver().take().empty());
    }
}

TEST_F(Remark, NothingElseOfTheRequestChanges) {
    for (const uint8_t form : {kPortsOnly, kOneField, uint8_t{3}}) {
        RemarkRule rule = request(form, 8, 46);
        RemarkRule expected = rule;
        expected.port_bitmap[0] = expected.port_bitmap[1] = 2;
        adp_add_remark_rule(&rule);
        EXPECT_EQ(std::memcmp(&rule, &expected, sizeof rule), 0);
    }
}

TEST_F(Remark, ARequestSubmittedTwiceIsShiftedTwice) {
    RemarkRule rule = request();
    EXPECT_EQ(adp_add_remark_rule(&rule), 0);
    EXPECT_EQ(adp_add_remark_rule(&rule), 0);
    EXPECT_THAT(rule.port_bitmap, ElementsAre(4, 4));
    ASSERT_THAT(installed_rules(), SizeIs(1));
    EXPECT_EQ(word_of(recorded(0).qualifies[0].data), 4u);
}

TEST_F(Remark, OtherFormsAreRefusedAfterTheShift) {
    for (int form = 0; form <= 255; ++form) {
        if (form != kPortsOnly && form != kOneField) {
            expect_refused(request(static_cast<uint8_t>(form)), 101);
            EXPECT_THAT(last_trace(), IsEmpty());
        }
    }
}

TEST_F(Remark, WithoutItsSubmoduleARequestIs504BeforeItsFormIsChecked) {
    g_stFpInfo[0].submodule_type = 0;
    for (const uint8_t form : {kPortsOnly, kOneField, uint8_t{3}}) {
        expect_refused(request(form), 504);
        EXPECT_THAT(last_trace(), IsEmpty());
    }
}

TEST_F(Remark, TheIdIsEntityAndPriorityUnchecked) {
    for (const uint32_t id : {0u, 29u, 30u, 127u, 128u, 0x7FFFu, 0xFFFFu}) {
        RemarkRule rule = request();
        rule.rule_id = static_cast<uint16_t>(id);
        expect_added(rule, expected_ports(rule));
        EXPECT_EQ(installed_rules().back()->entity.true_entry, 2 * id + 1280);
    }
}

TEST_F(Remark, EveryKindAndValueIsInstalledAndUnknownKindsAre102) {
    for (int kind = 0; kind <= 255; ++kind) {
        RemarkRule rule = request();
        rule.remark_kind = static_cast<uint8_t>(kind);
        rule.remark_value = static_cast<uint8_t>(255 - kind);
        expect_added(rule, expected_ports(rule), kind == 1 || kind == 2 ? 0 : 102);
        EXPECT_EQ(recorded(0).actions[0].type, kind == 1 ? 11u : 1u);
        EXPECT_EQ(word_of(recorded(0).actions[0].param), static_cast<uint32_t>(255 - kind));
    }
}

TEST_F(Remark, InstallingWithEachCallFailingInTurn) {
    const RemarkRule rule = request(kOneField, 8, 46);
    FpEntity expected = expected_ports(rule);
    add_qualifier(&expected, 61, {5}, {0xFFFFFFFF});
    add_qualifier(&expected, 31, {184}, {0xFFFFFFFF});
    fail_each_call([&] { expect_added(rule, expected); }, [&] { expect_added(rule, expected); });
    EXPECT_THAT(installed_rules(), SizeIs(1));
}

TEST_F(Remark, AllocatesTheNodeOnly) {
    fake_system::Session session;
    RemarkRule rule = request(kOneField, 9, 46);
    driver().record(false);
    EXPECT_EQ(adp_add_remark_rule(&rule), 0);
    EXPECT_EQ(session.system().allocations(), 1u);
    EXPECT_EQ(adp_del_remark_rule(5), 0);
    EXPECT_EQ(session.system().outstanding_allocations(), 0u);
}

TEST_F(Remark, WithoutMemoryARequestSucceedsUnrecorded) {
    const RemarkRule rule = request();
    model().is_out_of_memory = true;
    const auto add_without_memory = [&] {
        fake_system::Session session;
        session.system().fail_allocation(0);
        RemarkRule copy = rule;
        return adp_add_remark_rule(&copy);
    };
    EXPECT_EQ(both(add_without_memory, [&] { return model().install(expected_ports(rule)); }), 0);
    EXPECT_EQ(last_printed(), "adp_fp_add_entity_rule:[01295] malloc failed!~\n");
}

TEST_F(Remark, DeletingTakesTheLow16BitsAndNoMeter) {
    for (const uint32_t id : {5u, 0x10005u, 0xFFFF0005u}) {
        RemarkRule rule = request();
        expect_added(rule, expected_ports(rule));
        both([&] { return adp_del_remark_rule(id); }, [&] { return model().remove(1, 5, 0); });
        EXPECT_EQ(last_trace().size(), 6u + 4u);
        EXPECT_THAT(installed_rules(), IsEmpty());
    }
    EXPECT_EQ(driver().count("user_field_meter_destroy"), 0u);
}

TEST_F(Remark, DeletingAnUnknownRuleSucceeds) {
    RemarkRule rule = request();
    expect_added(rule, expected_ports(rule));
    for (const uint32_t id : {0u, 6u, 0x50005u + 1u}) {
        EXPECT_EQ(both([&] { return adp_del_remark_rule(id); }, [] { return 0; }), 0);
        EXPECT_THAT(last_trace(), IsEmpty());
    }
}

TEST_F(Remark, DeletingIs102OnlyWhenTheStatusIsNegative) {
    const RemarkRule rule = request();
    fail_each_call(
        [&] { expect_added(rule, expected_ports(rule)); },
        [&] { both([] { return adp_del_remark_rule(5); }, [&] { return model().remove(1, 5, 0) < 0 ? 102 : 0; }); });
    EXPECT_THAT(installed_rules(), IsEmpty());
}

}  // namespace
