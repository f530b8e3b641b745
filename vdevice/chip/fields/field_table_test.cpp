// Entries of the field processor: slices, the two states of an entry, pairs, priorities, and what is refused.
#include "vdevice/chip/fields/field_table.h"

#include <gtest/gtest.h>

#include <optional>

#include "vdevice/chip/testing/document.h"
#include "vdevice/chip/testing/frame_builder.h"

namespace vdevice::chip {
namespace field_table_test {

using namespace test;

constexpr uint32_t kAll = 0xFFFFFFFF;
constexpr uint32_t kMark = 205;  // an action that carries a number

Action mark(uint32_t number) {
    Action action;
    EXPECT_EQ(make_action(kMark, {{number}, 0}, action), Status::kOk);
    return action;
}

class FieldTableTest : public testing::Test {
  protected:
    void create(int group, uint32_t entry, int32_t priority = 0) {
        ASSERT_EQ(table_.create(group, entry), Status::kOk);
        ASSERT_EQ(table_.set_priority(entry, priority), Status::kOk);
    }
    /** A rule for a VLAN that marks its frames with the entry's number. */
    void add(int group, uint32_t entry, Vid vid, int32_t priority = 0) {
        create(group, entry, priority);
        want(entry, vid);
        ASSERT_EQ(table_.add_action(entry, mark(entry % 256)), Status::kOk);
        ASSERT_EQ(table_.install(entry), Status::kOk);
    }
    void want(uint32_t entry, Vid vid) {
        ASSERT_EQ(table_.qualify(entry, qualifier(Field::kOuterVid, vid, kAll)), Status::kOk);
    }
    void want_type(uint32_t entry, uint32_t type) {
        ASSERT_EQ(table_.qualify(entry, qualifier(Field::kEtherType, type, kAll)), Status::kOk);
    }
    /** Two joined entries that are not installed: one wants a VLAN, the other a type. */
    void add_pair(int group, uint32_t entry, Vid vid, uint32_t type) {
        create(group, entry, 5);
        create(group, entry + 1, 0);
        ASSERT_EQ(table_.join(entry), Status::kOk);
        want(entry, vid);
        want_type(entry + 1, type);
    }
    void install_pair(uint32_t entry) {
        ASSERT_EQ(table_.install(entry), Status::kOk);
        ASSERT_EQ(table_.install(entry + 1), Status::kOk);
    }
    std::optional<FieldMatch> match(Vid vid) {
        const test::Octets frame = test::station(1) + test::station(2) + test::kPayload;
        const auto header = read_header(split_frame(frame), kVlanTpid);
        return table_.match(FieldKey{{4, frame.size(), *header, vid}});
    }
    bool matches(Vid vid) { return match(vid).has_value(); }
    /** What the frames of a VLAN are marked with. */
    uint32_t marked(Vid vid) {
        const auto met = match(vid);
        const Action *action = met ? met->actions.find(ActionKind::kCounter) : nullptr;
        return action == nullptr ? kAll : action->value;
    }

