// The MAC table: what it learns and keeps, its buckets, its walk, its counts, and what its filters pick.
#include "vdevice/chip/tables/mac_table.h"

#include <gtest/gtest.h>

namespace vdevice::chip {
namespace mac_table_test {

using namespace std::chrono_literals;

class MacTableTest : public testing::Test {
  protected:
    static Mac mac(uint64_t number) { return Mac{0x020000000000 + number}; }

    MacTable table_;
};

// What refresh() leaves to learn() makes a difference, and what it does itself makes the same.
TEST_F(MacTableTest, RefreshingDoesWhatLearningWould) {
    constexpr MacEntry kPlain{Mac{}, 10, 4, false, 1s, MacEntry::kNoTrunk};
    struct Case {
        MacEntry entry;
        Place place;
        bool is_refreshed;
    };
    std::vector<Case> cases{
        {kPlain, {4, Place::kNoTrunk}, true}, {kPlain, {5, Place::kNoTrunk}, false}, {kPlain, {4, 1}, false}};
    const auto add = [&](const Place &place, bool is_refreshed, auto change) {
        Case added{kPlain, place, is_refreshed};
        change(added.entry);
        cases.push_back(added);
    };
    add({4, 1}, true, [](MacEntry &entry) { entry.trunk = 1; });
    add({5, 1}, false, [](MacEntry &entry) { entry.trunk = 1; });
    add({4, 2}, false, [](MacEntry &entry) { entry.trunk = 1; });
    add({4, 1}, false, [](MacEntry &entry) { entry.trunk = 1, entry.is_given_to_trunk = true; });
    add({4, Place::kNoTrunk}, false, [](MacEntry &entry) { entry.is_static = true; });
    add({4, Place::kNoTrunk}, false, [](MacEntry &entry) { entry.drops_to = true; });
    add({4, Place::kNoTrunk}, false, [](MacEntry &entry) { entry.drops_from = true; });
    for (size_t i = 0; i < cases.size(); ++i) {
        auto &[entry, place, is_refreshed] = cases[i];
        entry.mac = mac(i);
        ASSERT_EQ(table_.add(entry), Status::kOk);
        MacTable learned = table_;
        learned.learn(entry.mac, entry.vid, place.port, 5s, place.trunk);
        EXPECT_EQ(table_.refresh(*table_.find(entry.mac, entry.vid), place, 5s), is_refreshed) << i;
        const MacEntry &before = is_refreshed ? *table_.find(entry.mac, entry.vid) : entry;
        const MacEntry &after = *learned.find(entry.mac, entry.vid);
        const bool is_same = before.place() == after.place() && before.port == after.port &&
                             before.is_given_to_trunk == after.is_given_to_trunk &&
                             before.is_filter() == after.is_filter() && before.last_seen == after.last_seen;
        EXPECT_EQ(is_same, is_refreshed || entry.is_static) << i;
        if (is_refreshed) {
            EXPECT_EQ(table_.counts().behind(place), learned.counts().behind(place)) << i;
            EXPECT_EQ(table_.counters().moved, learned.counters().moved) << i;
        }
    }
}

TEST_F(MacTableTest, TheBucketIsTheSumOfTheWords) {
    EXPECT_EQ(MacTable::bucket_of(Mac{0x000100020003}, 4), 10U);
    EXPECT_EQ(MacTable::bucket_of(Mac{0xFFFFFFFFFFFF}, 4094), (3U * 0xFFFF + 4094U) % 1024U);
}

TEST_F(MacTableTest, AFullBucketRefusesWhileTheTableHasRoom) {
    for (uint64_t i = 0; i < MacTable::kBucketSlots; ++i) {
        EXPECT_EQ(table_.add_static(mac(i * MacTable::kBuckets), 10, 4), Status::kOk);
    }
    const Mac one_more = mac(MacTable::kBucketSlots * MacTable::kBuckets);
    EXPECT_EQ(table_.add_static(one_more, 10, 4), Status::kMacBucketFull);
    EXPECT_EQ(table_.add_group(Mac{0x010000000101}, 10, {}), Status::kOk) << "that bucket is another one";
    table_.learn(one_more, 10, 4, 0s);
    EXPECT_EQ(table_.counters().refused, 1U);
    EXPECT_EQ(table_.find(one_more, 10), nullptr);
    EXPECT_EQ(table_.add_static(one_more, 11, 4), Status::kOk) << "in another VLAN it has another bucket";
    EXPECT_EQ(table_.remove(mac(0), 10), Status::kOk);
    EXPECT_EQ(table_.add_static(one_more, 10, 4), Status::kOk);
}

TEST_F(MacTableTest, TheWalkMeetsEveryEntryOnce) {
    for (uint64_t i = 0; i < 3000; ++i) {
        table_.learn(mac(i * 7), static_cast<Vid>(1 + i % 50), 4, 0s);
    }
    size_t met = 0;
    uint64_t index = 0;
    while (const MacEntry *entry = table_.next(index)) {
        EXPECT_GE(entry->index, index);
        EXPECT_EQ(table_.find(entry->mac, entry->vid), entry);
        index = entry->index + 1;
        ++met;
    }
    EXPECT_EQ(met, table_.size());
    EXPECT_EQ(table_.next(MacTable::kCapacity), nullptr);
    EXPECT_EQ(table_.next(~uint64_t{0}), nullptr);
}

TEST_F(MacTableTest, CountsDynamicEntriesWhereTheyAre) {
    table_.learn(mac(1), 10, 4, 0s);
    table_.learn(mac(2), 10, 5, 0s);
    table_.learn(mac(3), 20, 5, 0s, 2);
    ASSERT_EQ(table_.add_static(mac(4), 10, 4), Status::kOk);
    EXPECT_EQ(table_.counts().total(), 3U);
    EXPECT_EQ(table_.counts().in_vlan(10), 2U);
    EXPECT_EQ(table_.counts().behind({4}), 1U);
    EXPECT_EQ(table_.counts().behind({5}), 1U) << "the other one is behind the trunk";
    EXPECT_EQ(table_.counts().behind({9, 2}), 1U);
    table_.learn(mac(1), 10, 5, 1s);
    EXPECT_EQ(table_.counts().behind({4}), 0U);
    EXPECT_EQ(table_.counts().behind({5}), 2U);
    table_.for_each([](MacEntry &entry) { entry.trunk = 2; });
    EXPECT_EQ(table_.counts().behind({5}), 0U);
    EXPECT_EQ(table_.counts().behind({0, 2}), 3U);
    ASSERT_EQ(table_.add_static(mac(2), 10, 4), Status::kOk);
    EXPECT_EQ(table_.counts().total(), 2U) << "a static entry took its place";
}

TEST_F(MacTableTest, FiltersPickByEveryKey) {
    table_.learn(mac(1), 10, 4, 0s);
    table_.learn(mac(1), 20, 5, 0s);
    table_.learn(mac(2), 10, 5, 0s, 3);
    ASSERT_EQ(table_.add_static(mac(3), 10, 4), Status::kOk);
    ASSERT_EQ(table_.add_group(Mac{0x01005E010101}, 10, PortSet::of(4)), Status::kOk);
    const auto picked = [&](const MacFilter &filter) {
        std::string numbers;
        for (const MacEntry &entry : table_.list()) {
            numbers += filter.picks(entry) ? std::to_string(entry.mac.value() & 0xF) : "-";
        }
        return numbers;  // in the order 10/group, 10/1, 10/2, 10/3, 20/1
    };
    using Kind = MacFilter::Kind;
    EXPECT_EQ(picked({}), "-12-1");
    EXPECT_EQ(picked({Kind::kStatic}), "---3-");
    EXPECT_EQ(picked({Kind::kAll}), "-1231");
    EXPECT_EQ(picked({Kind::kAll, mac(1)}), "-1--1");
    EXPECT_EQ(picked({Kind::kAll, std::nullopt, Vid{10}}), "-123-");
    EXPECT_EQ(picked({Kind::kAll, std::nullopt, std::nullopt, Place{4}}), "-1-3-");
    EXPECT_EQ(picked({Kind::kAll, std::nullopt, std::nullopt, Place{5}}), "----1");
    EXPECT_EQ(picked({Kind::kAll, std::nullopt, std::nullopt, Place{9, 3}}), "--2--");
    EXPECT_EQ(table_.remove_all({Kind::kAll, mac(1), Vid{20}, Place{5}}), 1U);
    EXPECT_EQ(table_.remove_all({Kind::kAll, mac(1), Vid{20}, Place{5}}), 0U);
    EXPECT_EQ(table_.size(), 4U);
}

TEST_F(MacTableTest, GroupsHaveAPortSetUntilTheyGo) {
    const Mac group{0x01005E010203};
    EXPECT_EQ(table_.add_group(mac(1), 10, {}), Status::kMacNotGroup);
    EXPECT_EQ(table_.remove_group(mac(1), 10), Status::kMacNotGroup);
    EXPECT_EQ(table_.remove_group(group, 10), Status::kGroupMissing);
    ASSERT_EQ(table_.add_group(group, 10, PortSet::of(4)), Status::kOk);
    EXPECT_EQ(table_.ports_of(*table_.find(group, 10)), PortSet::of(4));
    ASSERT_EQ(table_.add_group(group, 10, PortSet::of(9)), Status::kOk);
    EXPECT_EQ(table_.ports_of(*table_.find(group, 10)), PortSet::of(9));
    EXPECT_EQ(table_.group_count(), 1U);
    table_.age(1000000s);
    EXPECT_EQ(table_.size(), 1U) << "groups do not age";
    EXPECT_EQ(table_.remove(group, 10), Status::kMacNotUnicast);
    EXPECT_EQ(table_.remove_group(group, 10), Status::kOk);
    EXPECT_EQ(table_.group_count(), 0U);
    EXPECT_EQ(table_.size(), 0U);
}

TEST_F(MacTableTest, ThePortSetsOfGroupsRunOut) {
    for (uint64_t i = 0; i < PortSetPool::kCapacity; ++i) {
        ASSERT_EQ(table_.add_group(Mac{0x01005E100000 + i}, 10, PortSet::of(4)), Status::kOk);
        ASSERT_EQ(table_.find(Mac{0x01005E100000 + i}, 10)->group, i + 1);
    }
    EXPECT_EQ(table_.add_group(Mac{0x01005E200000}, 10, {}), Status::kGroupTableFull);
    EXPECT_EQ(table_.size(), PortSetPool::kCapacity);
    EXPECT_EQ(table_.add_group(Mac{0x01005E100007}, 10, PortSet::of(5)), Status::kOk) << "it has one already";
    EXPECT_EQ(table_.remove_group(Mac{0x01005E100007}, 10), Status::kOk);
    EXPECT_EQ(table_.add_group(Mac{0x01005E200000}, 10, {}), Status::kOk);
    EXPECT_EQ(table_.find(Mac{0x01005E200000}, 10)->group, 8U) << "the number that was given back";
    table_.remove_all_groups();
    EXPECT_EQ(table_.group_count(), 0U);
}

}  // namespace mac_table_test
}  // namespace vdevice::chip
