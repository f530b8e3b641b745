// Accessors of one row of the aggregation tables.
#include "tests/support/library_test.h"

namespace group_tables_test {

using library_test::table_bytes;

class AggTables : public library_test::LibraryTest {};

constexpr uint32_t kBadGroups[] = {0x10000000, 0x10000009, 0, 9, 0x1FFFFFFF, 0xFFFFFFFF};

TEST_F(AggTables, RecordLayoutIsFixed) {
    EXPECT_EQ(sizeof(adp_agg_record_t), 16u);
    EXPECT_EQ(offsetof(adp_agg_record_t, count), 0u);
    EXPECT_EQ(offsetof(adp_agg_record_t, in_use), 4u);
    EXPECT_EQ(offsetof(adp_agg_record_t, ports), 5u);
    EXPECT_EQ(sizeof agg_info, 128u);
    EXPECT_EQ(sizeof agg_standby_members, 64u);
    EXPECT_EQ(sizeof agg_manage_intf, 32u);
}

TEST_F(AggTables, TrunkIdIsPlainArithmetic) {
    uint32_t trunk = 99;
    EXPECT_EQ(adp_get_agg_group_drvid(ADP_AGG_INTF(1), &trunk), 0);
    EXPECT_EQ(trunk, 0u);
    EXPECT_EQ(adp_get_agg_group_drvid(ADP_AGG_INTF(8), &trunk), 0);
    EXPECT_EQ(trunk, 7u);
    EXPECT_EQ(adp_get_agg_group_drvid(ADP_AGG_INTF(0), &trunk), 0);
    EXPECT_EQ(trunk, 0xFFFFFFFFu);
    EXPECT_EQ(adp_get_agg_group_drvid(0x30000005, &trunk), 0);
    EXPECT_EQ(trunk, 4u);
}

TEST_F(AggTables, ManagementInterfaceIsStoredPerGroup) {
    EXPECT_EQ(SET_AGG_MANAGE_INTF(ADP_AGG_INTF(1), 5), 0);
    EXPECT_EQ(SET_AGG_MANAGE_INTF(ADP_AGG_INTF(8), 26), 0);
    uint32_t intf = 0;
    EXPECT_EQ(GET_AGG_MANAGE_INTF(ADP_AGG_INTF(1), &intf), 0);
    EXPECT_EQ(intf, 5u);
    EXPECT_EQ(GET_AGG_MANAGE_INTF(ADP_AGG_INTF(2), &intf), 0);
    EXPECT_EQ(intf, 0u);
    EXPECT_EQ(agg_manage_intf[0], 5u);
    EXPECT_EQ(agg_manage_intf[7], 26u);
}

TEST_F(AggTables, OnlyTheIndexBitsNameTheGroup) {
    EXPECT_EQ(SET_AGG_MANAGE_INTF(3, 7), 0);
    uint32_t intf = 0;
    EXPECT_EQ(GET_AGG_MANAGE_INTF(0xF0000003, &intf), 0);
    EXPECT_EQ(intf, 7u);
    EXPECT_EQ(agg_manage_intf[2], 7u);
}

TEST_F(AggTables, LowestConfiguredMember) {
    uint32_t intf = 99;
    EXPECT_EQ(GET_AGG_CONFIG_MIN_INTF(ADP_AGG_INTF(4), &intf), 0);
    EXPECT_EQ(intf, 0u);
    set_configured(4, 1u << 26 | 1u << 9);
    EXPECT_EQ(GET_AGG_CONFIG_MIN_INTF(ADP_AGG_INTF(4), &intf), 0);
    EXPECT_EQ(intf, 9u);
    set_configured(4, 1u << 26);
    EXPECT_EQ(GET_AGG_CONFIG_MIN_INTF(ADP_AGG_INTF(4), &intf), 0);
    EXPECT_EQ(intf, 26u);
}

TEST_F(AggTables, LowestConfiguredMemberUsesBits0To26OfTheFirstWord) {
    uint32_t intf = 99;
    set_configured(4, 1u << 27 | 1u << 31, 0xFFFFFFFF);
    EXPECT_EQ(GET_AGG_CONFIG_MIN_INTF(ADP_AGG_INTF(4), &intf), 0);
    EXPECT_EQ(intf, 0u);
}

TEST_F(AggTables, LinkStateTakesTheGroupNumberAndSignExtends) {
    uint32_t state = 99;
    adp::agg_link_status[8] = 1;
    adp::agg_link_status[1] = -3;
    EXPECT_EQ(adp_get_agg_link_staus(8, &state), 0);
    EXPECT_EQ(state, 1u);
    EXPECT_EQ(GET_AGG_LINK_STATUS(1, &state), 0);
    EXPECT_EQ(state, static_cast<uint32_t>(-3));
}

TEST_F(AggTables, LinkStateRefusesOtherNumbersAndWritesNothing) {
    uint32_t state = 99;
    for (const uint32_t group : {0u, 9u, 0xFFFFFFFFu, ADP_AGG_INTF(1)}) {
        EXPECT_EQ(adp_get_agg_link_staus(group, &state), -1);
        EXPECT_EQ(GET_AGG_LINK_STATUS(group, &state), -1);
    }
    EXPECT_EQ(state, 99u);
}

TEST_F(AggTables, GroupOfAUserPort) {
    intf_map_trunk[0] = ADP_AGG_INTF(5);
    intf_map_trunk[26] = ADP_AGG_INTF(2);
    EXPECT_EQ(GET_INTF_MAPPING_AGGINTF(26), ADP_AGG_INTF(2));
    EXPECT_EQ(GET_INTF_MAPPING_AGGINTF(25), 0u);
    EXPECT_EQ(GET_INTF_MAPPING_AGGINTF(0), ADP_AGG_INTF(5));
    EXPECT_EQ(GET_INTF_MAPPING_AGGINTF(0x2000001A), ADP_AGG_INTF(2));  // only the index bits count
    EXPECT_EQ(GET_INTF_MAPPING_AGGINTF(27), 0u);
    EXPECT_EQ(GET_INTF_MAPPING_AGGINTF(0xFFFFFFFF), 0u);
}

TEST_F(AggTables, GroupsOutsideOneToEightAreRefusedWithZeroedOutputs) {
    const std::string before = table_bytes();
    for (const uint32_t group : kBadGroups) {
        uint32_t intf = 99;
        EXPECT_EQ(GET_AGG_MANAGE_INTF(group, &intf), -1) << group;
        EXPECT_EQ(intf, 0u);
        intf = 99;
        EXPECT_EQ(GET_AGG_CONFIG_MIN_INTF(group, &intf), -1) << group;
        EXPECT_EQ(intf, 0u);
        EXPECT_EQ(SET_AGG_MANAGE_INTF(group, 3), -1) << group;
    }
    EXPECT_EQ(table_bytes(), before);
}

}  // namespace group_tables_test
