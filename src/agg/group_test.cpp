// Creating and deleting groups, their configured members, load balancing.
#include "core/testing/group.h"

namespace {

using agg_test::kBadGroups;
using agg_test::table_bytes;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr int32_t kDriverResults[] = {-1, 1, 102, -33, INT32_MIN};

/** Creation and deletion differ in the driver call and the in-use byte only. */
struct Operation {
    const char *name;
    adp_status_t (*run)(adp_intf_t);
    std::string driver_call;
    uint8_t in_use;
};

const Operation kCreate = {"Create", adp_create_agg_group, "user_trunk_create_id", 1};
const Operation kDelete = {"Delete", adp_delete_agg_group, "user_trunk_destroy", 0};

class Group : public agg_test::AggTest, public ::testing::WithParamInterface<Operation> {
  protected:
    void SetUp() override {
        start();
        fill_tables();
    }

    /** The tables after the operation. */
    std::string cleared_bytes(uint32_t group) {
        fill_tables();
        set_record(group, GetParam().in_use, {});
        set_configured(group, 0, 0);
        agg_manage_intf[group - 1] = 0;
        for (uint32_t intf = 1; intf <= library_test::kUserPorts; ++intf) {
            if (intf_map_trunk[intf] == ADP_AGG_INTF(group)) {
                intf_map_trunk[intf] = 0;
            }
        }
        const std::string bytes = table_bytes();
        fill_tables();
        return bytes;
    }
};

TEST_P(Group, ClearsTheGroupAndNoOther) {
    for (uint32_t group = 1; group <= ADP_AGG_GROUPS; ++group) {
        const std::string expected = cleared_bytes(group);
        EXPECT_NE(table_bytes(), expected);
        EXPECT_EQ(GetParam().run(ADP_AGG_INTF(group)), 0);
        EXPECT_EQ(table_bytes(), expected) << group;
        EXPECT_THAT(driver().take(), ElementsAre(agg_test::on_trunk(GetParam().driver_call, group)));
    }
}

TEST_P(Group, KeepsTheAnnouncedStateAndTheCpuRow) {
    intf_map_trunk[0] = ADP_AGG_INTF(3);
    EXPECT_EQ(GetParam().run(ADP_AGG_INTF(3)), 0);
    EXPECT_EQ(adp::agg_link_status[3], 1);
    EXPECT_EQ(intf_map_trunk[0], ADP_AGG_INTF(3));
    EXPECT_EQ(intf_map_trunk[2], 0u);
}

TEST_P(Group, ReturnsTheDriversResultAndChangesNothing) {
    const std::string before = table_bytes();
    for (const int32_t result : kDriverResults) {
        driver().fail_every(GetParam().driver_call, result);
        EXPECT_EQ(GetParam().run(ADP_AGG_INTF(8)), result);
        EXPECT_EQ(table_bytes(), before);
        EXPECT_THAT(driver().take(), ElementsAre(agg_test::on_trunk(GetParam().driver_call, 8)));
    }
}

TEST_P(Group, OutsideOneToEightIsRefusedBeforeTheDriverIsCalled) {
    const std::string before = table_bytes();
    for (const uint32_t group : kBadGroups) {
        EXPECT_EQ(GetParam().run(group), -1) << group;
    }
    EXPECT_EQ(table_bytes(), before);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_P(Group, IsNamedByTheIndexBitsWhateverTheTypeBits) {
    EXPECT_EQ(GetParam().run(0x70000003), 0);
    EXPECT_THAT(driver().trace(), ElementsAre(agg_test::on_trunk(GetParam().driver_call, 3)));
    EXPECT_EQ(agg_info[2].count, 0);
    EXPECT_EQ(agg_info[2].in_use, GetParam().in_use);
    EXPECT_EQ(agg_manage_intf[2], 0u);
}

TEST_P(Group, NeedsNoPortMap) {
    library_test::drop_map();
    EXPECT_EQ(GetParam().run(ADP_AGG_INTF(1)), 0);
    EXPECT_EQ(agg_info[0].count, 0);
}

INSTANTIATE_TEST_SUITE_P(Operations, Group, ::testing::Values(kCreate, kDelete),
                         [](const auto &row) { return std::string(row.param.name); });

class ConfiguredMembers : public agg_test::AggTest {};

TEST_F(ConfiguredMembers, AreAddedAndRemovedAsBitsOfTheirGroupOnly) {
    fill_tables();
    EXPECT_EQ(adp_add_agg_standby_member(ADP_AGG_INTF(2), 0x80000028, 0xC0000000), 0);
    EXPECT_EQ(agg_standby_members[1][0], 0x8000002Cu);
    EXPECT_EQ(agg_standby_members[1][1], 0xC0000002u);
    EXPECT_EQ(adp_del_agg_standby_member(ADP_AGG_INTF(2), 0x8000000C, 0x80000000), 0);
    EXPECT_EQ(agg_standby_members[1][0], 0x20u);
    EXPECT_EQ(agg_standby_members[1][1], 0x40000002u);
    agg_standby_members[1][0] = 4;
    agg_standby_members[1][1] = 2;
    const std::string after = table_bytes();
    fill_tables();
    EXPECT_EQ(after, table_bytes());
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(ConfiguredMembers, OneWordAloneIsEnough) {
    EXPECT_EQ(adp_add_agg_standby_member(ADP_AGG_INTF(8), 0, 5), 0);
    EXPECT_EQ(adp_add_agg_standby_member(ADP_AGG_INTF(1), 6, 0), 0);
    EXPECT_EQ(agg_standby_members[7][1], 5u);
    EXPECT_EQ(agg_standby_members[0][0], 6u);
    EXPECT_EQ(adp_del_agg_standby_member(ADP_AGG_INTF(8), 0, 4), 0);
    EXPECT_EQ(adp_del_agg_standby_member(ADP_AGG_INTF(1), 2, 0), 0);
    EXPECT_EQ(agg_standby_members[7][1], 1u);
    EXPECT_EQ(agg_standby_members[0][0], 4u);
}

TEST_F(ConfiguredMembers, DoNotTriggerAnElection) {
    agg_manage_intf[1] = 9;
    EXPECT_EQ(adp_add_agg_standby_member(ADP_AGG_INTF(2), 1u << 3, 0), 0);
    EXPECT_EQ(adp_del_agg_standby_member(ADP_AGG_INTF(2), 1u << 3, 0), 0);
    EXPECT_EQ(agg_manage_intf[1], 9u);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(ConfiguredMembers, OfAGroupOutsideOneToEightAreRefusedUnlessBothWordsAreZero) {
    fill_tables();
    const std::string before = table_bytes();
    for (const uint32_t group : kBadGroups) {
        EXPECT_EQ(adp_add_agg_standby_member(group, 0, 0), 0) << group;
        EXPECT_EQ(adp_del_agg_standby_member(group, 0, 0), 0) << group;
        EXPECT_EQ(adp_add_agg_standby_member(group, 1, 0), -1) << group;
        EXPECT_EQ(adp_add_agg_standby_member(group, 0, 1), -1) << group;
        EXPECT_EQ(adp_del_agg_standby_member(group, 1, 0), -1) << group;
        EXPECT_EQ(adp_del_agg_standby_member(group, 0, 1), -1) << group;
    }
    EXPECT_EQ(table_bytes(), before);
}

struct Balancing {
    uint32_t mode;
    uint32_t hash;
};

class LoadBalance : public agg_test::AggTest, public ::testing::WithParamInterface<Balancing> {
  protected:
    static std::vector<std::string> expected(int64_t trunk, uint32_t mode, uint32_t hash) {
        return {"user_switch_control_set(unit=0, zero=0, control=136, value=" + std::to_string(hash) + ")",
                "user_trunk_loadbalance_set(unit=0, zero=0, trunk=" + std::to_string(trunk) +
                    ", mode=" + std::to_string(mode) + ")"};
    }
};

TEST_P(LoadBalance, SelectsTheHashAndPassesTheModeOn) {
    const std::string before = table_bytes();
    const auto [mode, hash] = GetParam();
    for (const uint32_t group : {1u, 8u}) {
        EXPECT_EQ(adp_set_agg_loadbalance(ADP_AGG_INTF(group), mode), 0);
        EXPECT_THAT(driver().take(), ElementsAreArray(expected(group - 1, mode, hash)));
    }
    EXPECT_EQ(table_bytes(), before);
}

TEST_P(LoadBalance, ContinuesAfterAFailedHashSelection) {
    const auto [mode, hash] = GetParam();
    for (const int32_t result : kDriverResults) {
        driver().fail_every("user_switch_control_set", result);
        EXPECT_EQ(adp_set_agg_loadbalance(ADP_AGG_INTF(2), mode), 0);
        EXPECT_THAT(driver().take(), ElementsAreArray(expected(1, mode, hash)));
    }
}

TEST_P(LoadBalance, ReturnsTheResultOfTheTrunkCall) {
    const auto [mode, hash] = GetParam();
    for (const int32_t result : kDriverResults) {
        driver().fail_every("user_trunk_loadbalance_set", result);
        EXPECT_EQ(adp_set_agg_loadbalance(ADP_AGG_INTF(2), mode), result);
        EXPECT_THAT(driver().take(), ElementsAreArray(expected(1, mode, hash)));
    }
}

// The trunk id is plain arithmetic: no table is read, so no group needs to be refused.
TEST_P(LoadBalance, AcceptsAnyGroup) {
    const auto [mode, hash] = GetParam();
    const std::pair<uint32_t, int64_t> trunks[] = {{ADP_AGG_INTF(0), -1}, {ADP_AGG_INTF(9), 8},    {0, -1}, {3, 2},
                                                   {0x70000003, 2},       {0x1FFFFFFF, 0x0FFFFFFE}};
    for (const auto &[group, trunk] : trunks) {
        EXPECT_EQ(adp_set_agg_loadbalance(group, mode), 0);
        EXPECT_THAT(driver().take(), ElementsAreArray(expected(trunk, mode, hash)));
    }
}

INSTANTIATE_TEST_SUITE_P(Modes, LoadBalance,
                         ::testing::Values(Balancing{0, 0x70}, Balancing{1, 0x60}, Balancing{2, 0x50},
                                           Balancing{3, 0x70}, Balancing{4, 0x60}, Balancing{5, 0x50},
                                           Balancing{6, 0x70}, Balancing{0xFFFFFFFF, 0x70}),
                         [](const auto &row) { return "Mode" + std::to_string(row.param.mode); });

}  // namespace
