// The port map: filling, both look-ups, refusals beyond the map, failed allocations.
#include <algorithm>

#include "tests/support/fake_system.h"
#include "tests/support/library_test.h"

namespace port_map_test {

using library_test::drop_map;
using library_test::table_bytes;

class PortMap : public library_test::LibraryTest {};

TEST_F(PortMap, StartsClearedWithOneRowMoreThanUserPorts) {
    drop_map();
    ASSERT_EQ(adp_set_max_phy_port_num(5), 0);
    EXPECT_EQ(adp_max_phy_port_num, 5u);
    for (uint32_t row = 0; row <= 5; ++row) {
        EXPECT_EQ(intf_to_phy_port[row].word1, 0u);
        EXPECT_EQ(intf_to_phy_port[row].word2, 0u);
        EXPECT_EQ(intf_to_phy_port[row].phy, 0u);
        EXPECT_EQ(intf_to_phy_port[row].attributes, 0u);
        EXPECT_EQ(intf_map_trunk[row], 0u);
    }
}

TEST_F(PortMap, RowIsFourWordsInOrder) {
    EXPECT_EQ(sizeof(adp_port_row_t), 16u);
    ASSERT_EQ(adp_add_phy_port(2, 0x11, 0x22, 0x33, 0x44), 0);
    const uint32_t expected[4] = {0x11, 0x22, 0x33, 0x44};
    EXPECT_EQ(std::memcmp(&intf_to_phy_port[2], expected, sizeof expected), 0);
}

TEST_F(PortMap, CpuPortFillsRowZeroAndIgnoresItsFirstArgument) {
    ASSERT_EQ(adp_add_cpu_port(99, 1, 2, 30, 4), 0);
    EXPECT_EQ(intf_to_phy_port[0].word1, 1u);
    EXPECT_EQ(intf_to_phy_port[0].word2, 2u);
    EXPECT_EQ(adp_intf_2_phy_id(0), 30);
    EXPECT_EQ(adp_intf_port_attributes(0), 4u);
}

TEST_F(PortMap, SecondCallReplacesTablesWithoutReleasingTheOldOnes) {
    adp_port_row_t *old_rows = intf_to_phy_port;
    uint32_t *old_trunks = intf_map_trunk;
    ASSERT_EQ(adp_set_max_phy_port_num(3), 0);
    EXPECT_NE(intf_to_phy_port, old_rows);
    EXPECT_EQ(old_rows[26].phy, 29u);  // still there
    EXPECT_EQ(adp_intf_2_phy_id(3), 0);
    EXPECT_EQ(adp_intf_2_phy_id(4), -1);
    free(old_rows);
    free(old_trunks);
}

TEST_F(PortMap, ReturnsTheMaximum) {
    uint32_t n = 0;
    EXPECT_EQ(adp_get_max_phy_port_num(&n), 0);
    EXPECT_EQ(n, 26u);
}

TEST_F(PortMap, TranslatesBothEndsOfTheRange) {
    EXPECT_EQ(adp_intf_2_phy_id(0), 0);
    EXPECT_EQ(adp_intf_2_phy_id(1), 4);
    EXPECT_EQ(adp_intf_2_phy_id(26), 29);
    EXPECT_EQ(adp_intf_2_phy_id(27), -1);
}

TEST_F(PortMap, RefusesEveryTypeButUserPort) {
    for (uint32_t type = 1; type < 16; ++type) {
        EXPECT_EQ(adp_intf_2_phy_id(type << 28 | 1), -1) << type;
        EXPECT_EQ(adp_intf_2_phy_id(type << 28), -1) << type;
    }
    EXPECT_EQ(adp_intf_2_phy_id(0xFFFFFFFF), -1);
}

TEST_F(PortMap, TypeBitsAreRefusedEvenWithinTheMaximum) {
    // The maximum is an exported variable. Raised past the type bits, it leaves only the type check before the table.
    adp_max_phy_port_num = 0xFFFFFFFF;
    EXPECT_EQ(adp_intf_2_phy_id(0x10000001), -1);
    adp_max_phy_port_num = 26;
}

TEST_F(PortMap, FindsTheLowestRowOfASharedPort) {
    ASSERT_EQ(adp_add_phy_port(9, 0, 0, 7, 0), 0);  // row 4 has physical port 7 already
    EXPECT_EQ(adp_phy_2_intf_id(7), 4);
    ASSERT_EQ(adp_add_cpu_port(0, 0, 0, 7, 0), 0);
    EXPECT_EQ(adp_phy_2_intf_id(7), 0);
    EXPECT_EQ(adp_phy_2_intf_id_ex(1234, 7), 0);
}

TEST_F(PortMap, UnmappedPortHasNoInterface) {
    EXPECT_EQ(adp_phy_2_intf_id(63), -1);
    EXPECT_EQ(adp_phy_2_intf_id_ex(0, 63), -1);
    EXPECT_EQ(adp_phy_2_intf_id(0xFFFFFFFF), -1);
}

TEST_F(PortMap, NegativePortNumbersAreOrdinaryValues) {
    ASSERT_EQ(adp_add_phy_port(5, 0, 0, 0xFFFFFFFE, 0), 0);
    EXPECT_EQ(adp_intf_2_phy_id(5), -2);
    EXPECT_EQ(adp_phy_2_intf_id(0xFFFFFFFE), 5);
}

TEST_F(PortMap, AttributesComeBackUnchanged) {
    ASSERT_EQ(adp_add_phy_port(26, 0, 0, 29, 0xDEADBEEF), 0);
    EXPECT_EQ(adp_intf_port_attributes(26), 0xDEADBEEF);
    EXPECT_EQ(adp_intf_port_attributes(27), 0u);
    EXPECT_EQ(adp_intf_port_attributes(0x10000001), 0u);
}

TEST_F(PortMap, RowBeyondTheMapIsRefusedAndChangesNothing) {
    const std::string before = table_bytes();
    EXPECT_EQ(adp_add_phy_port(27, 1, 2, 3, 4), -1);
    EXPECT_EQ(adp_add_phy_port(0x10000001, 1, 2, 3, 4), -1);
    EXPECT_EQ(adp_add_phy_port(0xFFFFFFFF, 1, 2, 3, 4), -1);
    EXPECT_EQ(table_bytes(), before);
}

TEST_F(PortMap, BeforeTheMapExistsLookUpsFindNothing) {
    drop_map();
    EXPECT_EQ(adp_intf_2_phy_id(0), -1);
    EXPECT_EQ(adp_phy_2_intf_id(0), -1);
    EXPECT_EQ(adp_phy_2_intf_id_ex(0, 0), -1);
    EXPECT_EQ(adp_intf_port_attributes(0), 0u);
    EXPECT_EQ(adp_add_cpu_port(0, 1, 2, 3, 4), -1);
    EXPECT_EQ(adp_add_phy_port(0, 1, 2, 3, 4), -1);
    EXPECT_EQ(GET_INTF_MAPPING_AGGINTF(0), 0u);
}

TEST_F(PortMap, StubsAndSlotReturnZeroInAnyState) {
    EXPECT_EQ(adp_get_phy_port(), 0);
    EXPECT_EQ(adp_del_phy_port(), 0);
    EXPECT_EQ(adp_intf_2_slot_id(3), 0);
    EXPECT_EQ(adp_intf_2_slot_id(0xFFFFFFFF), 0);
    EXPECT_EQ(adp_intf_2_phy_id(3), 6);  // nothing was removed
}

TEST_F(PortMap, MakesNoDriverCall) {
    adp_intf_2_phy_id(1);
    adp_phy_2_intf_id(4);
    EXPECT_EQ(driver().count(), 0u);
}

struct FailedAllocation : PortMap {
    // The old tables are not released by the library; this test keeps them to free them itself.
    adp_status_t set_max(uint32_t n) {
        std::swap(old_rows, intf_to_phy_port);
        std::swap(old_trunks, intf_map_trunk);
        return adp_set_max_phy_port_num(n);
    }
    void TearDown() override {
        free(old_rows);
        free(old_trunks);
        PortMap::TearDown();
    }
    adp_port_row_t *old_rows = nullptr;
    uint32_t *old_trunks = nullptr;
};

TEST_F(FailedAllocation, OfThePortMapLeavesItNullAndKeepsTheMaximum) {
    fake_system::Session session;
    session.system().fail_allocation(0);
    EXPECT_EQ(set_max(8), -1);
    EXPECT_EQ(adp_max_phy_port_num, 8u);
    EXPECT_EQ(intf_to_phy_port, nullptr);
    ASSERT_NE(intf_map_trunk, nullptr);
    EXPECT_EQ(adp_intf_2_phy_id(1), -1);
    EXPECT_EQ(adp_phy_2_intf_id(0), -1);
    EXPECT_EQ(adp_intf_port_attributes(1), 0u);
    EXPECT_EQ(GET_INTF_MAPPING_AGGINTF(8), 0u);
    EXPECT_EQ(session.system().allocations(), 2u);
}

TEST_F(FailedAllocation, OfTheTrunkMapLeavesItNullAndThePortMapInPlace) {
    fake_system::Session session;
    session.system().fail_allocation(1);
    EXPECT_EQ(set_max(8), -1);
    ASSERT_NE(intf_to_phy_port, nullptr);
    EXPECT_EQ(intf_map_trunk, nullptr);
    EXPECT_EQ(adp_intf_2_phy_id(8), 0);
    EXPECT_EQ(GET_INTF_MAPPING_AGGINTF(1), 0u);
}

TEST_F(FailedAllocation, IsTheResultOfASizeThatOverflows) {
    EXPECT_EQ(set_max(0xFFFFFFFF), -1);
    EXPECT_EQ(adp_max_phy_port_num, 0xFFFFFFFFu);
    EXPECT_EQ(intf_to_phy_port, nullptr);
    EXPECT_EQ(intf_map_trunk, nullptr);
    EXPECT_EQ(adp_intf_2_phy_id(1), -1);
    EXPECT_EQ(adp_phy_2_intf_id(1), -1);
}

TEST_F(FailedAllocation, SizesThatOverflowAllocateNothing) {
    fake_system::Session session;
    EXPECT_EQ(set_max(0x40000000), -1);
    EXPECT_EQ(session.system().allocations(), 0u);
}

}  // namespace port_map_test
