// Counts and lists of the chip: some are constants, the others are the driver's own.
#include "stg/testing/support.h"

namespace {

using stg_test::kNotWritten;
using ::testing::ElementsAre;

class StgNumber : public stg_test::StgTest {
  protected:
    uint32_t value_ = kNotWritten;
};

TEST_F(StgNumber, OfSupportedGroupsIsSixteenWhateverTheChipReports) {
    for (const uint32_t chip : {0u, 4u, 16u, 256u, 0xFFFFFFFFu}) {
        value_ = kNotWritten;
        driver().on("user_stg_max_support_count_get").sets("count", chip);
        EXPECT_EQ(adp_get_max_support_stg(&value_), 0);
        EXPECT_EQ(value_, 16u);
    }
    value_ = kNotWritten;
    driver().on("user_stg_max_support_count_get").returns(3);
    EXPECT_EQ(adp_get_max_support_stg(&value_), 3);
    EXPECT_EQ(value_, 16u);
}

TEST_F(StgNumber, OfL2EntriesIs8192WhateverTheChipReports) {
    for (const uint32_t chip : {0u, 8192u, 16384u, 0xFFFFFFFFu}) {
        value_ = kNotWritten;
        driver().on("user_l2_cache_size_get").sets("size", chip);
        EXPECT_EQ(adp_get_l2_cache_size(&value_), 0);
        EXPECT_EQ(value_, 8192u);
    }
}

TEST_F(StgNumber, OfTheDefaultGroupIsZeroWhateverTheChipReports) {
    for (const uint32_t chip : {0u, 1u, 0xFFFFFFFFu}) {
        value_ = kNotWritten;
        driver().on("user_stg_default_get").sets("stg", chip);
        EXPECT_EQ(adp_stg_default_get(&value_), 0);
        EXPECT_EQ(value_, 0u);
    }
}

TEST_F(StgNumber, OfAFailingDriverReachesTheCallerOnlyWhereTheDriverWritesTheOutput) {
    driver().on("user_stg_max_support_count_get").sets("count", 9u).returns(-1);
    driver().on("user_l2_cache_size_get").sets("size", 9u).returns(1);
    driver().on("user_stg_default_get").sets("stg", 9u).returns(1);
    const auto outcome = [this](adp_status_t (*get)(uint32_t *)) {
        value_ = kNotWritten;
        return library_test::outcome_of([&] { return get(&value_); }).result;
    };
    EXPECT_EQ(outcome(adp_get_max_support_stg), -1);
    EXPECT_EQ(value_, kNotWritten);
    EXPECT_EQ(outcome(adp_get_l2_cache_size), 1);
    EXPECT_EQ(value_, kNotWritten);
    EXPECT_EQ(outcome(adp_stg_default_get), 1);
    EXPECT_EQ(value_, 9u);
}

TEST_F(StgNumber, OfGroupsAndOfAGroupsVlansIsTheChips) {
    for (const uint32_t chip : {0u, 1u, 65u, 0x7FFFFFFFu}) {
        driver().on("user_stg_stg_count_get").sets("count", chip);
        driver().on("user_stg_vlan_count_get").sets("count", chip);
        EXPECT_EQ(adp_get_max_stg(), static_cast<int32_t>(chip));
        EXPECT_EQ(adp_get_stg_max_vlan(1), static_cast<int32_t>(chip));
    }
}

TEST_F(StgNumber, ThatTheDriverDoesNotWriteIsZero) {
    EXPECT_EQ(adp_get_max_stg(), 0);
    EXPECT_EQ(adp_get_stg_max_vlan(1), 0);
}

class StgLists : public stg_test::StgTest {};

TEST_F(StgLists, PassTheDriversHandleOnWhole) {
    constexpr adp_word_t kHandle = UINTPTR_MAX - 1;
    for (const char *call : {"user_stg_vlan_list", "user_stg_list"}) {
        driver().on(call).sets("count", -3).does([](recording::Arguments &arguments) {
            *static_cast<adp_word_t *>(arguments.pointer("list")) = kHandle;
            return 0;
        });
    }
    adp_word_t lists[2] = {};
    int32_t counts[2] = {};
    EXPECT_EQ(adp_stg_vlan_list(5, &lists[0], &counts[0]), 0);
    EXPECT_EQ(adp_stg_list(&lists[1], &counts[1]), 0);
    EXPECT_THAT(lists, ElementsAre(kHandle, kHandle));
    EXPECT_THAT(counts, ElementsAre(-3, -3));

    std::vector<adp_word_t> freed;
    for (const char *call : {"user_stg_vlan_list_destroy", "user_stg_list_destroy"}) {
        driver().on(call).does([&freed](recording::Arguments &arguments) {
            freed.push_back(arguments.word("list"));
            return 0;
        });
    }
    EXPECT_EQ(adp_stg_vlan_list_destroy(lists[0], counts[0]), 0);
    EXPECT_EQ(adp_stg_list_destroy(lists[1], counts[1]), 0);
    EXPECT_THAT(freed, ElementsAre(kHandle, kHandle));
}

TEST_F(StgLists, AreReadInChunksIntoTheCallersArray) {
    driver().on("user_stg_each_time_list").sets("groups", {5, 0xFFFFFFFF});
    driver().on("user_stg_vlan_each_time_list").sets("vids", {4095, 0xFFFF});
    int32_t groups[3] = {1, 2, 3};
    uint16_t vlans[3] = {1, 2, 3};
    EXPECT_EQ(adp_get_stg_each_time_list(groups, 0, 2), 0);
    EXPECT_EQ(adp_get_stg_vlan_each_time_list(5, vlans, 0, 2), 0);
    EXPECT_THAT(groups, ElementsAre(5, -1, 3));
    EXPECT_THAT(vlans, ElementsAre(4095, 0xFFFF, 3));
}

}  // namespace
