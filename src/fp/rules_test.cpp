// The list of installed rules: its start and look-up.
#include "fp/testing/support.h"

namespace {

using fp_test::add_action;
using fp_test::joined;
using fp_test::kFailures;
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

constexpr char kEntryFormat[] = " del entry=[%d] true_entry=[%d]";
constexpr char kSecondFormat[] = " del double entry=[%d] true_entry=[%d]";
constexpr char kInitCall[] = "user_field_init(unit=0, zero=0)";

/** The three calls that remove an entry from the hardware. */
Trace destroyed(uint32_t entry) {
    const std::string at = "(handle=0, unit=0, entry=" + std::to_string(entry) + ")";
    return {"user_field_action_remove_all" + at, "user_field_qualify_clear" + at, "user_field_entry_destroy" + at};
}

std::string meter_destroyed(uint32_t entry) {
    return "user_field_meter_destroy(handle=0, unit=0, entry=" + std::to_string(entry) + ")";
}

class Rules : public fp_test::FpTest {
  protected:
    /** A node that the test puts into the list, without an installation. */
    static FpListNode *put(const FpEntity &rule) {
        auto *node = static_cast<FpListNode *>(calloc(1, sizeof(FpListNode)));
        node->entity = rule;
        node->link = {&acl_fp_list_head, acl_fp_list_head.prev};
        acl_fp_list_head.prev->next = &node->link;
        acl_fp_list_head.prev = &node->link;
        return node;
    }
    /** A rule in the list of the library and of the model, with this hardware entry. */
    void add(uint32_t submodule_type, uint32_t entity_id, uint32_t true_entry, uint32_t unit = 0) {
        FpEntity rule = make_rule(submodule_type, entity_id);
        rule.true_entry = true_entry;
        rule.unit = unit;
        put(rule);
        model().list.push_back(rule);
    }

    int32_t init() {
        ::testing::internal::CaptureStdout();
        const int32_t status = adp_fp_init();
        printed_ = ::testing::internal::GetCapturedStdout();
        return status;
    }

