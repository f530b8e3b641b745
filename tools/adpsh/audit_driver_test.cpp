// The library's tables against the driver's answers, failed ones and hostile ones too.
#include "tools/adpsh/testing/audit_fixture.h"

#include <netlink_api.h>

#include <numeric>
#include <random>

namespace audit_driver_test {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class AuditedDriver : public audit_fixture::AuditTest {
  protected:
    /** A group in the driver's L2 table. */
    static adp_l2_entry_t group_entry(uint32_t index, uint8_t last, uint32_t ports) {
        adp_l2_entry_t entry = {};
        entry.index = index;
        const uint8_t mac[] = {0x01, 0x00, 0x5e, 0x01, 0x02, last};
        std::copy(std::begin(mac), std::end(mac), entry.mac);
        entry.vid = 7;
        entry.ports[0] = ports;
        return entry;
    }

    /** The physical ports that the driver has in each group. */
    static void has_group_ports(uint32_t ports) {
        netlink_mcast_entry_t entry = {};
        entry.ports[0] = ports;
        driver().on("User_mcast_port_get").sets_object("entry", entry);
    }
};

TEST_F(AuditedDriver, HasAVlanInAnotherGroup) {
    has_groups({0, 3, 5});
    has_vlans({{0, {1, 2, 100, 300}}, {3, {101, 102, 200}}, {5, {103}}});
    aiVlanStg[100] = aiVlanStg[101] = 3;
    aiVlanStg[103] = 5;
    aiVlanStg[300] = 9;
    EXPECT_THAT(found(), ElementsAre("spanning tree: VLAN 100: aiVlanStg has group 3, the driver group 0",
                                     "spanning tree: VLAN 102: aiVlanStg has no group, the driver group 3",
                                     "spanning tree: VLAN 200: aiVlanStg has no group, the driver group 3",
                                     "spanning tree: VLAN 300: aiVlanStg has group 9, the driver group 0"));
    EXPECT_THAT(audit().scope(), HasSubstr("3 spanning-tree groups, 8 VLANs"));
}

TEST_F(AuditedDriver, HasSeveralVlansInAnotherGroup) {
    has_groups({0});
    std::vector<uint16_t> all;
    for (uint16_t vid = 1; vid < 4095; ++vid) {
        all.push_back(vid);
    }
    has_vlans({{0, all}});
    std::fill_n(aiVlanStg + 1000, 200, int16_t{2});
    aiVlanStg[1200] = -4;
    aiVlanStg[4095] = 2;
    EXPECT_THAT(found(), ElementsAre("spanning tree: VLANs 1000-1199: aiVlanStg has group 2, the driver group 0",
                                     "spanning tree: VLAN 1200: aiVlanStg has group -4, the driver group 0",
                                     "spanning tree: VLAN 4095: aiVlanStg has group 2, the driver no group"));
}

TEST_F(AuditedDriver, HasAnotherDefaultGroup) {
    driver().on("user_stg_default_get").sets("stg", 1U);
    has_groups({1, 2});
    has_vlans({{1, {10}}, {2, {20}}});
    EXPECT_THAT(found(), ElementsAre("spanning tree: VLAN 20: aiVlanStg has no group, the driver group 2"));
    driver().fail_every("user_stg_default_get", -7);
    EXPECT_THAT(found(), ElementsAre("spanning tree: groups: user_stg_default_get gave -7"));
}

TEST_F(AuditedDriver, ListsImpossibleVlansAndGroups) {
    has_groups({0, 2, 2});
    has_vlans({{0, {1, 5000}}, {2, {1, 2}}});
    aiVlanStg[2] = 2;
    EXPECT_THAT(found(),
                ElementsAre("spanning tree: group 2: the driver lists it twice",
                            "spanning tree: group 0: the driver lists VLAN 5000, which is none",
                            "spanning tree: group 2: the driver lists VLAN 1, which it has in group 0 already"));
}

TEST_F(AuditedDriver, CountsMoreThanThereCanBe) {
    driver().on("user_stg_vlan_count_get").does([](recording::Arguments &arguments) {
        *static_cast<uint32_t *>(arguments.pointer("count")) = 4097;
        return 0;
    });
    driver().on("user_stg_vlan_each_time_list").does([](recording::Arguments &arguments) {
        for (uint32_t i = 0; i < arguments.u32("chunk_size"); ++i) {
            static_cast<uint16_t *>(arguments.pointer("vids"))[i] =
                static_cast<uint16_t>(arguments.u32("chunk_index") * arguments.u32("chunk_size") + i);
        }
        return 0;
    });
    EXPECT_THAT(found(), ElementsAre("spanning tree: group 0: user_stg_vlan_count_get gave 4097, more than 4096: the "
                                     "rest is not compared"));
    driver().on("user_stg_stg_count_get").sets("count", UINT32_MAX);
    const auto lines = found();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines[0],
              "spanning tree: groups: user_stg_stg_count_get gave 4294967295, more than 64: the rest is not "
              "compared");
}

