// Memory and list nodes of installed rules, and that all of them are released.
#include <array>

#include "fp/testing/support.h"

namespace {

using fp_test::add_action;
using fp_test::add_qualifier;
using fp_test::kOfGroup1;
using fp_test::make_rule;
using library_test::installed_rules;
using ::testing::IsEmpty;

class InstallMemory : public fp_test::FpTest {};

TEST_F(InstallMemory, OneNodeIsAllocatedAndNothingElse) {
    FpEntity rule = make_rule(kOfGroup1, 4);
    for (uint32_t i = 0; i < 16; ++i) {
        add_qualifier(&rule, 29, {i}, {i});
    }
    for (uint32_t i = 0; i < 8; ++i) {
        add_action(&rule, 53, {i}, {i});
    }
    for (const bool is_replaced : {false, true}) {
        fake_system::Session session;
        driver().record(false);
        if (is_replaced) {
            adp_fp_add_entity_rule(rule);
        }
        const size_t before = session.system().allocations();
        adp_fp_add_entity_rule(rule);
        EXPECT_EQ(session.system().allocations(), before + 1);
        EXPECT_EQ(session.system().outstanding_allocations(), 1u);
        EXPECT_EQ(adp_fp_delete_entity_rule(kOfGroup1, 4, 53), 0);
        EXPECT_EQ(session.system().allocations(), before + 1);
        EXPECT_EQ(session.system().outstanding_allocations(), 0u);
    }
}

TEST_F(InstallMemory, WithoutMemoryTheRuleIsInstalledButNotRecorded) {
    FpEntity rule = make_rule(kOfGroup1, 4);
    add_action(&rule, 11, {3});
    ASSERT_EQ(install(rule), 0);
    model().is_out_of_memory = true;
    const auto install_without_memory = [&] {
        fake_system::Session session;
        session.system().fail_allocation(0);
        const int32_t status = adp_fp_add_entity_rule(rule);
        EXPECT_EQ(session.system().allocations(), 1u);
        return status;
    };
    for (const int32_t failure : {0, 5}) {
        fail_every("user_field_entry_install", failure);
        EXPECT_EQ(both(install_without_memory, [&] { return model().install(rule); }), failure);
        EXPECT_EQ(last_printed(), "adp_fp_add_entity_rule:[01295] malloc failed!~\n");
        EXPECT_THAT(installed_rules(), IsEmpty());  // the old rule has been removed
    }
    EXPECT_EQ(driver().count("user_field_entry_install"), 6u);
    EXPECT_EQ(remove(kOfGroup1, 4), 0);
    EXPECT_THAT(last_trace(), IsEmpty());
}

struct Key {
    uint32_t submodule_type, entity_id;
};

/** Rules of different entries: the last submodule of each group gets the rest of the slice. */
std::vector<Key> distinct_keys() {
    constexpr size_t kRules = 900;
    std::vector<Key> keys;
    for (const auto &[type, first, count] : {std::array{1u, 0u, 128u},
                                             {8u, 0u, 128u},
                                             {18u, 0u, 128u},
                                             {31u, 0u, 128u},
                                             {38u, 0u, 128u},
                                             {40u, 0u, 128u},
                                             {42u, 9u, 128u},
                                             {43u, 9u, 128u}}) {
        for (uint32_t entity = first; entity < first + count && keys.size() < kRules; ++entity) {
            keys.push_back({type, entity});
        }
    }
    return keys;
}

TEST_F(InstallMemory, NineHundredRulesAreInstalledAndRemovedWithoutALeak) {
    const std::vector<Key> keys = distinct_keys();
    ASSERT_EQ(keys.size(), 900u);
    driver().record(false);
    std::map<uint32_t, int> created;
    driver().on("user_field_entry_create_id").does([&](recording::Arguments &arguments) {
        return created[arguments.u32("entry")]++ == 0 ? 0 : -4;
    });
    driver().on("user_field_entry_destroy").does([&](recording::Arguments &arguments) {
        return created.erase(arguments.u32("entry")) == 1 ? 0 : -7;
    });
    fake_system::Session session;
    for (const uint32_t priority : {1u, 2u}) {
        for (const Key &key : keys) {
            ASSERT_EQ(adp_fp_add_entity_rule(make_rule(key.submodule_type, key.entity_id, priority)), 0);
        }
        EXPECT_EQ(installed_rules().size(), 900u);
        EXPECT_EQ(created.size(), 900u + 256u);
        EXPECT_EQ(session.system().outstanding_allocations(), 900u);
        EXPECT_EQ(recorded(899).priority, priority);
    }
    for (size_t i = 0; i < keys.size(); ++i) {
        const Key &key = keys[i % 2 == 0 ? i : keys.size() - i];
        ASSERT_EQ(adp_fp_delete_entity_rule(key.submodule_type, key.entity_id, 0), 0);
    }
    EXPECT_THAT(installed_rules(), IsEmpty());
    EXPECT_EQ(acl_fp_list_head.prev, &acl_fp_list_head);
    EXPECT_THAT(created, IsEmpty());
    EXPECT_EQ(session.system().allocations(), 1800u);
    EXPECT_EQ(session.system().outstanding_allocations(), 0u);
}

}  // namespace
