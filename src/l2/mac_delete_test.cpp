// Deleting from the MAC table: every key and mode by the exact driver call.
#include "l2/testing/support.h"

namespace {

using namespace l2_test;
using library_test::table_bytes;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr uint32_t kGroup = 2;
constexpr uint32_t kAgg = ADP_AGG_INTF(kGroup);
constexpr uint32_t kVid = 0xABCD0064;  // 100 in its low 16 bits
constexpr adp_word_t kLast = 0x12345;
constexpr uint32_t kBadModes[] = {3, 0x80, 0xFF, 0x103, 0xFFFFFFFF};

/** One key: its call, and by mode the driver call with what follows unit and 0. */
struct Row {
    const char *name;
    adp_status_t (*run)(uint32_t mode);
    std::string driver_call[3];
    std::string arguments[3];
    bool static_fails = false;
};

class DeleteByMode : public L2Test, public ::testing::WithParamInterface<Row> {
  protected:
    static std::string expected(uint32_t mode) {
        return GetParam().driver_call[mode] + "(unit=0, zero=0, " + GetParam().arguments[mode] + ")";
    }
    static bool always_fails(uint32_t mode) { return GetParam().static_fails && mode == ADP_MAC_STATIC; }
};

TEST_P(DeleteByMode, MakesTheModesCall) {
    const std::string before = table_bytes();
    for (const uint32_t mode : {0u, 1u, 2u}) {
        EXPECT_EQ(GetParam().run(mode), always_fails(mode) ? -1 : 0) << mode;
        EXPECT_THAT(driver().take(), ElementsAre(expected(mode)));
    }
    EXPECT_EQ(table_bytes(), before);
}

TEST_P(DeleteByMode, TakesTheModesLowByte) {
    for (const uint32_t mode : {0u, 1u, 2u}) {
        EXPECT_EQ(GetParam().run(mode | 0xFFFFFF00), always_fails(mode) ? -1 : 0) << mode;
        EXPECT_THAT(driver().take(), ElementsAre(expected(mode)));
    }
}

TEST_P(DeleteByMode, RefusesOtherModes) {
    for (const uint32_t mode : kBadModes) {
        EXPECT_EQ(GetParam().run(mode), 101) << mode;
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_P(DeleteByMode, ReturnsTheDriversResult) {
    for (const uint32_t mode : {0u, 1u, 2u}) {
        for (const int32_t failure : kFailures) {
            driver().fail_every(GetParam().driver_call[mode], failure);
            EXPECT_EQ(GetParam().run(mode), always_fails(mode) ? -1 : failure) << mode;
            EXPECT_THAT(driver().take(), ElementsAre(expected(mode)));
        }
    }
}

std::string key(const std::string &rest) {
    return std::string("key=") + kKey + rest;
}

INSTANTIATE_TEST_SUITE_P(
    Keys, DeleteByMode,
    ::testing::Values(
        Row{"Vlan",
            [](uint32_t mode) { return adp_del_mac_addr_by_vlan(kVid, mode); },
            {"user_l2_addr_delete_by_vlan", "user_l2_addr_delete_static_by_vlan", "user_l2_addr_delete_by_vlan"},
            {"vid=100, all=0", "vid=100, flags=0", "vid=100, all=1"}},
        Row{"Mac",
            [](uint32_t mode) { return adp_del_mac_addr_by_mac(kMac, mode); },
            {"user_l2_addr_delete_by_mac", "user_l2_addr_delete_static_by_mac", "user_l2_addr_delete_by_mac"},
            {key(", all=0"), key(", flags=0"), key(", all=1")}},
        Row{"Port",
            [](uint32_t mode) { return adp_del_mac_addr_by_intf(3, mode); },
            {"user_l2_addr_delete_by_port", "user_l2_addr_delete_static_by_port", "user_l2_addr_delete_by_port"},
            {"module=-1, port=6, all=0", "module=-1, port=6", "module=-1, port=6, all=1"}},
        Row{"VlanPort",
            [](uint32_t mode) { return adp_del_mac_addr_by_vlan_intf(kVid, 3, mode); },
            {"user_l2_addr_delete_by_vlan_port", "user_l2_addr_delete_static_by_vlan_port",
             "user_l2_addr_delete_by_vlan_port"},
            {"vid=100, module=-1, port=6, all=0", "vid=100, port=6", "vid=100, module=-1, port=6, all=1"}},
        Row{"VlanTrunk",
            [](uint32_t mode) { return adp_del_mac_addr_by_vlan_intf(kVid, kAgg, mode); },
            {"user_l2_addr_delete_by_vlan_trunk", "user_l2_addr_delete_by_vlan_trunk",
             "user_l2_addr_delete_by_vlan_trunk"},
            {"vid=100, trunk=1, all=0", "vid=100, trunk=1, all=1", "vid=100, trunk=1, all=1"},
            true},
        Row{"MacPort",
            [](uint32_t mode) { return adp_del_mac_addr_by_intf_mac(3, kMac, mode, kLast); },
            {"user_l2_addr_delete_dynaic_by_mac_port", "user_l2_addr_delete_static_by_mac_port",
             "user_l2_addr_delete_all_by_mac_port"},
            {key(", port=6, option=74565"), key(", port=6, option=74565"), key(", port=6")}},
        Row{"TrunkMacVlan",
            [](uint32_t mode) { return adp_del_mac_addr_by_trunkid_mac_vlan(3, kMac, mode, kVid); },
            {"user_l2_addr_delete_trunk_dynamic_by_port_mac_vlan", "user_l2_addr_delete_trunk_static_by_port_mac_vlan",
             "user_l2_addr_delete_all_dynamic_by_port_mac_vlan"},
            {key(", port=6, vid=100"), key(", port=6, vid=100"), key(", port=6, vid=100")}}),
    [](const auto &row) { return std::string(row.param.name); });

class MacDelete : public L2Test {
  protected:
    static std::string by_port(int port, uint32_t mode) {
        const std::string where = "(unit=0, zero=0, module=-1, port=" + std::to_string(port);
        return mode == ADP_MAC_STATIC ? "user_l2_addr_delete_static_by_port" + where + ")"
                                      : "user_l2_addr_delete_by_port" + where + ", all=" + (mode == 2 ? "1)" : "0)");
    }
    static Trace by_ports(const std::vector<int> &ports, uint32_t mode) {
        Trace lines;
        for (const int port : ports) {
            lines.push_back(by_port(port, mode));
        }
        return lines;
    }
};

TEST_F(MacDelete, WithoutAModeIsOneCall) {
    EXPECT_EQ(adp_del_mac_addr(kMac, kVid, 9, kLast), 0);
    EXPECT_EQ(adp_del_mac_mcast_addr(kMac, kVid, 9, kLast), 0);
    EXPECT_EQ(adp_del_mac_by_lrntype(0xABCDEF07), 0);
    EXPECT_EQ(adp_del_port_violate_mac_addr_by_intf(26), 0);
    EXPECT_THAT(driver().trace(), ElementsAre("user_mac_addr_delete(unit=0, " + key(", vid=100, option=74565)"),
                                              "user_mac_mcast_addr_delete(unit=0, " + key(", vid=100, option=74565)"),
                                              "user_l2_addr_del_all_addr_by_lrntype(unit=0, zero=0, learn_type=7)",
                                              "user_mac_violate_del_by_port(port=29)"));
}

TEST_F(MacDelete, WithoutAModeReturnsTheDriversResult) {
    expect_results_passed_on("user_mac_addr_delete", [] { return adp_del_mac_addr(kMac, 1, 0, 0); });
    expect_results_passed_on("user_mac_mcast_addr_delete", [] { return adp_del_mac_mcast_addr(kMac, 1, 0, 0); });
    expect_results_passed_on("user_l2_addr_del_all_addr_by_lrntype", [] { return adp_del_mac_by_lrntype(1); });
    expect_results_passed_on("user_mac_violate_del_by_port", [] { return adp_del_port_violate_mac_addr_by_intf(1); });
}

TEST_F(MacDelete, TheLastArgumentIsPassedOnWhole) {
    for (const char *call : {"user_mac_addr_delete", "user_mac_mcast_addr_delete",
                             "user_l2_addr_delete_dynaic_by_mac_port", "user_l2_addr_delete_static_by_mac_port"}) {
        expect_words(call, {{"option", kWholeWord}});
    }
    EXPECT_EQ(adp_del_mac_addr(kMac, 1, 0, kWholeWord), 0);
    EXPECT_EQ(adp_del_mac_mcast_addr(kMac, 1, 0, kWholeWord), 0);
    EXPECT_EQ(adp_del_mac_addr_by_intf_mac(3, kMac, ADP_MAC_DYNAMIC, kWholeWord), 0);
    EXPECT_EQ(adp_del_mac_addr_by_intf_mac(3, kMac, ADP_MAC_STATIC, kWholeWord), 0);
    EXPECT_EQ(driver().count(), 4u);
}

TEST_F(MacDelete, AnInterfaceBeyondTheMapIsPortMinusOne) {
    EXPECT_EQ(adp_del_mac_addr_by_intf(27, 0), 0);
    EXPECT_EQ(adp_del_mac_addr_by_vlan_intf(100, 27, 1), 0);
    EXPECT_EQ(adp_del_mac_addr_by_intf_mac(27, kMac, 2, 0), 0);
    EXPECT_EQ(adp_del_mac_addr_by_trunkid_mac_vlan(kAgg, kMac, 0, 100), 0);  // read as a user port
    EXPECT_EQ(adp_del_mac_addr_by_trunkid_mac_vlan(0x20000001, kMac, 1, 100), 0);
    EXPECT_EQ(adp_del_port_violate_mac_addr_by_intf(kAgg), 0);
    EXPECT_THAT(
        driver().trace(),
        ElementsAre(by_port(-1, 0), "user_l2_addr_delete_static_by_vlan_port(unit=0, zero=0, vid=100, port=-1)",
                    "user_l2_addr_delete_all_by_mac_port(unit=0, zero=0, " + key(", port=-1)"),
                    "user_l2_addr_delete_trunk_dynamic_by_port_mac_vlan(unit=0, zero=0, " + key(", port=-1, vid=100)"),
                    "user_l2_addr_delete_trunk_static_by_port_mac_vlan(unit=0, zero=0, " + key(", port=-1, vid=100)"),
                    "user_mac_violate_del_by_port(port=-1)"));
}

TEST_F(MacDelete, OtherTypesAreRefusedBeforeTheMode) {
    for (const uint32_t intf : kOtherTypes) {
        for (const uint32_t mode : {0u, 1u, 2u, 3u, 255u}) {
            EXPECT_EQ(adp_del_mac_addr_by_intf(intf, mode), 201);
            EXPECT_EQ(adp_del_mac_addr_by_vlan_intf(100, intf, mode), 201);
            EXPECT_EQ(adp_del_mac_addr_by_intf_mac(intf, kMac, mode, 0), 201);
        }
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(MacDelete, ByGroupVisitsItsActiveMembersInListOrder) {
    set_configured(kGroup, 1u << 9 | 1u << 10);  // not used
    for (const std::vector<int> &ports : {std::vector<int>{5, 8}, {8, 5}, {29}, {11, 10, 9, 8, 7, 6, 5, 4}}) {
        set_active(kGroup, {ports.begin(), ports.end()});
        for (const uint32_t mode : {0u, 1u, 2u, 0x101u}) {
            EXPECT_EQ(adp_del_mac_addr_by_intf(kAgg, mode), 0);
            EXPECT_THAT(driver().take(), ElementsAreArray(by_ports(ports, mode & 0xFF)));
        }
    }
}

TEST_F(MacDelete, ByGroupSkipsEmptySlotsOnly) {
    set_active(kGroup, {5, 0, 200, 8});
    EXPECT_EQ(adp_del_mac_addr_by_intf(kAgg, 1), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(by_ports({5, -1, 8}, 1)));
}

TEST_F(MacDelete, ByGroupDoesNotStopAtAFailureAndReturnsTheLastResult) {
    const std::vector<int> ports = {5, 8, 29};
    set_active(kGroup, {5, 8, 29});
    const std::string before = table_bytes();
    for (size_t failing = 0; failing < ports.size(); ++failing) {
        for (const int32_t failure : kFailures) {
            driver().fail_call(failing, failure);
            EXPECT_EQ(adp_del_mac_addr_by_intf(kAgg, 0), failing + 1 == ports.size() ? failure : 0);
            EXPECT_THAT(driver().take(), ElementsAreArray(by_ports(ports, 0)));
        }
    }
    EXPECT_EQ(table_bytes(), before);
}

TEST_F(MacDelete, ByGroupWithABadModeIs101OnlyIfThereAreMembers) {
    set_active(kGroup, {5, 8});
    for (const uint32_t mode : kBadModes) {
        EXPECT_EQ(adp_del_mac_addr_by_intf(kAgg, mode), 101);
        EXPECT_EQ(adp_del_mac_addr_by_intf(ADP_AGG_INTF(3), mode), -1);
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(MacDelete, ByGroupWithoutMembersIsMinusOneInEveryMode) {
    set_configured(kGroup, 1u << 9);
    for (const std::vector<uint8_t> &members :
         {std::vector<uint8_t>{}, {0, 0}, {4, 5, 6, 7, 8, 9, 10, 11, 12}}) {  // nine are as many empty slots
        set_active(kGroup, members);
        for (const uint32_t mode : {0u, 1u, 2u, 3u}) {
            EXPECT_EQ(adp_del_mac_addr_by_intf(kAgg, mode), -1);
        }
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(MacDelete, UnknownGroupsAreRefused) {
    for (const uint32_t group : kBadGroups) {
        for (const uint32_t mode : {0u, 1u, 2u, 3u}) {
            EXPECT_EQ(adp_del_mac_addr_by_intf(group, mode), -1);
            EXPECT_EQ(adp_del_mac_addr_by_intf_mac(group, kMac, mode, 0), -1);
        }
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(MacDelete, ByVlanTakesAnyGroupsTrunkIdAsArithmetic) {
    const std::string call = "user_l2_addr_delete_by_vlan_trunk(unit=0, zero=0, vid=100, trunk=";
    EXPECT_EQ(adp_del_mac_addr_by_vlan_intf(100, 0x10000000, 0), 0);
    EXPECT_EQ(adp_del_mac_addr_by_vlan_intf(100, 0x10000009, 2), 0);
    EXPECT_EQ(adp_del_mac_addr_by_vlan_intf(100, 0x1FFFFFFF, 1), -1);
    EXPECT_THAT(driver().trace(), ElementsAre(call + "-1, all=0)", call + "8, all=1)", call + "268435454, all=1)"));
}

TEST_F(MacDelete, ByMacOnAGroupDoesNothing) {
    set_active(kGroup, {5, 8});
    for (const uint32_t mode : {0u, 1u, 2u, 3u}) {
        EXPECT_EQ(adp_del_mac_addr_by_intf_mac(kAgg, kMac, mode, 0), -1);
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

}  // namespace
