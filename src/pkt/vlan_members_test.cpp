// Membership of interfaces in VLANs.
#include "pkt/testing/vlan_record.h"
#include "tests/support/library_test.h"

namespace vlan_members_test {

using pkt_test::set_vlan_members;
using ::testing::ElementsAre;

class PortVlanAbility : public library_test::LibraryTest {};

TEST_F(PortVlanAbility, TestsTheBitOfAUserPort) {
    set_vlan_members(1ull << 1 | 1ull << 26);
    EXPECT_EQ(check_port_vlan_ability(1, 100), 0);
    EXPECT_EQ(check_port_vlan_ability(26, 100), 0);
    EXPECT_EQ(check_port_vlan_ability(2, 100), -1);
    EXPECT_EQ(check_port_vlan_ability(0, 100), -1);
    EXPECT_EQ(driver().trace()[0], "get_vlan_info(vid=100)");
}

TEST_F(PortVlanAbility, AggregationInterfaceGHasBit26PlusG) {
    set_vlan_members(1ull << 29 | 1ull << 34);
    EXPECT_EQ(check_port_vlan_ability(0x10000003, 1), 0);
    EXPECT_EQ(check_port_vlan_ability(0x10000008, 1), 0);
    EXPECT_EQ(check_port_vlan_ability(0x10000004, 1), -1);
}

TEST_F(PortVlanAbility, BitsBeyondTheBitmapAreNotMembers) {
    set_vlan_members(~0ull);
    EXPECT_EQ(check_port_vlan_ability(63, 1), 0);
    EXPECT_EQ(check_port_vlan_ability(64, 1), -1);
    EXPECT_EQ(check_port_vlan_ability(0x0FFFFFFF, 1), -1);
    EXPECT_EQ(check_port_vlan_ability(0x10000025, 1), 0);   // 26 + 37 = 63
    EXPECT_EQ(check_port_vlan_ability(0x10000026, 1), -1);  // 26 + 38 = 64
    EXPECT_EQ(check_port_vlan_ability(0x1FFFFFFF, 1), -1);
}

TEST_F(PortVlanAbility, RefusesOtherTypesAfterAskingTheService) {
    set_vlan_members(~0ull);
    EXPECT_EQ(check_port_vlan_ability(0x20000001, 5), -1);
    EXPECT_EQ(check_port_vlan_ability(0xFFFFFFFF, 5), -1);
    EXPECT_EQ(driver().count("get_vlan_info"), 2u);
}

TEST_F(PortVlanAbility, AFailingServiceIsARefusal) {
    set_vlan_members(~0ull);
    for (const int32_t failure : {-1, 1, 102}) {
        driver().fail_every("get_vlan_info", failure);
        EXPECT_EQ(check_port_vlan_ability(1, 5), -1) << failure;
    }
}

TEST_F(PortVlanAbility, TheRecordIsClearedBeforeItIsFetched) {
    set_vlan_members(~0ull);
    EXPECT_EQ(check_port_vlan_ability(1, 5), 0);
    driver().reset();  // now the service succeeds and writes nothing
    EXPECT_EQ(check_port_vlan_ability(1, 5), -1);
}

TEST_F(PortVlanAbility, PassesTheWholeVlanIdOn) {
    EXPECT_EQ(check_port_vlan_ability(1, -1), -1);
    EXPECT_EQ(check_port_vlan_ability(1, 0x11005), -1);
    EXPECT_THAT(driver().trace(), ElementsAre("get_vlan_info(vid=4294967295)", "get_vlan_info(vid=69637)"));
}

}  // namespace vlan_members_test
