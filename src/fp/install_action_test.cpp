// Actions of a rule: meters, and ports that are translated into the action that the status numbers.
#include "fp/testing/support.h"

namespace {

using fp_test::add_action;
using fp_test::add_qualifier;
using fp_test::bytes_of;
using fp_test::full_record;
using fp_test::kOfGroup1;
using fp_test::kOfGroup3;
using fp_test::make_rule;
using fp_test::set_words;
using fp_test::Trace;
using fp_test::word_of;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr uint32_t kPortAction = 30;
constexpr uint32_t kPortsAction = 33;
constexpr uint32_t kMeterAction = 53;
constexpr uint32_t kOtherAction = 4;

class InstallAction : public fp_test::FpTest {
  protected:
    /** The last installation's calls of this name. */
    [[nodiscard]] Trace calls_of(const std::string &name) const {
        Trace calls;
        for (const std::string &line : last_driver_calls()) {
            if (line.rfind(name + "(", 0) == 0) {
                calls.push_back(line);
            }
        }
        return calls;
    }
    [[nodiscard]] Trace meters() const { return calls_of("user_field_meter_entry_set"); }
    [[nodiscard]] Trace additions() const { return calls_of("user_field_action_add"); }

    static std::string meter_set(const std::string &rate, const std::string &meter) {
        return "user_field_meter_entry_set(unit=0, rate=" + rate + ", meter=" + meter + ")";
    }
    static std::string addition(uint32_t entry, uint32_t type, const std::vector<uint32_t> &param,
                                const std::vector<uint32_t> &param2 = {}) {
        FpAction action = {};
        set_words(action.param, param);
        set_words(action.param2, param2);
        return "user_field_action_add(handle=0, unit=0, entry=" + std::to_string(entry) +
               ", type=" + std::to_string(type) + ", param=" + fp_test::param_text(action.param) +
               ", param2=" + fp_test::param_text(action.param2) + ")";
    }
};

TEST_F(InstallAction, AMeterOfRate0GetsTheSubmodulesRate) {
    FpEntity rule = make_rule(3, 5);
    add_action(&rule, kMeterAction, {0}, {2});
    EXPECT_EQ(install(rule), 0);
    EXPECT_THAT(meters(), ElementsAre(meter_set("100", "6")));
    EXPECT_EQ(word_of(recorded(0).actions[0].param), 0u);
    EXPECT_EQ(word_of(recorded(0).actions[0].param2), 6u);
    EXPECT_THAT(additions(),
                ElementsAre(addition(1410, kMeterAction, {0}, {6}), addition(1411, kMeterAction, {0}, {6})));
}

TEST_F(InstallAction, AMeterWithARateKeepsIt) {
    FpEntity rule = make_rule(35, 0);
    add_action(&rule, kMeterAction, {0xFFFFFFFF}, {0});
    EXPECT_EQ(install(rule), 0);
    EXPECT_THAT(meters(), ElementsAre(meter_set("4294967295", "11")));
}

TEST_F(InstallAction, ASubmoduleWithoutMeterHasRateAndIndexMinus1) {
    FpEntity rule = make_rule(8, 0);
    add_action(&rule, kMeterAction, {0}, {0});
    add_action(&rule, kMeterAction, {0}, {9});
    EXPECT_EQ(install(rule), 0);
    EXPECT_THAT(meters(), ElementsAre(meter_set("4294967295", "4294967295"), meter_set("4294967295", "8")));
    EXPECT_EQ(word_of(recorded(0).actions[0].param2), 0xFFFFFFFFu);
}

TEST_F(InstallAction, SeveralMetersAreSetOneByOneAndDestroyedAsOften) {
    FpEntity rule = make_rule(30, 1);
    add_action(&rule, kMeterAction, {0}, {0});
    add_action(&rule, kOtherAction, {1});
    add_action(&rule, kMeterAction, {40}, {2});
    EXPECT_EQ(install(rule), 0);
    EXPECT_THAT(meters(), ElementsAre(meter_set("100", "0"), meter_set("40", "2")));
    EXPECT_EQ(install(rule), 0);
    EXPECT_EQ(calls_of("user_field_meter_destroy").size(), 2u);
}

TEST_F(InstallAction, TheMetersResultIsAdded) {
    FpEntity rule = make_rule(3, 5);
    add_action(&rule, kMeterAction, {1}, {2});
    fail_every("user_field_set_double_entry", 1);
    fail_every("user_field_meter_entry_set", 6);
    EXPECT_EQ(install(rule), 7);
}

TEST_F(InstallAction, ThePortOfTheFirstActionIsTranslated) {
    FpEntity rule = make_rule(kOfGroup1, 5);
    add_action(&rule, kPortAction, {26, 7});
    EXPECT_EQ(install(rule), 0);
    EXPECT_THAT(additions(), ElementsAre(addition(1410, kPortAction, {29, 7}), addition(1411, kPortAction, {29, 7})));
    EXPECT_EQ(word_of(recorded(0).actions[0].param), 29u);
}

TEST_F(InstallAction, AnUnknownPortBecomesMinus1) {
    for (const uint32_t intf : {27u, ADP_AGG_INTF(1), 0x20000001u, 0xFFFFFFFFu}) {
        FpEntity rule = make_rule(kOfGroup3, 0);
        add_action(&rule, kPortAction, {intf});
        EXPECT_EQ(install(rule), 0);
        EXPECT_THAT(additions(), ElementsAre(addition(820, kPortAction, {0xFFFFFFFF})));
    }
    FpEntity cpu = make_rule(kOfGroup3, 0);
    add_action(&cpu, kPortAction, {0, 1});
    EXPECT_EQ(install(cpu), 0);
    EXPECT_THAT(additions(), ElementsAre(addition(820, kPortAction, {0, 1})));
}

TEST_F(InstallAction, ThePortIsTranslatedWhateverTheUnit) {
    FpEntity rule = make_rule(kOfGroup3, 0);
    rule.unit = 1;
    add_action(&rule, kPortAction, {4});
    EXPECT_EQ(install(rule), 0);
    EXPECT_EQ(word_of(recorded(0).actions[0].param), 7u);
}

TEST_F(InstallAction, ThePortOfTheSecondActionGoesToTheFirst) {
    FpEntity rule = make_rule(kOfGroup3, 0);
    add_action(&rule, kOtherAction, {9});
    add_action(&rule, kPortAction, {4});
    EXPECT_EQ(install(rule), 0);
    EXPECT_THAT(additions(), ElementsAre(addition(820, kOtherAction, {9}), addition(820, kPortAction, {4})));
    EXPECT_EQ(word_of(recorded(0).actions[0].param), 7u);
    EXPECT_EQ(word_of(recorded(0).actions[1].param), 4u);
}

TEST_F(InstallAction, ThePortGoesToTheActionThatTheStatusNumbers) {
    for (int32_t status = 0; status < 8; ++status) {
        start();
        FpEntity rule = full_record(kOfGroup3, 0);
        rule.action_num = 2;
        rule.actions[0].type = kPortAction;
        set_words(rule.actions[0].param, {4});
        fail_every("user_field_entry_create_id", status);
        EXPECT_EQ(install(rule), status);
        rule.true_entry = 820;
        set_words(rule.actions[status].param, {7});
        EXPECT_TRUE(bytes_of(recorded(0)) == bytes_of(rule)) << status;
    }
}

TEST_F(InstallAction, ThePortsGoToTheActionThatTheStatusNumbers) {
    for (int32_t status = 0; status < 8; ++status) {
        start();
        FpEntity rule = full_record(kOfGroup3, 0);
        rule.action_num = 1;
        rule.actions[0].type = kPortsAction;
        set_words(rule.actions[0].param, {1u << 26 | 1u << 1, 0, 0, 0, 0, 0, 0, 0x80000000});
        fail_every("user_field_entry_create_id", status);
        EXPECT_EQ(install(rule), status);
        rule.true_entry = 820;
        set_words(rule.actions[status].param, {1u << 29 | 1u << 4, 0, 0, 0, 0, 0, 0, 0});
        EXPECT_TRUE(bytes_of(recorded(0)) == bytes_of(rule)) << status;
    }
}

TEST_F(InstallAction, OutsideTheActionsNothingIsWritten) {
    for (const uint32_t type : {kPortAction, kPortsAction}) {
        for (const int32_t status : {8, 9, 255, -1, -8, INT32_MIN, INT32_MAX}) {
            start();
            FpEntity rule = full_record(kOfGroup3, 0);
            rule.action_num = 1;
            rule.actions[0].type = type;
            set_words(rule.actions[0].param, {4});
            fail_every("user_field_entry_create_id", status);
            EXPECT_EQ(install(rule), status);
            rule.true_entry = 820;
            EXPECT_TRUE(bytes_of(recorded(0)) == bytes_of(rule)) << status;
        }
    }
}

TEST_F(InstallAction, TheIndexIsTheStatusAtThatMoment) {
    FpEntity rule = full_record(kOfGroup3, 0);
    rule.action_num = 4;
    for (const int i : {1, 3}) {
        rule.actions[i].type = kPortAction;
    }
    rule.actions[0].type = rule.actions[2].type = kOtherAction;
    set_words(rule.actions[1].param, {4});
    set_words(rule.actions[3].param, {5});
    for (const int32_t result : {2, 0, 4, 0}) {
        driver().once("user_field_action_add").returns(result);
    }
    EXPECT_EQ(adp_fp_add_entity_rule(rule), 6);
    rule.true_entry = 820;
    set_words(rule.actions[2].param, {7});  // the first addition failed with 2
    set_words(rule.actions[6].param, {8});  // and the third with 4 more
    EXPECT_TRUE(bytes_of(recorded(0)) == bytes_of(rule));
}

TEST_F(InstallAction, PortsAreTranslatedInPlaceAndTheRestOfTheFieldStays) {
    FpEntity rule = make_rule(kOfGroup1, 5);
    std::vector<uint32_t> words = {0x07FFFFFF, 1, 2, 3, 4, 5, 6, 7, 0xABCDEF01};
    add_action(&rule, kPortsAction, words, {9});
    EXPECT_EQ(install(rule), 0);
    const std::vector<uint32_t> translated = {0x3FFFFFF1, 0, 0, 0, 0, 0, 0, 0, 0xABCDEF01};
    EXPECT_THAT(additions(), ElementsAre(addition(1410, kPortsAction, translated, {9}),
                                         addition(1411, kPortsAction, translated, {9})));
}

TEST_F(InstallAction, PortsOfTheSecondActionGoToTheFirst) {
    FpEntity rule = make_rule(kOfGroup3, 0);
    add_action(&rule, kOtherAction, {9});
    add_action(&rule, kPortsAction, {2});
    EXPECT_EQ(install(rule), 0);
    EXPECT_THAT(additions(), ElementsAre(addition(820, kOtherAction, {9}), addition(820, kPortsAction, {2})));
    EXPECT_EQ(word_of(recorded(0).actions[0].param), 1u << 4);
}

TEST_F(InstallAction, PortsOfSubmodule16StayAsTheyAre) {
    FpEntity rule = make_rule(16, 0);
    add_action(&rule, kPortsAction, {0xFFFFFFFF, 0x12345678});
    EXPECT_EQ(install(rule), 0);
    EXPECT_THAT(additions(), ElementsAre(addition(947, kPortsAction, {0xFFFFFFFF, 0x12345678})));
    FpEntity single = make_rule(16, 0);  // a single port is translated there as well
    add_action(&single, kPortAction, {4});
    EXPECT_EQ(install(single), 0);
    EXPECT_THAT(additions(), ElementsAre(addition(947, kPortAction, {7})));
}

TEST_F(InstallAction, PortsOfAnotherUnitBecomeAnEmptySet) {
    FpEntity rule = make_rule(kOfGroup3, 0);
    rule.unit = 1;
    add_action(&rule, kPortsAction, std::vector<uint32_t>(9, 0xFFFFFFFF));
    add_qualifier(&rule, 13, std::vector<uint32_t>(8, 0xFFFFFFFF), std::vector<uint32_t>(8, 0xFFFFFFFF));
    EXPECT_EQ(install(rule), 0);
    EXPECT_THAT(calls_of("user_field_qualify_InPorts"),
                ElementsAre("user_field_qualify_InPorts(handle=0, unit=1, entry=820, data={}, mask={})"));
    const FpAction &action = recorded(0).actions[0];
    for (size_t i = 0; i < 9; ++i) {
        EXPECT_EQ(word_of(action.param + 4 * i), i < 8 ? 0 : 0xFFFFFFFF);
    }
}

TEST_F(InstallAction, UnknownTypesGoToTheDriverAsTheyAre) {
    FpEntity rule = make_rule(kOfGroup3, 0);
    for (const uint32_t type : {0u, 29u, 31u, 52u, 54u, 0xFFFFFFFFu}) {
        rule.action_num = 0;
        add_action(&rule, type, {4, 0, 9}, {1});
        EXPECT_EQ(install(rule), 0);
        EXPECT_THAT(additions(), ElementsAre(addition(820, type, {4, 0, 9}, {1})));
        EXPECT_THAT(meters(), IsEmpty());
    }
}

TEST_F(InstallAction, EightAreAddedInOrder) {
    FpEntity rule = make_rule(kOfGroup3, 0);
    Trace expected;
    for (uint32_t i = 0; i < 8; ++i) {
        add_action(&rule, 60 + i, {i + 1});
        expected.push_back(addition(820, 60 + i, {i + 1}));
    }
    EXPECT_EQ(install(rule), 0);
    EXPECT_EQ(additions(), expected);
}

}  // namespace