TEST_F(AuditedDriver, DiffersMoreOftenThanIsShown) {
    std::vector<uint32_t> groups;
    std::vector<uint16_t> vids(1000);
    std::iota(vids.begin(), vids.end(), uint16_t{1});
    std::map<int32_t, std::vector<uint16_t>> vlans;
    for (uint32_t group = 0; group < 12; ++group) {
        groups.push_back(group);
        vlans[static_cast<int32_t>(group)] = vids;
    }
    has_groups(groups);
    has_vlans(vlans);
    const adpsh::Audit result = audit();
    EXPECT_EQ(result.differences(), 11000U);
    EXPECT_EQ(result.findings().size(), adpsh::kMostFindings);
    EXPECT_THAT(result.scope(), ::testing::StartsWith("the first 10000 are shown; compared 27 rows"));
}

TEST_F(AuditedDriver, HasTheGroupsThatLinesHaveMade) {
    ASSERT_EQ(line("adp_create_igmpsn_group 01005e010203 7 [1,2,agg1]"), ADP_OK);
    has_group_ports(1U << 4 | 1U << 5);
    has_addresses({group_entry(9, 3, 1U << 4 | 1U << 5)});
    EXPECT_THAT(found(), IsEmpty());
    ASSERT_EQ(line("adp_add_igmpsn_member 01005e010203 7 [3] 0"), ADP_OK);
    ASSERT_EQ(line("adp_del_igmpsn_member 01005e010203 7 [1]"), ADP_OK);
    has_group_ports(1U << 5 | 1U << 6);
    EXPECT_THAT(found(), IsEmpty());
    ASSERT_EQ(line("adp_delete_igmpsn_group 01005e010203 7"), ADP_OK);
    has_addresses({});
    EXPECT_THAT(found(), IsEmpty());
}

TEST_F(AuditedDriver, HasAGroupWithTheConfiguredMembersOfATrunk) {
    set_configured(1, 1U << 8 | 1U << 9);
    ASSERT_EQ(line("adp_create_igmpsn_group 01005e010203 7 [agg1]"), ADP_OK);
    has_group_ports(1U << 11 | 1U << 12);
    EXPECT_THAT(found(), IsEmpty());
}

TEST_F(AuditedDriver, LosesTheFrontPortsThatAnEmptyListStandsFor) {
    ASSERT_EQ(line("adp_create_igmpsn_group 01005e010203 7 [1,4]"), ADP_OK);
    has_group_ports(1U << 4 | 1U << 7);
    ASSERT_EQ(line("adp_del_igmpsn_member 01005e010203 7 []"), ADP_OK);
    has_group_ports(1U << 4);
    EXPECT_THAT(found(), IsEmpty());
}

TEST_F(AuditedDriver, HasOtherMulticastGroups) {
    ASSERT_EQ(line("adp_create_igmpsn_group 01005e010203 7 [1,2]"), ADP_OK);
    ASSERT_EQ(line("adp_create_igmpsn_group 01005e010205 7 [1]"), ADP_OK);
    has_group_ports(1U << 4);
    has_addresses({group_entry(9, 3, 1U << 4), group_entry(12, 4, 1U << 8)});
    EXPECT_THAT(found(),
                ElementsAre("multicast: 01:00:5e:01:02:03 in VLAN 7: by the lines it has the physical ports {4,5}, in "
                            "the driver {4}",
                            "multicast: 01:00:5e:01:02:04 in VLAN 7: in the driver with the physical ports {8}, no "
                            "line has made it"));
    driver().fail_every("User_mcast_port_get", -9);
    EXPECT_THAT(found(),
                ElementsAre("multicast: 01:00:5e:01:02:03 in VLAN 7: User_mcast_port_get gave -9",
                            "multicast: 01:00:5e:01:02:05 in VLAN 7: User_mcast_port_get gave -9", HasSubstr("02:04")));
}

