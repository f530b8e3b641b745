// The table of submodules, and how an entity number becomes a hardware entry.
#include <stddef.h>

#include "fp/testing/support.h"

namespace {

using fp_test::kSubmodules;
using fp_test::logged;
using fp_test::Submodule;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr char kEntryFormat[] = " entry=[%d] group=[%d] prio_base=[%d] true_entry=[%d]-";

class Submodules : public fp_test::FpTest {
  protected:
    static FpInfo in_group(int32_t group, int32_t prio_base = 0) { return {0, group, 0, 0, 0, prio_base}; }
    static uint32_t entry(int32_t group, int32_t prio_base, uint32_t entity) {
        return adp_fp_get_true_entity_id(in_group(group, prio_base), entity);
    }
};

TEST_F(Submodules, RowsAreSixWordsInAFixedOrder) {
    EXPECT_EQ(sizeof(FpInfo), 24u);
    EXPECT_EQ(offsetof(FpInfo, submodule_type), 0u);
    EXPECT_EQ(offsetof(FpInfo, group), 4u);
    EXPECT_EQ(offsetof(FpInfo, entries), 8u);
    EXPECT_EQ(offsetof(FpInfo, meter_base), 12u);
    EXPECT_EQ(offsetof(FpInfo, meter_rate), 16u);
    EXPECT_EQ(offsetof(FpInfo, prio_base), 20u);
    EXPECT_EQ(sizeof g_stFpInfo, 43u * 24u);
}

TEST_F(Submodules, RecordsHaveNoPadding) {
    EXPECT_EQ(sizeof(FpQualify), 132u);
    EXPECT_EQ(sizeof(FpAction), 516u);
    EXPECT_EQ(offsetof(FpEntity, true_entry), 12u);
    EXPECT_EQ(offsetof(FpEntity, qualifies), 28u);
    EXPECT_EQ(offsetof(FpEntity, actions), 28u + 16u * 132u);
    EXPECT_EQ(sizeof(FpEntity), 28u + 16u * 132u + 8u * 516u);
    EXPECT_EQ(offsetof(FpListNode, entity), 2 * sizeof(void *));
}

TEST_F(Submodules, EveryRowMatchesTheLayout) {
    ASSERT_EQ(std::size(kSubmodules), std::size(g_stFpInfo));
    for (size_t i = 0; i < std::size(kSubmodules); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(g_stFpInfo[i].submodule_type, kSubmodules[i].type);
        EXPECT_EQ(g_stFpInfo[i].group, kSubmodules[i].group);
        EXPECT_EQ(g_stFpInfo[i].entries, kSubmodules[i].entries);
        EXPECT_EQ(g_stFpInfo[i].meter_base, kSubmodules[i].meter_base);
        EXPECT_EQ(g_stFpInfo[i].meter_rate, kSubmodules[i].meter_rate);
        EXPECT_EQ(g_stFpInfo[i].prio_base, kSubmodules[i].prio_base);
    }
}

TEST_F(Submodules, AreFoundByTypeUnderBothNames) {
    for (uint32_t type = 1; type <= ADP_FP_SUBMODULES; ++type) {
        EXPECT_EQ(adp_fp_find_data_by_submodetype(type), &g_stFpInfo[type - 1]);
        EXPECT_EQ(fp_find_data_by_submodetype(type), &g_stFpInfo[type - 1]);
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(Submodules, UnknownTypesAreNotFound) {
    for (const uint32_t type : {0u, 44u, 0x101u, 0x80000001u, 0xFFFFFFFFu}) {
        EXPECT_EQ(adp_fp_find_data_by_submodetype(type), nullptr) << type;
        EXPECT_EQ(fp_find_data_by_submodetype(type), nullptr) << type;
    }
}

TEST_F(Submodules, OfRowsWithOneTypeTheLastIsFound) {
    g_stFpInfo[2].submodule_type = 77;
    g_stFpInfo[9].submodule_type = 77;
    g_stFpInfo[40].submodule_type = 77;
    EXPECT_EQ(adp_fp_find_data_by_submodetype(77), &g_stFpInfo[40]);
    EXPECT_EQ(fp_find_data_by_submodetype(77), &g_stFpInfo[40]);
    EXPECT_EQ(adp_fp_find_data_by_submodetype(3), nullptr);
}

TEST_F(Submodules, EntriesFollowTheGroup) {
    const struct {
        int32_t group;
        uint32_t of_5;
        uint32_t of_6;
    } rows[] = {{1, 1410, 1412}, {2, 961, 962}, {3, 833, 834}, {4, 705, 706},        {5, 1154, 1156},
                {6, 577, 578},   {7, 449, 450}, {8, 321, 322}, {9, 65, 66},          {0, 65, 66},
                {10, 65, 66},    {-1, 65, 66},  {257, 65, 66}, {0x7FFFFFFF, 65, 66}, {INT32_MIN, 65, 66}};
    for (const auto &row : rows) {
        EXPECT_EQ(entry(row.group, 60, 5), row.of_5) << row.group;
        EXPECT_EQ(entry(row.group, 60, 6), row.of_6) << row.group;
    }
}

TEST_F(Submodules, EntriesAreComputedIn32Bits) {
    EXPECT_EQ(entry(9, -9, 0), 0xFFFFFFF7u);
    EXPECT_EQ(entry(9, -9, 9), 0u);
    EXPECT_EQ(entry(7, -9, 0), 375u);
    EXPECT_EQ(entry(7, -9, 9), 384u);
    EXPECT_EQ(entry(1, 0, 0x80000000), 1280u);
    EXPECT_EQ(entry(5, -1, 0), 1022u);
    EXPECT_EQ(entry(1, INT32_MAX, 0xFFFFFFFF), 1276u);
    EXPECT_EQ(entry(2, 0, 0xFFFFFFFF), 895u);
    EXPECT_EQ(entry(3, INT32_MIN, 0x80000000), 768u);
}

TEST_F(Submodules, EveryRowsFirstEntryIsLogged) {
    for (size_t i = 0; i < std::size(kSubmodules); ++i) {
        const Submodule &row = kSubmodules[i];
        fp_test::Model model;
        EXPECT_EQ(adp_fp_get_true_entity_id(g_stFpInfo[i], 7), model.true_entry(row, 7));
        EXPECT_EQ(driver().take(), model.take());
    }
}

TEST_F(Submodules, TheEntrysLogLineIsFixed) {
    EXPECT_EQ(entry(1, 60, 5), 1410u);
    const std::string text = " entry=[5] group=[1] prio_base=[60] true_entry=[1410]-";
    EXPECT_THAT(driver().take(), ElementsAreArray(logged("adp_fp_get_true_entity_id", 864, kEntryFormat, text)));
    driver().on("sys_trace_get").returns(-3);
    EXPECT_EQ(entry(9, -9, 0xFFFFFFFF), 0xFFFFFFF6u);
    const std::string negative = " entry=[-1] group=[9] prio_base=[-9] true_entry=[-10]-";
    EXPECT_THAT(driver().take(),
                ElementsAreArray(logged("adp_fp_get_true_entity_id", 864, kEntryFormat, negative, true)));
}

TEST_F(Submodules, GroupsOneAndFiveAreDouble) {
    for (const int32_t group : {1, 5}) {
        EXPECT_EQ(adp_fp_is_double_entity(in_group(group)), 1) << group;
    }
    for (const int32_t group : {0, 2, 3, 4, 6, 7, 8, 9, 10, 257, -1, INT32_MIN}) {
        EXPECT_EQ(adp_fp_is_double_entity(in_group(group)), 0) << group;
    }
}

TEST_F(Submodules, EntriesFrom1024To1535AreDouble) {
    for (const uint32_t entry : {1024u, 1025u, 1279u, 1280u, 1534u, 1535u}) {
        EXPECT_EQ(adp_fp_is_double_entity_2(entry), 1) << entry;
    }
    for (const uint32_t entry : {0u, 512u, 1023u, 1536u, 2047u, 0x80000400u, 0xFFFFFFFFu}) {
        EXPECT_EQ(adp_fp_is_double_entity_2(entry), 0) << entry;
    }
}

TEST_F(Submodules, FewQualifiersBelongOnTheSecondHalf) {
    for (uint32_t type = 0; type <= 400; ++type) {
        for (int32_t group = -1; group <= 40; ++group) {
            const bool expected = fp_test::is_on_second_half(group, type);
            EXPECT_EQ(adp_fp_is_need_set_next_entity_id(in_group(group), type), expected ? 1 : 0)
                << "group " << group << ", type " << type;
        }
    }
    EXPECT_EQ(adp_fp_is_need_set_next_entity_id(in_group(1), 0x10009), 0);
    EXPECT_EQ(adp_fp_is_need_set_next_entity_id(in_group(1), 0xFFFFFFFF), 0);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

}  // namespace
