// Authorisation of ports and addresses: the order of the steps, and one status code for each that fails.
#include "l2/testing/support.h"

namespace {

using namespace l2_test;
using library_test::table_bytes;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr uint32_t kGroup = 2;
constexpr uint32_t kAgg = ADP_AGG_INTF(kGroup);
constexpr uint32_t kVid = 0xABCD0064;  // 100 in its low 16 bits
constexpr char kText[] = "\"02:1b:21:fe:80:07\"";

std::string learn(int port, int mode) {
    return "user_port_learn_set(unit=0, zero=0, port=" + std::to_string(port) + ", mode=" + std::to_string(mode) + ")";
}
std::string flush(uint32_t intf) {
    return "set_mac_tbl_clear_by_port(intf=" + std::to_string(intf) + ", scope=7, kind=3)";
}
const std::string kFormat = "onu_mac2str(mac=02:1b:21:fe:80:07)";
const std::string kDelete = std::string("del_mac_addr(mac=") + kText + ", vid=100, flag=1)";
std::string group_of(uint32_t intf) {
    return "get_group_by_interface(intf=" + std::to_string(intf) + ")";
}
std::string add_on(uint32_t intf) {
    return std::string("add_mac_static_addr(mac=") + kText + ", intf=" + std::to_string(intf) + ", vid=100, flag=1)";
}

class Dot1x : public L2Test {
  protected:
    static void put_ports_in(uint32_t group) { driver().on("get_group_by_interface").sets("group", group); }

