// The library's tables against each other: port map, trunks, rules.
#include "tools/adpsh/testing/audit_fixture.h"

#include <netlink_api.h>

namespace audit_tables_test {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class AuditedTables : public audit_fixture::AuditTest {
  protected:
    /** A group with members as adp_add_agg_member() leaves it. */
    static void make_group(uint32_t group, const std::vector<uint8_t> &user_ports) {
        std::vector<uint8_t> phys;
        for (const uint8_t port : user_ports) {
            phys.push_back(static_cast<uint8_t>(port + library_test::kPortOffset));
            intf_map_trunk[port] = ADP_AGG_INTF(group);
        }
        set_active(group, phys);
        agg_info[group - 1].in_use = 1;
        agg_manage_intf[group - 1] = user_ports.empty() ? 0 : user_ports.front();
    }

    static adp_l2_entry_t address(uint32_t index, uint32_t flags, int32_t port, int32_t trunk) {
        adp_l2_entry_t entry = {};
        entry.index = index;
        entry.flags = flags;
        entry.mac[0] = 2;
        entry.vid = 1;
        entry.port = port;
        entry.trunk = trunk;
        return entry;
    }

    static void install(uint32_t submodule, uint32_t entity, uint32_t action = ADP_FP_ACTION_DROP, uint32_t value = 0) {
        FpEntity rule = {};
        rule.submodule_type = submodule;
        rule.entity_id = entity;
        rule.action_num = 1;
        rule.actions[0].type = action;
        std::memcpy(rule.actions[0].param, &value, sizeof value);
        ASSERT_EQ(adp_fp_add_entity_rule(rule), ADP_OK);
    }
};

TEST_F(AuditedTables, AgreeAtTheStart) {
    EXPECT_THAT(found(), IsEmpty());
    EXPECT_THAT(audit().scope(), HasSubstr("compared 27 rows of the port map, 0 addresses of the driver, 0 trunks, "
                                           "1 spanning-tree group, 0 VLANs, 0 rules, 0 multicast groups of this "
                                           "shell; no driver call reads"));
}

TEST_F(AuditedTables, AreNotChangedAndOnlyReadingCallsAreMade) {
    make_group(1, {5, 6});
    install(3, 1, ADP_FP_ACTION_COUNT, 7);
    ASSERT_EQ(line("adp_create_igmpsn_group 01005e010203 1 [1]"), ADP_OK);
    has_vlans({{0, {1, 2}}});
    driver().reset();
    answer_as_at_power_on();
    const std::string before = library_test::table_bytes();
    EXPECT_EQ(audit().failed_calls(), 0U);
    EXPECT_EQ(library_test::table_bytes(), before);
    for (const std::string &call : driver().trace()) {
        const std::string name = call.substr(0, call.find('('));
        EXPECT_TRUE(name.ends_with("_get") || name.ends_with("_each_time_list") || name == "user_field_get_statistics")
            << call;
    }
    EXPECT_GT(driver().count("user_field_get_statistics"), 0U);
    EXPECT_GT(driver().count("User_mcast_port_get"), 0U);
}

TEST_F(AuditedTables, OfThePortMapHaveADoubledPort) {
    intf_to_phy_port[7].phy = 5;
    intf_to_phy_port[9].phy = 0;
    EXPECT_THAT(found(), ElementsAre("port map: user port 7: has physical port 5, as user port 2 has",
                                     "port map: user port 9: has physical port 0, as the CPU port has"));
}

TEST_F(AuditedTables, OfThePortMapHavePortsThatTheDriverRefuses) {
    intf_to_phy_port[0].phy = 99;
    intf_to_phy_port[26].phy = 0xFFFFFFFF;
    driver().on("user_port_enable_get").does([](recording::Arguments &arguments) {
        return arguments.i32("port") < 0 || arguments.i32("port") > 29 ? -2 : 0;
    });
    EXPECT_THAT(found(),
                ElementsAre("port map: the CPU port: user_port_enable_get on physical port 99 gave -2",
                            "port map: user port 26: user_port_enable_get on physical port 4294967295 gave -2"));
    EXPECT_THAT(audit().scope(), HasSubstr("compared 25 rows"));
}

TEST_F(AuditedTables, OfThePortMapMayBeTooLongOrMissing) {
    library_test::drop_map();
    EXPECT_THAT(found(), IsEmpty());
    ASSERT_EQ(adp_set_max_phy_port_num(300), ADP_OK);
    for (uint32_t row = 0; row <= 300; ++row) {
        intf_to_phy_port[row].phy = row;
    }
    EXPECT_THAT(found(), ElementsAre("port map: adp_max_phy_port_num: 300, and a set of ports has 256: the rows after "
                                     "that are not compared"));
}

TEST_F(AuditedTables, OfTrunksAgreeAfterCalls) {
    driver().on("user_port_link_status_get").sets("status", 1U);
    ASSERT_EQ(line("adp_create_agg_group agg2"), ADP_OK);
    ASSERT_EQ(line("adp_add_agg_member agg2 [5,6,7]"), ADP_OK);
    ASSERT_EQ(line("adp_add_agg_standby_member agg2 0xe0 0"), ADP_OK);
    EXPECT_THAT(found(), IsEmpty());
    ASSERT_EQ(line("adp_del_agg_member agg2 [6]"), ADP_OK);
    EXPECT_THAT(found(), IsEmpty());
    ASSERT_EQ(line("adp_delete_agg_group agg2"), ADP_OK);
    EXPECT_THAT(found(), IsEmpty());
}

TEST_F(AuditedTables, OfTrunksHaveImpossibleMembers) {
    make_group(1, {5, 6});
    make_group(3, {7});
    agg_info[2].count = 4;
    agg_info[2].ports[1] = 8;
    agg_info[2].ports[2] = 200;
    agg_info[2].ports[3] = 10;
    agg_info[3].count = 12;
    agg_info[4].count = -1;
    EXPECT_THAT(found(),
                ElementsAre("trunks: agg3: agg_info has physical port 8 in agg1 already",
                            "trunks: agg3: agg_info has physical port 200, which is no user port of the port map",
                            "trunks: agg3: agg_info has physical port 10 in it already",
                            "trunks: agg4: agg_info says 12 members, and a record holds 11 at most",
                            "trunks: agg5: agg_info says -1 members, and a record holds 11 at most"));
}

TEST_F(AuditedTables, OfTrunksHaveImpossibleConfiguredMembers) {
    set_configured(1, 1U << 3 | 1U << 27, 2);
    set_configured(2, 1U << 3);
    EXPECT_THAT(found(), ElementsAre("trunks: agg1: agg_standby_members has {27,33}, which are no user ports",
                                     "trunks: agg2: agg_standby_members has user port 3 in agg1 already"));
}

TEST_F(AuditedTables, OfTrunksHaveAManagerThatIsNoMember) {
    make_group(1, {5, 6});
    agg_manage_intf[0] = 9;
    make_group(2, {7});
    agg_manage_intf[1] = 0;
    agg_manage_intf[2] = 4;
    set_configured(4, 1U << 8);
    agg_manage_intf[3] = 8;
    EXPECT_THAT(found(), ElementsAre("trunks: agg1: agg_manage_intf has interface 0x9, which is no member",
                                     "trunks: agg2: agg_manage_intf has no manager, agg_info has members",
                                     "trunks: agg3: agg_manage_intf has interface 0x4, which is no member"));
}

TEST_F(AuditedTables, OfTrunksDisagreeAboutThePorts) {
    make_group(1, {5, 6});
    intf_map_trunk[6] = 0;
    intf_map_trunk[8] = ADP_AGG_INTF(2);
    intf_map_trunk[9] = 77;
    EXPECT_THAT(found(), ElementsAre("trunks: user port 6: agg_info has it in agg1, intf_map_trunk has 0x0",
                                     "trunks: user port 8: intf_map_trunk has it in agg2, agg_info in none",
                                     "trunks: user port 9: intf_map_trunk has 0x4d, which is no group"));
}

TEST_F(AuditedTables, OfTrunksDisagreeWithTheDriversAddresses) {
    make_group(1, {5, 6});
    has_addresses({address(3, NETLINK_L2_FOUND_TRUNK, 8, 0), address(4, NETLINK_L2_FOUND_TRUNK, 0, 5),
                   address(5, NETLINK_L2_FOUND_TRUNK, 0, 9), address(6, 0, 9, 0), address(7, 0, 20, 0),
                   address(8, NETLINK_L2_STATIC, 8, 0), address(9, 0, 9, 0), address(10, 0, 8, 0)});
    driver().on("user_port_link_status_get").does([](recording::Arguments &arguments) {
        *static_cast<uint32_t *>(arguments.pointer("status")) = arguments.i32("port") == 9 ? 1 : 0;
        return 0;
    });
    EXPECT_THAT(found(), ElementsAre("trunks: trunk 5: agg_info has no group, the driver has 1 address behind it",
                                     "trunks: trunk 9: agg_info has no group, the driver has 1 address behind it",
                                     "trunks: agg1: agg_info has physical port 9, the driver has 2 dynamic addresses "
                                     "on it and not on trunk 0"));
}

TEST_F(AuditedTables, OfTrunksHaveAMemberWhoseLinkCannotBeRead) {
    make_group(1, {5});
    has_addresses({address(10, 0, 8, 0)});
    driver().fail_every("user_port_link_status_get", -3);
    EXPECT_THAT(found(), ElementsAre("trunks: agg1: user_port_link_status_get on physical port 8 gave -3"));
}

TEST_F(AuditedTables, OfRulesAgreeAfterCalls) {
    install(3, 1);
    install(3, 2, ADP_FP_ACTION_COUNT, 5);
    install(1, 0);
    EXPECT_THAT(found(), IsEmpty());
    EXPECT_THAT(audit().scope(), HasSubstr("3 rules"));
}

TEST_F(AuditedTables, OfRulesHaveACounterThatTheDriverRefuses) {
    install(3, 2, ADP_FP_ACTION_COUNT, 300);
    driver().fail_every("user_field_get_statistics", -5);
    EXPECT_THAT(found(), ElementsAre("rules: rule 2 of submodule 3: user_field_get_statistics of counter 300 gave -5"));
}

TEST_F(AuditedTables, OfRulesHaveImpossibleRecords) {
    install(3, 1);
    install(3, 2);
    install(3, 3);
    const auto nodes = library_test::installed_rules();
    nodes[1]->entity.entity_id = 1;
    nodes[1]->entity.true_entry = nodes[0]->entity.true_entry;
    nodes[1]->entity.qualify_num = 17;
    nodes[1]->entity.action_num = -1;
    nodes[2]->entity.submodule_type = 99;
    const std::string entry = std::to_string(nodes[0]->entity.true_entry);
    EXPECT_THAT(found(),
                ElementsAre("rules: rule 1 of submodule 3: is in acl_fp_list_head twice",
                            "rules: rule 1 of submodule 3: has 17 qualifiers and -1 actions, more than a record holds",
                            "rules: rule 1 of submodule 3: has entry " + entry + ", as rule 1 of submodule 3 has",
                            "rules: rule 3 of submodule 99: g_stFpInfo has no entries for this submodule"));
}

TEST_F(AuditedTables, OfRulesAreDamaged) {
    install(3, 1);
    install(3, 2);
    const auto nodes = library_test::installed_rules();
    for (adp_list_link_t *const wrong : {static_cast<adp_list_link_t *>(nullptr),
                                         reinterpret_cast<adp_list_link_t *>(uintptr_t{0x00100100}), &nodes[0]->link}) {
        nodes[1]->link.next = wrong;
        EXPECT_THAT(found(),
                    ElementsAre("rules: acl_fp_list_head: is damaged after 2 rules: the rest is not compared"));
    }
    nodes[1]->link.next = &acl_fp_list_head;
}

TEST_F(AuditedTables, ThatTheLibraryDoesNotHaveAreLeftOut) {
    tables_ = {};
    EXPECT_THAT(found(), IsEmpty());
    EXPECT_THAT(audit().scope(), HasSubstr("compared 0 addresses of the driver, 0 multicast groups of this shell; the "
                                           "loaded library has no intf_to_phy_port, agg_info, aiVlanStg, "
                                           "acl_fp_list_head; no driver call"));
    tables_ = adpsh::loaded_tables();
    tables_.configured = nullptr;
    tables_.managers = nullptr;
    tables_.port_groups = nullptr;
    tables_.submodules = nullptr;
    tables_.last_row = nullptr;
    install(3, 1);
    EXPECT_THAT(found(), IsEmpty());
    EXPECT_THAT(audit().scope(), HasSubstr("the loaded library has no adp_max_phy_port_num, agg_standby_members, "
                                           "agg_manage_intf, intf_map_trunk, g_stFpInfo; no driver call"));
}

}  // namespace audit_tables_test