    FieldTable table_;
};

constexpr struct {
    int group;
    uint32_t first;
    uint32_t last;
} kGroups[] = {{9, 0, 255},   {8, 256, 383},  {7, 384, 511},   {6, 512, 639},  {4, 640, 767},
               {3, 768, 895}, {2, 896, 1023}, {5, 1024, 1279}, {1, 1280, 1535}};

TEST_F(FieldTableTest, EntriesAreCreatedInTheirGroupsSlice) {
    for (const auto &group : kGroups) {
        EXPECT_EQ(table_.create(group.group, group.first), Status::kOk) << group.group;
        EXPECT_EQ(table_.create(group.group, group.last), Status::kOk) << group.group;
        EXPECT_EQ(table_.create(group.group, group.first), Status::kFieldExists) << group.group;
        EXPECT_EQ(table_.find(group.first)->group, group.group);
        for (const auto &other : kGroups) {
            if (other.group != group.group) {
                EXPECT_EQ(table_.create(other.group, group.first + 1), Status::kFieldSlice) << other.group;
            }
        }
    }
    for (const int group : {0, 10, -1}) {
        EXPECT_EQ(table_.create(group, 1), Status::kFieldGroup) << group;
    }
    EXPECT_EQ(table_.create(1, 1536), Status::kFieldRange);
    EXPECT_EQ(table_.create(9, kAll - 8), Status::kFieldRange) << "what entry -9 looks like";
}

TEST_F(FieldTableTest, EveryEntryCanBeARule) {
    for (const auto &group : kGroups) {
        for (uint32_t entry = group.first; entry <= group.last; ++entry) {
            add(group.group, entry, 100);
        }
    }
    EXPECT_TRUE(matches(100));
    size_t entries = 0;
    table_.for_each([&](uint32_t, const FieldEntry &) { ++entries; });
    EXPECT_EQ(entries, size_t{FieldTable::kEntries});
    for (uint32_t entry = 0; entry < FieldTable::kEntries; ++entry) {
        EXPECT_EQ(table_.destroy(entry), Status::kOk);
    }
    EXPECT_FALSE(table_.has_rules());
    EXPECT_FALSE(matches(100));
}

TEST_F(FieldTableTest, WhatWasNeverCreatedIsRefused) {
    for (const auto &[entry, refusal] :
         {std::pair{7U, Status::kFieldMissing}, {1536U, Status::kFieldRange}, {kAll, Status::kFieldRange}}) {
        EXPECT_EQ(table_.set_priority(entry, 1), refusal);
        EXPECT_EQ(table_.qualify(entry, qualifier(Field::kOuterVid, 1, kAll)), refusal);
        EXPECT_EQ(table_.clear_qualifiers(entry), refusal);
        EXPECT_EQ(table_.add_action(entry, mark(1)), refusal);
        EXPECT_EQ(table_.clear_actions(entry), refusal);
        EXPECT_EQ(table_.install(entry), refusal);
        EXPECT_EQ(table_.join(entry), refusal);
        EXPECT_EQ(table_.destroy(entry), refusal);
        EXPECT_EQ(table_.find(entry), nullptr);
    }
}

TEST_F(FieldTableTest, ChangesTakeEffectAtTheNextInstall) {
    add(2, 900, 100);
    want(900, 200);
    ASSERT_EQ(table_.clear_actions(900), Status::kOk);
    ASSERT_EQ(table_.add_action(900, mark(77)), Status::kOk);
    EXPECT_EQ(marked(100), 900U % 256) << "still as installed";
    EXPECT_FALSE(matches(200));
    ASSERT_EQ(table_.install(900), Status::kOk);
    EXPECT_FALSE(matches(100));
    EXPECT_EQ(marked(200), 77U);
    ASSERT_EQ(table_.clear_qualifiers(900), Status::kOk);
    EXPECT_FALSE(matches(300));
    ASSERT_EQ(table_.install(900), Status::kOk);
    EXPECT_TRUE(matches(300)) << "a rule without conditions matches all";
}

TEST_F(FieldTableTest, APairMatchesWhenBothHalvesAreInstalledAndMatch) {
    for (const auto &[group, entry] : {std::pair{1, 1290U}, {5, 1024U}}) {
        table_ = {};
        add_pair(group, entry, 100, 0x0800);
        ASSERT_EQ(table_.install(entry), Status::kOk);
        EXPECT_FALSE(matches(100)) << "half installed";
        ASSERT_EQ(table_.install(entry + 1), Status::kOk);
        EXPECT_TRUE(matches(100));
        EXPECT_FALSE(matches(200)) << "only the second half matches";
        want_type(entry + 1, 0x0806);
        ASSERT_EQ(table_.install(entry + 1), Status::kOk);
        EXPECT_FALSE(matches(100)) << "only the first half matches";
    }
}

TEST_F(FieldTableTest, ABrokenPairNeverMatches) {
    for (const uint32_t destroyed : {1290U, 1291U}) {
        table_ = {};
        add_pair(1, 1290, 100, 0x0800);
        install_pair(1290);
        ASSERT_EQ(table_.destroy(destroyed), Status::kOk);
        EXPECT_FALSE(matches(100));
        EXPECT_FALSE(table_.has_rules());
        create(1, destroyed);
        ASSERT_EQ(table_.install(destroyed), Status::kOk);
        EXPECT_TRUE(matches(200)) << "a new entry is a rule of its own";
        want(destroyed, 300);
        ASSERT_EQ(table_.install(destroyed), Status::kOk);
        EXPECT_FALSE(matches(100)) << "and does not mend the pair";
        ASSERT_EQ(table_.clear_qualifiers(destroyed), Status::kOk);
        ASSERT_EQ(table_.install(destroyed), Status::kOk);
        ASSERT_EQ(table_.join(1290), Status::kOk);
        EXPECT_EQ(matches(200), destroyed == 1290) << "joining does";
        EXPECT_TRUE(matches(100));
    }
}

TEST_F(FieldTableTest, OnlyNeighboursOfAWideGroupAreJoined) {
    create(1, 1290);
    EXPECT_EQ(table_.join(1290), Status::kFieldMissing) << "no second half";
    create(1, 1291);
    create(1, 1292);
    EXPECT_EQ(table_.join(1291), Status::kFieldPair);
    EXPECT_EQ(table_.join(1290), Status::kOk);
    EXPECT_EQ(table_.join(1290), Status::kOk) << "again changes nothing";
    for (const auto &[group, first, last] : kGroups) {
        if (group != 1 && group != 5) {
            create(group, first);
            create(group, first + 1);
            EXPECT_EQ(table_.join(first), Status::kFieldPair) << group;
        }
    }
    create(1, 1535);
    EXPECT_EQ(table_.join(1535), Status::kFieldPair);
}

TEST_F(FieldTableTest, SlicesFieldsAndActionsAreToldInTheDocument) {
    for (const auto &group : kGroups) {
        test::expect_row("field-processor.md", "| " + std::to_string(group.group) + " | " +
                                                   std::to_string(group.first) + " to " + std::to_string(group.last) +
                                                   " |");
    }
    for (const FieldInfo &field : field_table()) {
        test::expect_row("field-processor.md", "| " + std::to_string(field.code) + " | `" + field.name + "` | ");
    }
    for (const ActionInfo &action : action_table()) {
        test::expect_row("field-processor.md", "| " + std::to_string(action.code) + " | `" + action.name + "` |");
    }
}

}  // namespace field_table_test
}  // namespace vdevice::chip