    static adp_status_t authorise(uint32_t intf, uint32_t authorised = 1) {
        return adp_set_mac_dot1x_authorized_state(intf, kVid, kMac, authorised);
    }
    /** An address on port 5 of the group with these active members is installed on @p target. */
    static void expect_target(const std::vector<uint8_t> &ports, uint32_t target) {
        put_ports_in(kAgg);
        agg_info[kGroup - 1] = {};
        set_active(kGroup, ports);
        EXPECT_EQ(authorise(5), 0);
        EXPECT_THAT(driver().take(), ElementsAre(kFormat, kDelete, group_of(5), add_on(target)));
    }
};

TEST_F(Dot1x, AnAuthorisedPortLearnsAndIsNotFlushed) {
    for (const uint32_t mode : {1u, 0x101u, 0xFFFFFF01u}) {
        EXPECT_EQ(adp_set_port_dot1x_mode(3, mode, 9, 0), 0);
        EXPECT_THAT(driver().take(), ElementsAre(learn(6, 5)));
        for (const uint32_t flag : {1u, 2u, 0x100u, 0x80000000u}) {
            EXPECT_EQ(adp_set_port_dot1x_mode(3, mode, 0, flag), 0);
            EXPECT_THAT(driver().take(), ElementsAre(learn(6, 8)));
        }
    }
}

TEST_F(Dot1x, OtherPortsArePendingOrClosedAndFlushed) {
    for (const uint32_t flag : {0u, 1u}) {
        EXPECT_EQ(adp_set_port_dot1x_mode(3, 0, 9, flag), 0);
        EXPECT_THAT(driver().take(), ElementsAre(learn(6, 8), flush(3)));
        EXPECT_EQ(adp_set_port_dot1x_mode(26, 0x102, 9, flag), 0);
        EXPECT_THAT(driver().take(), ElementsAre(learn(29, 0), flush(26)));
    }
}

TEST_F(Dot1x, OtherModesAreRefused) {
    for (const uint32_t mode : {3u, 0xFFu, 0x103u, 0xFFFFFFFFu}) {
        EXPECT_EQ(adp_set_port_dot1x_mode(3, mode, 0, 1), 403);
        EXPECT_EQ(adp_set_port_dot1x_mode(0x20000001, mode, 0, 1), 403);
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(Dot1x, EachFailingStepOfAPortHasItsCode) {
    const std::string before = table_bytes();
    for (const int32_t failure : kFailures) {
        driver().fail_call(0, failure);
        EXPECT_EQ(adp_set_port_dot1x_mode(3, 1, 0, 0), 401);
        EXPECT_THAT(driver().take(), ElementsAre(learn(6, 5)));
        for (const auto &[mode, learning] : {std::pair{0u, 8}, {2u, 0}}) {
            driver().fail_call(0, failure);
            EXPECT_EQ(adp_set_port_dot1x_mode(3, mode, 0, 0), 401);
            EXPECT_THAT(driver().take(), ElementsAre(learn(6, learning)));
            driver().fail_call(1, failure);
            EXPECT_EQ(adp_set_port_dot1x_mode(3, mode, 0, 0), 402);
            EXPECT_THAT(driver().take(), ElementsAre(learn(6, learning), flush(3)));  // the mode stays
        }
    }
    EXPECT_EQ(table_bytes(), before);
}

TEST_F(Dot1x, AGroupIsLearnedByItsMembersAndFlushedByItsOwnNumber) {
    set_active(kGroup, {20});
    set_configured(kGroup, 1u << 2 | 1u << 5);
    EXPECT_EQ(adp_set_port_dot1x_mode(static_cast<int32_t>(kAgg), 0, 0, 0), 0);
    EXPECT_THAT(driver().take(), ElementsAre(learn(5, 8), learn(8, 8), flush(kAgg)));
    driver().fail_call(1);
    EXPECT_EQ(adp_set_port_dot1x_mode(static_cast<int32_t>(kAgg), 2, 0, 0), 401);
    EXPECT_THAT(driver().take(), ElementsAre(learn(5, 0), learn(8, 0)));
    EXPECT_EQ(adp_set_port_dot1x_mode(static_cast<int32_t>(ADP_AGG_INTF(3)), 2, 0, 0), 0);  // without members
    EXPECT_THAT(driver().take(), ElementsAre(flush(ADP_AGG_INTF(3))));
}

TEST_F(Dot1x, FailsOnUnknownInterfaces) {
    for (const uint32_t intf : {kOtherTypes[0], kOtherTypes[2], kBadGroups[0], kBadGroups[1], kBadGroups[2]}) {
        for (const uint32_t mode : {0u, 1u, 2u}) {
            EXPECT_EQ(adp_set_port_dot1x_mode(static_cast<int32_t>(intf), mode, 0, 0), 401);
        }
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(Dot1x, AStateIsAuthorisedForOneInTheLowByte) {
    for (const uint32_t state : {1u, 0x101u}) {
        EXPECT_EQ(adp_set_port_dot1x_authorized_state(3, state, 0), 0);
        EXPECT_EQ(adp_set_port_dot1x_authorized_state(3, state, 0x100), 0);
        EXPECT_THAT(driver().take(), ElementsAre(learn(6, 5), learn(6, 8)));
    }
    for (const uint32_t state : {0u, 2u, 3u, 0x100u, 0xFFFFFFFFu}) {
        EXPECT_EQ(adp_set_port_dot1x_authorized_state(3, state, 0), 0);
        EXPECT_THAT(driver().take(), ElementsAre(learn(6, 8), flush(3)));
    }
}

TEST_F(Dot1x, AStatesFailuresAreTheModes) {
    driver().fail_call(0);
    EXPECT_EQ(adp_set_port_dot1x_authorized_state(3, 1, 0), 401);
    driver().fail_call(0);
    EXPECT_EQ(adp_set_port_dot1x_authorized_state(3, 0, 0), 401);
    driver().fail_call(1);
    EXPECT_EQ(adp_set_port_dot1x_authorized_state(3, 0, 0), 402);
    EXPECT_THAT(driver().take(), ElementsAre(learn(6, 5), learn(6, 8), learn(6, 8), flush(3)));
}

TEST_F(Dot1x, AnAddressIsReplacedByAStaticEntryOnItsPort) {
    for (const uint32_t authorised : {1u, 2u, 0xFFu, 0x101u}) {
        EXPECT_EQ(authorise(5, authorised), 0);
        EXPECT_THAT(driver().take(), ElementsAre(kFormat, kDelete, group_of(5), add_on(5)));
    }
}

TEST_F(Dot1x, ADeauthorisedAddressIsOnlyDeleted) {
    for (const uint32_t authorised : {0u, 0x100u, 0xFFFFFF00u}) {
        EXPECT_EQ(authorise(5, authorised), 0);
        EXPECT_THAT(driver().take(), ElementsAre(kFormat, kDelete));
    }
    driver().fail_every("del_mac_addr");
    EXPECT_EQ(authorise(5, 0), 0);
}

TEST_F(Dot1x, TheTargetIsTheGroupsSmallestActiveMember) {
    set_configured(kGroup, 1u << 1);  // not used
    expect_target({9, 5, 7}, 2);      // 6, 2 and 4
    expect_target({5, 7, 9}, 2);
    expect_target({9, 7, 5}, 2);
    expect_target({29}, 26);
    expect_target({11, 10, 9, 8, 7, 6, 5, 4}, 1);
    expect_target({9, 0, 7}, 4);  // later empty slots are skipped
}

TEST_F(Dot1x, AnEmptyFirstSlotLeavesThePortItself) {
    expect_target({0, 5, 7}, 5);
    expect_target({}, 5);
    expect_target({4, 5, 6, 7, 8, 9, 10, 11, 12}, 5);  // nine are as many empty slots
}

TEST_F(Dot1x, AMemberWithoutAnInterfaceIsPassedOnOnlyWhenItIsAlone) {
    expect_target({200, 7}, 4);
    expect_target({200}, 0xFFFFFFFF);
}

TEST_F(Dot1x, AnUnknownGroupLeavesThePortItself) {
    for (const uint32_t group : kBadGroups) {
        put_ports_in(group);
        EXPECT_EQ(authorise(5), 0);
        EXPECT_THAT(driver().take(), ElementsAre(kFormat, kDelete, group_of(5), add_on(5)));
    }
}

TEST_F(Dot1x, AnAddressWithoutATextChangesNothing) {
    driver().on("onu_mac2str").returns_text(nullptr);
    for (const uint32_t authorised : {0u, 1u}) {
        EXPECT_EQ(authorise(5, authorised), 403);
        EXPECT_THAT(driver().take(), ElementsAre(kFormat));
    }
}

TEST_F(Dot1x, OnlyAFailingAddIsReportedForAnAddress) {
    const std::string before = table_bytes();
    for (const int32_t failure : kFailures) {
        for (const size_t failing : {1u, 2u, 3u}) {
            driver().fail_call(failing, failure);
            EXPECT_EQ(authorise(5), failing == 3 ? 405 : 0);
            EXPECT_THAT(driver().take(), ElementsAre(kFormat, kDelete, group_of(5), add_on(5)));
        }
    }
    EXPECT_EQ(table_bytes(), before);
}

TEST_F(Dot1x, AGroupCountsEvenWhenItsLookUpFails) {
    set_active(kGroup, {9, 5});
    driver().on("get_group_by_interface").sets("group", kAgg).returns(-1);
    EXPECT_EQ(authorise(6), 0);
    EXPECT_THAT(driver().take(), ElementsAre(kFormat, kDelete, group_of(6), add_on(2)));
}

}  // namespace