    std::string printed_;
};

TEST_F(Rules, InitCallsTheDriverOnceWhenItSucceeds) {
    for (const int32_t result : {0, 1, 77, INT32_MAX}) {
        driver().on("user_field_init").returns(result);
        EXPECT_EQ(init(), 0);
        EXPECT_THAT(driver().take(), ElementsAre(kInitCall));
        EXPECT_EQ(printed_, "");
    }
}

TEST_F(Rules, InitPrintsTheSecondResultAndReturnsTheThird) {
    const struct {
        int32_t first, second, third;
    } rows[] = {{-1, -2, -3}, {-1, 0, 0}, {-1, -1, 0}, {-5, 0, -6}, {INT32_MIN, INT32_MIN, INT32_MIN}, {-1, 4, 9}};
    for (const auto &row : rows) {
        for (const int32_t result : {row.first, row.second, row.third}) {
            driver().once("user_field_init").returns(result);
        }
        EXPECT_EQ(init(), row.third);
        EXPECT_THAT(driver().take(), ElementsAre(kInitCall, kInitCall, kInitCall));
        EXPECT_EQ(printed_, "adp_fp_init:[00428]  error funtion ret=" + std::to_string(row.second) + " \n");
    }
}

TEST_F(Rules, InitDropsTheNodesWithoutFreeingThem) {
    FpListNode *node = put(make_rule(1, 2));
    FpListNode *other = put(make_rule(1, 3));
    {
        fake_system::Session session;
        EXPECT_EQ(adp_fp_init(), 0);
        EXPECT_EQ(acl_fp_list_head.next, &acl_fp_list_head);
        EXPECT_EQ(acl_fp_list_head.prev, &acl_fp_list_head);
        EXPECT_EQ(session.system().allocations(), 0u);
    }
    EXPECT_EQ(node->entity.entity_id, 2u);
    EXPECT_EQ(node->link.next, &other->link);
    EXPECT_EQ(other->link.prev, &node->link);
    free(node);
    free(other);
}

TEST_F(Rules, InitEmptiesTheListBeforeTheDriverIsCalled) {
    FpListNode *node = put(make_rule(1, 2));
    driver().on("user_field_init").does([](recording::Arguments &) { return installed_rules().empty() ? 0 : -9; });
    EXPECT_EQ(init(), 0);
    free(node);
}

TEST_F(Rules, AreFoundByBothNumbersAndTheFirstMatchIsReturned) {
    FpListNode *of_1 = put(make_rule(1, 7));
    FpListNode *of_2 = put(make_rule(2, 7));
    FpListNode *second_of_1 = put(make_rule(1, 8));
    put(make_rule(1, 7));
    EXPECT_EQ(adp_fp_find_list_node_by_entity(1, 7), of_1);
    EXPECT_EQ(adp_fp_find_list_node_by_entity(2, 7), of_2);
    EXPECT_EQ(adp_fp_find_list_node_by_entity(1, 8), second_of_1);
    EXPECT_EQ(adp_fp_find_list_node_by_entity(2, 8), nullptr);
    EXPECT_EQ(adp_fp_find_list_node_by_entity(0, 0), nullptr);
    EXPECT_EQ(adp_fp_find_list_node_by_entity(0x10001, 7), nullptr);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(Rules, AreNotFoundInAnEmptyList) {
    EXPECT_EQ(adp_fp_find_list_node_by_entity(0, 0), nullptr);
    EXPECT_EQ(adp_fp_find_list_node_by_entity(1, 0), nullptr);
}

TEST_F(Rules, RemovingAnUnknownRuleDoesNothing) {
    add(1, 7, 1294);
    for (const uint32_t action : {0u, 53u}) {
        EXPECT_EQ(remove(1, 8, action), 0);
        EXPECT_EQ(remove(2, 7, action), 0);
        EXPECT_THAT(last_trace(), IsEmpty());
    }
    EXPECT_EQ(remove_ex(make_rule(44, 7)), 0);
    EXPECT_THAT(last_trace(), IsEmpty());
}

TEST_F(Rules, RemovingDestroysTheEntry) {
    add(kOfGroup3, 4, 824);
    EXPECT_EQ(remove(kOfGroup3, 4), 0);
    EXPECT_THAT(last_trace(), ElementsAreArray(joined({logged("adp_fp_delete_entity_rule", 547, kEntryFormat,
                                                              " del entry=[4] true_entry=[824]"),
                                                       destroyed(824)})));
    EXPECT_THAT(installed_rules(), IsEmpty());
}

TEST_F(Rules, RemovingADoubleRuleDestroysTheSecondEntryAfterTheFirstAndItsMeterOnce) {
    add(kOfGroup1, 5, 1410);
    trace_on();
    EXPECT_EQ(remove(kOfGroup1, 5, 53), 0);
    EXPECT_THAT(
        last_trace(),
        ElementsAreArray(joined(
            {logged("adp_fp_delete_entity_rule", 547, kEntryFormat, " del entry=[5] true_entry=[1410]", true),
             {meter_destroyed(1410)},
             destroyed(1410),
             logged("adp_fp_delete_entity_rule", 567, kSecondFormat, " del double entry=[5] true_entry=[1411]", true),
             destroyed(1411)})));
}

TEST_F(Rules, RemovingByRecordHasLogLinesOfItsOwn) {
    add(kOfGroup5, 5, 1034);
    FpEntity rule = make_rule(kOfGroup5, 5);
    add_action(&rule, 53);
    EXPECT_EQ(remove_ex(rule), 0);
    EXPECT_THAT(
        last_trace(),
        ElementsAreArray(joined(
            {logged("adp_fp_delete_entity_rule_ex", 612, kEntryFormat, " del entry=[5] true_entry=[1034]"),
             {meter_destroyed(1034)},
             destroyed(1034),
             logged("adp_fp_delete_entity_rule_ex", 636, kSecondFormat, " del double entry=[5] true_entry=[1035]"),
             destroyed(1035)})));
}

TEST_F(Rules, OnlyActionType53DestroysAMeter) {
    for (const uint32_t action : {0u, 1u, 30u, 33u, 52u, 54u, 0x10035u, 0xFFFFFFFFu}) {
        add(kOfGroup3, 4, 824);
        EXPECT_EQ(remove(kOfGroup3, 4, action), 0);
        EXPECT_THAT(last_driver_calls(), ElementsAreArray(destroyed(824)));
    }
    add(kOfGroup3, 4, 824);
    EXPECT_EQ(remove(kOfGroup3, 4, 53), 0);
    EXPECT_THAT(last_driver_calls(), ElementsAreArray(joined({{meter_destroyed(824)}, destroyed(824)})));
}

TEST_F(Rules, TheEntryNumberDecidesWhetherTwoEntriesAreDestroyed) {
    for (const uint32_t entry : {1024u, 1025u, 1534u, 1535u}) {
        add(kOfGroup3, 4, entry);  // of a group whose rules take one entry
        EXPECT_EQ(remove(kOfGroup3, 4), 0);
        EXPECT_THAT(last_driver_calls(), ElementsAreArray(joined({destroyed(entry), destroyed(entry + 1)})));
    }
    for (const uint32_t entry : {0u, 1023u, 1536u, 0xFFFFFFFFu}) {
        add(kOfGroup1, 4, entry);  // of a group whose rules take two
        EXPECT_EQ(remove(kOfGroup1, 4), 0);
        EXPECT_THAT(last_driver_calls(), ElementsAreArray(destroyed(entry)));
    }
}

TEST_F(Rules, RemovingUsesUnit0WhateverTheRecordsUnit) {
    for (const uint32_t unit : {1u, 0xFFFFFFFFu}) {
        add(kOfGroup3, 4, 824, unit);
        EXPECT_EQ(remove(kOfGroup3, 4, 53), 0);
        EXPECT_THAT(last_driver_calls(), ElementsAreArray(joined({{meter_destroyed(824)}, destroyed(824)})));
    }
}

TEST_F(Rules, RemovingByRecordUsesItsOwnActionsNotTheInstalledOnes) {
    const auto add_metered = [&] {
        add(kOfGroup3, 4, 824);
        add_action(&installed_rules().back()->entity, 53);
        add_action(&model().list.back(), 53);
    };
    add_metered();
    FpEntity rule = make_rule(kOfGroup3, 4);
    EXPECT_EQ(remove_ex(rule), 0);
    EXPECT_THAT(last_driver_calls(), ElementsAreArray(destroyed(824)));
    for (const uint32_t type : {53u, 30u, 53u, 53u}) {
        add_action(&rule, type);
    }
    add_metered();
    EXPECT_EQ(remove_ex(rule), 0);
    EXPECT_THAT(
        last_driver_calls(),
        ElementsAreArray(joined({{meter_destroyed(824), meter_destroyed(824), meter_destroyed(824)}, destroyed(824)})));
    add_metered();
    rule.action_num = 2;  // what follows the count is not an action
    EXPECT_EQ(remove_ex(rule), 0);
    EXPECT_THAT(last_driver_calls(), ElementsAreArray(joined({{meter_destroyed(824)}, destroyed(824)})));
}

TEST_F(Rules, RemovingByRecordReadsNoActionOutsideTheRecord) {
    FpEntity rule = make_rule(kOfGroup3, 4);
    for (int i = 0; i < 8; ++i) {
        add_action(&rule, 53);
    }
    for (const int32_t count : {8, 9, INT32_MAX}) {
        add(kOfGroup3, 4, 824);
        rule.action_num = count;
        EXPECT_EQ(remove_ex(rule), 0);
        EXPECT_THAT(last_driver_calls(), ElementsAreArray(joined({Trace(8, meter_destroyed(824)), destroyed(824)})));
    }
    for (const int32_t count : {0, -1, INT32_MIN}) {
        add(kOfGroup3, 4, 824);
        rule.action_num = count;
        EXPECT_EQ(remove_ex(rule), 0);
        EXPECT_THAT(last_driver_calls(), ElementsAreArray(destroyed(824)));
    }
}

TEST_F(Rules, RemovingOrsAllResultsTogetherAndContinues) {
    add(kOfGroup1, 5, 1410);
    int32_t bit = 1;
    for (const char *call : {"user_field_meter_destroy", "user_field_action_remove_all", "user_field_qualify_clear",
                             "user_field_entry_destroy"}) {
        fail_every(call, bit);
        bit <<= 1;
    }
    EXPECT_EQ(remove(kOfGroup1, 5, 53), 15);
    EXPECT_EQ(last_driver_calls().size(), 7u);
    EXPECT_THAT(installed_rules(), IsEmpty());
}

TEST_F(Rules, RemovingWithEachCallFailingInTurn) {
    FpEntity metered = make_rule(kOfGroup5, 5);
    add_action(&metered, 53);
    add_action(&metered, 53);
    const auto prepare = [&] {
        add(kOfGroup5, 4, 1032);
        add(kOfGroup5, 5, 1034);
        add(kOfGroup5, 6, 1036);
    };
    fail_each_call(prepare, [&] { remove(kOfGroup5, 5, 53); });
    fail_each_call(prepare, [&] { remove_ex(metered); });
    EXPECT_EQ(installed_rules().size(), 2u);
}

TEST_F(Rules, RemovingJoinsTheNeighbours) {
    for (const std::vector<uint32_t> &order : {std::vector<uint32_t>{1, 2, 3}, {2, 1, 3}, {3, 2, 1}, {2, 3, 1}}) {
        for (const uint32_t entity : {1u, 2u, 3u}) {
            add(kOfGroup3, entity, 800 + entity);
        }
        for (const uint32_t entity : order) {
            EXPECT_EQ(remove(kOfGroup3, entity), 0);  // the lists are compared, links included
        }
        EXPECT_EQ(acl_fp_list_head.next, &acl_fp_list_head);
        EXPECT_EQ(acl_fp_list_head.prev, &acl_fp_list_head);
    }
}

TEST_F(Rules, RemovingTakesTheFirstOfTwoNodesWithOneKey) {
    add(kOfGroup3, 4, 824);
    add(kOfGroup3, 4, 825);
    EXPECT_EQ(remove(kOfGroup3, 4), 0);
    ASSERT_EQ(installed_rules().size(), 1u);
    EXPECT_EQ(recorded(0).true_entry, 825u);
}

TEST_F(Rules, RemovingFreesTheNodeOnceWithItsLinksPoisoned) {
    using Remove = std::function<void()>;
    for (const Remove &remove_it : {Remove([] { adp_fp_delete_entity_rule(kOfGroup3, 4, 0); }),
                                    Remove([] { adp_fp_delete_entity_rule_ex(make_rule(kOfGroup3, 4)); })}) {
        fake_system::Session session;
        adp_fp_add_entity_rule(make_rule(kOfGroup3, 4));
        const FpListNode *node = adp_fp_find_list_node_by_entity(kOfGroup3, 4);
        std::vector<const void *> freed;
        std::vector<uintptr_t> links;
        session.system().on_free([&](const void *memory) {
            freed.push_back(memory);
            const auto *link = static_cast<const adp_list_link_t *>(memory);
            links.push_back(reinterpret_cast<uintptr_t>(link->next));
            links.push_back(reinterpret_cast<uintptr_t>(link->prev));
        });
        remove_it();
        EXPECT_THAT(freed, ElementsAre(static_cast<const void *>(node)));
        EXPECT_THAT(links, ElementsAre(0x00100100u, 0x00200200u));
        EXPECT_EQ(session.system().outstanding_allocations(), 0u);
        EXPECT_EQ(session.system().allocations(), 1u);
    }
}

TEST_F(Rules, TheNodeIsStillListedWhileItsEntriesAreDestroyed) {
    add(kOfGroup3, 4, 824);
    size_t listed = 0;
    driver().on("user_field_entry_destroy").does([&](recording::Arguments &) {
        listed = installed_rules().size();
        return 0;
    });
    EXPECT_EQ(remove(kOfGroup3, 4), 0);
    EXPECT_EQ(listed, 1u);
}

}  // namespace
