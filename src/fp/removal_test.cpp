// Removal of installed rules from the hardware and from the list.
#include "fp/testing/support.h"

namespace {

using fp_test::add_action;
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

constexpr char kEntryFormat[] = " del entry=[%d] true_entry=[%d]";
constexpr char kSecondFormat[] = " del double entry=[%d] true_entry=[%d]";

/** The three calls that remove an entry from the hardware. */
Trace destroyed(uint32_t entry) {
    const std::string at = "(handle=0, unit=0, entry=" + std::to_string(entry) + ")";
    return {"user_field_action_remove_all" + at, "user_field_qualify_clear" + at, "user_field_entry_destroy" + at};
}

std::string meter_destroyed(uint32_t entry) {
    return "user_field_meter_destroy(handle=0, unit=0, entry=" + std::to_string(entry) + ")";
}

class Removal : public fp_test::FpTest {
  protected:
    /** A rule in the list of the library and of the model, with this hardware entry. */
    void add(uint32_t submodule_type, uint32_t entity_id, uint32_t true_entry, uint32_t unit = 0) {
        FpEntity rule = make_rule(submodule_type, entity_id);
        rule.true_entry = true_entry;
        rule.unit = unit;
        put(rule);
        model().list.push_back(rule);
    }
};

TEST_F(Removal, OfAnUnknownRuleDoesNothing) {
    add(1, 7, 1294);
    for (const uint32_t action : {0u, 53u}) {
        EXPECT_EQ(remove(1, 8, action), 0);
        EXPECT_EQ(remove(2, 7, action), 0);
        EXPECT_THAT(last_trace(), IsEmpty());
    }
    EXPECT_EQ(remove_ex(make_rule(44, 7)), 0);
    EXPECT_THAT(last_trace(), IsEmpty());
}

TEST_F(Removal, DestroysTheEntry) {
    add(kOfGroup3, 4, 824);
    EXPECT_EQ(remove(kOfGroup3, 4), 0);
    EXPECT_THAT(last_trace(), ElementsAreArray(joined({logged("adp_fp_delete_entity_rule", 547, kEntryFormat,
                                                              " del entry=[4] true_entry=[824]"),
                                                       destroyed(824)})));
    EXPECT_THAT(installed_rules(), IsEmpty());
}

TEST_F(Removal, OfADoubleRuleDestroysTheSecondEntryAfterTheFirstAndItsMeterOnce) {
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

TEST_F(Removal, ByRecordHasLogLinesOfItsOwn) {
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

TEST_F(Removal, OnlyActionType53DestroysAMeter) {
    for (const uint32_t action : {0u, 1u, 30u, 33u, 52u, 54u, 0x10035u, 0xFFFFFFFFu}) {
        add(kOfGroup3, 4, 824);
        EXPECT_EQ(remove(kOfGroup3, 4, action), 0);
        EXPECT_THAT(last_driver_calls(), ElementsAreArray(destroyed(824)));
    }
    add(kOfGroup3, 4, 824);
    EXPECT_EQ(remove(kOfGroup3, 4, 53), 0);
    EXPECT_THAT(last_driver_calls(), ElementsAreArray(joined({{meter_destroyed(824)}, destroyed(824)})));
}

TEST_F(Removal, TheEntryNumberDecidesWhetherTwoEntriesAreDestroyed) {
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

TEST_F(Removal, UsesUnit0WhateverTheRecordsUnit) {
    for (const uint32_t unit : {1u, 0xFFFFFFFFu}) {
        add(kOfGroup3, 4, 824, unit);
        EXPECT_EQ(remove(kOfGroup3, 4, 53), 0);
        EXPECT_THAT(last_driver_calls(), ElementsAreArray(joined({{meter_destroyed(824)}, destroyed(824)})));
    }
}

TEST_F(Removal, ByRecordUsesItsOwnActionsNotTheInstalledOnes) {
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

TEST_F(Removal, ByRecordReadsNoActionOutsideTheRecord) {
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

TEST_F(Removal, OrsAllResultsTogetherAndContinues) {
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

TEST_F(Removal, WithEachCallFailingInTurn) {
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

TEST_F(Removal, JoinsTheNeighbours) {
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

TEST_F(Removal, RemovesTheFirstOfTwoNodesWithOneKey) {
    add(kOfGroup3, 4, 824);
    add(kOfGroup3, 4, 825);
    EXPECT_EQ(remove(kOfGroup3, 4), 0);
    ASSERT_EQ(installed_rules().size(), 1u);
    EXPECT_EQ(recorded(0).true_entry, 825u);
}

TEST_F(Removal, FreesTheNodeOnceWithItsLinksPoisoned) {
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

TEST_F(Removal, TheNodeIsStillListedWhileItsEntriesAreDestroyed) {
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