TEST_F(AuditedDriver, HasNoGroupThatALineFailedToMakeOrThatASnoopingStartRemoved) {
    driver().on("User_mcast_addr_add").returns(-6);
    ASSERT_EQ(line("adp_create_igmpsn_group 01005e010203 7 [1]"), -6);
    ASSERT_EQ(line("adp_add_igmpsn_member 01005e010209 7 [1] 0"), ADP_OK);  // a group of another program
    EXPECT_THAT(found(), IsEmpty());
    driver().on("User_mcast_addr_add").returns(0);
    ASSERT_EQ(line("adp_create_igmpsn_group 01005e010203 7 [1]"), ADP_OK);
    ASSERT_EQ(groups_.all().size(), 1U);
    ASSERT_EQ(line("adp_igmp_init"), ADP_OK);
    EXPECT_THAT(groups_.all(), IsEmpty());
}

TEST_F(AuditedDriver, WalksBackInItsAddresses) {
    driver().on("user_netlink_mac_nextValidAddr_get").returns(0).sets_object("entry", group_entry(0, 3, 0));
    const auto lines = found();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0],
              "addresses: user_netlink_mac_nextValidAddr_get: gave entry 0, asked for the next one from 1 on: "
              "the rest is not compared");
}

TEST_F(AuditedDriver, FailsInAnyCall) {
    FpEntity rule = {};
    rule.submodule_type = 3;
    rule.action_num = 1;
    rule.actions[0].type = ADP_FP_ACTION_COUNT;
    ASSERT_EQ(adp_fp_add_entity_rule(rule), ADP_OK);
    ASSERT_EQ(line("adp_create_igmpsn_group 01005e010203 7 []"), ADP_OK);
    has_vlans({{0, {1}}});
    const size_t before = driver().count();
    ASSERT_THAT(found(), IsEmpty());
    ASSERT_GT(driver().count() - before, 30U);
    std::vector<std::string> calls = driver().take();
    calls.erase(calls.begin(), calls.begin() + static_cast<ptrdiff_t>(before));
    for (size_t k = 0; k < calls.size(); ++k) {
        const std::string name = calls[k].substr(0, calls[k].find('('));
        driver().fail_call(k, -77);
        const auto lines = found();
        driver().fail_nothing();
        if (name == "user_netlink_mac_nextValidAddr_get") {  // a failure is the end of the table
            EXPECT_THAT(lines, IsEmpty());
            continue;
        }
        EXPECT_THAT(lines, ElementsAre(::testing::AllOf(HasSubstr(name), HasSubstr(" gave -77")))) << k;
    }
}

TEST_F(AuditedDriver, GivesAnything) {
    std::mt19937 random(20261122);
    for (int round = 0; round < 8; ++round) {
        driver().reset();
        driver().record(false);
        const auto any = [&random](uint32_t limit) {
            return static_cast<uint32_t>(random() % 4 == 0 ? random() : random() % limit);
        };
        driver().on("user_stg_stg_count_get").sets("count", any(70));
        driver().on("user_stg_default_get").sets("stg", any(4));
        driver().on("user_stg_each_time_list").sets("groups", std::vector<uint32_t>{any(4), any(4), any(4), any(4)});
        driver().on("user_stg_vlan_count_get").sets("count", any(4098));
        driver().on("user_stg_vlan_each_time_list").sets("vids", std::vector<uint32_t>(1024, any(5000)));
        driver().on("user_netlink_mac_nextValidAddr_get").does([&](recording::Arguments &arguments) {
            auto &entry = *static_cast<adp_l2_entry_t *>(arguments.pointer("entry"));
            uint8_t bytes[sizeof entry];
            std::generate(std::begin(bytes), std::end(bytes), [&] { return static_cast<uint8_t>(random()); });
            std::memcpy(&entry, bytes, sizeof entry);
            entry.index = static_cast<uint32_t>(arguments.word("index") + random() % 400);
            return random() % 2000 == 0 ? -1 : 0;
        });
        const adpsh::Audit result = audit();
        EXPECT_LE(result.findings().size(), adpsh::kMostFindings);
        EXPECT_GE(result.differences() + result.failed_calls(), result.findings().size());
    }
}

}  // namespace audit_driver_test
