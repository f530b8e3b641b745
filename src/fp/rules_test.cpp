// Rules: records with damaged counts, nodes that are freed, and remark requests.
#include <stddef.h>

#include "tests/support/fake_system.h"
#include "tests/support/library_test.h"

namespace rules_test {

using library_test::installed_rules;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::StartsWith;

constexpr uint32_t kSubmodule = 22;  // one entry each, the first is 820
constexpr uint32_t kEntity = 4;
constexpr uint32_t kMeterAction = 53;

FpEntity make_rule() {
    FpEntity rule = {};
    rule.submodule_type = kSubmodule;
    rule.entity_id = kEntity;
    return rule;
}

std::string bytes_of(const FpEntity &rule) {
    return {reinterpret_cast<const char *>(&rule), sizeof rule};
}

class Rules : public library_test::LibraryTest {
  protected:
    Rules() { std::copy(std::begin(g_stFpInfo), std::end(g_stFpInfo), submodules_); }
    ~Rules() override { std::copy(std::begin(submodules_), std::end(submodules_), g_stFpInfo); }
    Rules(const Rules &) = delete;
    Rules &operator=(const Rules &) = delete;

  private:
    FpInfo submodules_[ADP_FP_SUBMODULES] = {};
};

// The status numbers the action that a port is translated into; it can be any number.
TEST_F(Rules, OutsideTheActionsNoPortIsWritten) {
    for (const uint32_t type : {30u, 33u}) {
        for (const int32_t status : {8, 9, 255, -1, -8, INT32_MIN, INT32_MAX}) {
            start_over();
            FpEntity rule;
            std::memset(&rule, 0x5A, sizeof rule);
            rule.submodule_type = kSubmodule;
            rule.entity_id = 0;
            rule.unit = 0;
            rule.qualify_num = 0;
            rule.action_num = 1;
            rule.actions[0].type = type;
            std::memset(rule.actions[0].param, 0, sizeof rule.actions[0].param);
            driver().fail_every("user_field_entry_create_id", status);
            EXPECT_EQ(adp_fp_add_entity_rule(rule), status);
            rule.true_entry = 820;
            EXPECT_TRUE(bytes_of(installed_rules().at(0)->entity) == bytes_of(rule)) << status;
        }
    }
}

TEST_F(Rules, ASubmoduleWithoutAGroupIsRefused) {
    for (FpInfo &row : g_stFpInfo) {
        row.group = 0;
    }
    EXPECT_EQ(adp_fp_add_entity_rule(make_rule()), 101);
    EXPECT_TRUE(installed_rules().empty());
}

TEST_F(Rules, RemovalByRecordUsesItsOwnActionsAndNoneOutsideIt) {
    const struct {
        int32_t actions;
        size_t meters;
    } cases[] = {{0, 0}, {-1, 0}, {INT32_MIN, 0}, {1, 0}, {2, 1}, {8, 7}, {9, 7}, {INT32_MAX, 7}};
    for (const auto &[actions, meters] : cases) {
        FpEntity installed = make_rule();
        installed.action_num = 1;
        installed.actions[0].type = kMeterAction;
        EXPECT_EQ(adp_fp_add_entity_rule(installed), 0);
        FpEntity rule = make_rule();
        for (FpAction &action : rule.actions) {
            action.type = &action == rule.actions ? 1 : kMeterAction;
        }
        rule.action_num = actions;
        driver().reset();
        EXPECT_EQ(adp_fp_delete_entity_rule_ex(rule), 0);
        EXPECT_EQ(driver().count("user_field_meter_destroy"), meters) << actions;
        EXPECT_TRUE(installed_rules().empty());
    }
}

TEST_F(Rules, RemovalFreesTheNodeOnceWithItsLinksPoisoned) {
    fake_system::Session session;
    adp_fp_add_entity_rule(make_rule());
    const FpListNode *node = adp_fp_find_list_node_by_entity(kSubmodule, kEntity);
    std::vector<const void *> freed;
    std::vector<uintptr_t> links;
    session.system().on_free([&](const void *memory) {
        freed.push_back(memory);
        const auto *link = static_cast<const adp_list_link_t *>(memory);
        links.push_back(reinterpret_cast<uintptr_t>(link->next));
        links.push_back(reinterpret_cast<uintptr_t>(link->prev));
    });
    EXPECT_EQ(adp_fp_delete_entity_rule(kSubmodule, kEntity, 0), 0);
    EXPECT_THAT(freed, ElementsAre(static_cast<const void *>(node)));
    EXPECT_THAT(links, ElementsAre(0x00100100u, 0x00200200u));
}

class Remark : public Rules {
  protected:
    static RemarkRule request(uint8_t form) {
        RemarkRule rule = {};
        rule.rule_id = 5;
        rule.remark_kind = 1;
        rule.rule_form = form;
        return rule;
    }
};

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

// Bit k of the request is interface k + 1: a bit is carried from word to word, and the last one is lost.
TEST_F(Remark, ThePortsOfARequestAreShifted) {
    const struct {
        uint32_t high, low;
        uint32_t shifted_high, shifted_low;
    } rows[] = {{0, 1, 0, 2}, {0, 0x80000000, 1, 0}, {0x80000000, 0, 0, 0}, {1, 0x80000001, 3, 2}};
    for (const auto &row : rows) {
        RemarkRule rule = request(7);
        rule.port_bitmap[0] = row.high;
        rule.port_bitmap[1] = row.low;
        EXPECT_EQ(adp_add_remark_rule(&rule), 0);
        EXPECT_THAT(rule.port_bitmap, ElementsAre(row.shifted_high, row.shifted_low));
    }
}

TEST_F(Remark, WithoutItsSubmoduleARequestIs504BeforeItsFormIsChecked) {
    g_stFpInfo[0].submodule_type = 0;
    for (const uint8_t form : {uint8_t{7}, uint8_t{1}, uint8_t{3}}) {
        RemarkRule rule = request(form);
        EXPECT_EQ(adp_add_remark_rule(&rule), 504);
        EXPECT_THAT(driver().trace(), Each(::testing::Not(StartsWith("user_"))));
    }
}

}  // namespace rules_test
