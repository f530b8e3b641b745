// The time of a link's last change: which entries a stamp writes, and which entry is read.
#include "port/testing/attribute.h"

namespace {

using namespace attribute_test;
using ::testing::IsEmpty;

constexpr time_t kNow = 1700000000;
constexpr uint32_t kStamp = 1700000000;
constexpr uint32_t kMaxIndex = 0x0FFFFFFF;

/** The sum of all entries at load, before any test can stamp one. */
uint64_t sum_at_load() {
    uint64_t sum = 0;
    for (int32_t port = 1; port <= static_cast<int32_t>(ADP_USER_PORTS); ++port) {
        uint32_t stamp = kUnwritten;
        adp_get_port_last_change(port, &stamp);
        sum += stamp;
    }
    return sum;
}
const uint64_t kSumAtLoad = sum_at_load();

class LastChange : public AttributeTest {
  protected:
    void SetUp() override {
        AttributeTest::SetUp();
        system().set_time(0);
        for (uint32_t port = 1; port <= ADP_USER_PORTS; ++port) {
            ASSERT_EQ(adp_set_port_last_change(port), ADP_OK);
        }
        system().set_time(kNow);
    }

    void TearDown() override {
        EXPECT_THAT(driver().trace(), IsEmpty()) << "no call of the driver is ever made";
        AttributeTest::TearDown();
    }

    static uint32_t last_change(uint32_t intf) {
        uint32_t stamp = kUnwritten;
        EXPECT_EQ(adp_get_port_last_change(static_cast<int32_t>(intf), &stamp), 0);
        return stamp;
    }

    /** The ports with a stamp; each stamp must be the current time. */
    static std::vector<uint32_t> stamped() {
        std::vector<uint32_t> ports;
        for (uint32_t port = 1; port <= ADP_USER_PORTS; ++port) {
            if (last_change(port) != 0) {
                EXPECT_EQ(last_change(port), kStamp);
                ports.push_back(port);
            }
        }
        return ports;
    }
};

using Ports = std::vector<uint32_t>;

TEST_F(LastChange, IsZeroAtLoad) {
    EXPECT_EQ(kSumAtLoad, 0u);
}

TEST_F(LastChange, OfAUserPortIsTheTimeOfItsLastStamp) {
    EXPECT_EQ(adp_set_port_last_change(1), 0);
    EXPECT_EQ(adp_set_port_last_change(26), 0);
    EXPECT_EQ(stamped(), (Ports{1, 26}));
    system().set_time(kNow + 5);
    EXPECT_EQ(adp_set_port_last_change(26), 0);
    EXPECT_EQ(last_change(26), kStamp + 5);
    EXPECT_EQ(last_change(1), kStamp);
}

TEST_F(LastChange, TimesAreCutTo32Bits) {
    constexpr time_t kLast32 = sizeof(time_t) > sizeof(uint32_t) ? static_cast<time_t>(0xFFFFFFFFu) : -1;
    system().set_time(kLast32);
    EXPECT_EQ(adp_set_port_last_change(3), 0);
    EXPECT_EQ(last_change(3), 0xFFFFFFFFu);
}

TEST_F(LastChange, IndexOutsideThePortsIsNeitherStampedNorReported) {
    const std::string tables = library_test::table_bytes();
    for (const uint32_t intf : {0u, 27u, 34u, kMaxIndex}) {
        EXPECT_EQ(adp_set_port_last_change(intf), 0);
        EXPECT_EQ(last_change(intf), 0u);
    }
    EXPECT_EQ(stamped(), Ports{});
    EXPECT_EQ(library_test::table_bytes(), tables);
}

TEST_F(LastChange, PortsOfASmallMapHaveAnEntryToo) {
    library_test::make_default_map(4);
    EXPECT_EQ(adp_set_port_last_change(20), 0);
    EXPECT_EQ(stamped(), Ports{20});
}

TEST_F(LastChange, StampOnAGroupReachesItsConfiguredMembersOnly) {
    set_configured(kGroup, 1u << 3 | 1u << 5);
    set_active(kGroup, {20, 21});
    agg_manage_intf[kGroup - 1] = 9;
    const std::string tables = library_test::table_bytes();
    EXPECT_EQ(adp_set_port_last_change(kAgg), 0);
    EXPECT_EQ(stamped(), (Ports{3, 5}));
    EXPECT_EQ(library_test::table_bytes(), tables);
}

TEST_F(LastChange, StampOnAGroupReachesItsActiveMembersWhenNoneIsConfigured) {
    // Port 0 is the CPU port and port 200 is not mapped: neither has an entry.
    set_active(kGroup, {29, 0, 200, 4});
    EXPECT_EQ(adp_set_port_last_change(kAgg), 0);
    EXPECT_EQ(stamped(), (Ports{1, 26}));
}

TEST_F(LastChange, StampOnAGroupOfOneEightNineAndAll) {
    set_active(kGroup, {7});
    EXPECT_EQ(adp_set_port_last_change(kAgg), 0);
    EXPECT_EQ(stamped(), Ports{4});
    set_active(kGroup, {11, 10, 9, 8, 7, 6, 5, 4});
    EXPECT_EQ(adp_set_port_last_change(kAgg), 0);
    EXPECT_EQ(stamped(), (Ports{1, 2, 3, 4, 5, 6, 7, 8}));
    set_active(kGroup, {12, 11, 10, 9, 8, 7, 6, 5, 4});
    EXPECT_EQ(adp_set_port_last_change(kAgg), 0);
    EXPECT_EQ(stamped(), (Ports{1, 2, 3, 4, 5, 6, 7, 8, 9}));
    set_configured(kGroup, 0x07FFFFFE);
    EXPECT_EQ(adp_set_port_last_change(kAgg), 0);
    EXPECT_EQ(stamped().size(), 26u);
}

TEST_F(LastChange, StampOnAGroupSkipsInterfaceZero) {
    set_configured(kGroup, 1u << 0 | 1u << 2);
    EXPECT_EQ(adp_set_port_last_change(kAgg), 0);
    EXPECT_EQ(stamped(), Ports{2});
}

TEST_F(LastChange, StampOnAGroupWithoutMembersSucceeds) {
    agg_manage_intf[kGroup - 1] = 9;
    EXPECT_EQ(adp_set_port_last_change(kAgg), 0);
    EXPECT_EQ(stamped(), Ports{});
}

TEST_F(LastChange, OfAGroupIsItsManagementInterfaces) {
    agg_manage_intf[kGroup - 1] = 9;
    set_configured(kGroup, 1u << 3);
    EXPECT_EQ(adp_set_port_last_change(9), 0);
    EXPECT_EQ(last_change(kAgg), kStamp);
    EXPECT_EQ(stamped(), Ports{9}) << "reading stamps nothing";
}

TEST_F(LastChange, OfAGroupIsItsLowestConfiguredMembersWithoutAManagementInterface) {
    set_configured(kGroup, 1u << 5 | 1u << 26);
    set_active(kGroup, {6});
    EXPECT_EQ(adp_set_port_last_change(5), 0);
    EXPECT_EQ(last_change(kAgg), kStamp);
    set_configured(kGroup, 1u << 4 | 1u << 5);
    EXPECT_EQ(last_change(kAgg), 0u);
}

TEST_F(LastChange, OfAGroupWhoseManagementInterfaceHasNoEntryIsZero) {
    EXPECT_EQ(adp_set_port_last_change(3), 0);
    set_configured(kGroup, 1u << 3);
    for (const uint32_t manager : {27u, 0xFFFFFFFFu, ADP_AGG_INTF(3)}) {
        agg_manage_intf[kGroup - 1] = manager;
        EXPECT_EQ(last_change(kAgg), 0u);
    }
}

TEST_F(LastChange, OfAGroupWithNeitherIs203AndZero) {
    set_active(kGroup, {6});
    EXPECT_EQ(adp_set_port_last_change(3), 0);
    uint32_t stamp = kUnwritten;
    EXPECT_EQ(adp_get_port_last_change(static_cast<int32_t>(kAgg), &stamp), 203);
    EXPECT_EQ(stamp, 0u);
}

TEST_F(LastChange, OtherTypesAreRefusedAndRead0) {
    const std::string tables = library_test::table_bytes();
    for (const uint32_t intf : kOtherTypes) {
        uint32_t stamp = kUnwritten;
        EXPECT_EQ(adp_set_port_last_change(intf), 201);
        EXPECT_EQ(adp_get_port_last_change(static_cast<int32_t>(intf), &stamp), 201);
        EXPECT_EQ(stamp, 0u);
    }
    EXPECT_EQ(stamped(), Ports{});
    EXPECT_EQ(library_test::table_bytes(), tables);
}

TEST_F(LastChange, UnknownGroupsAreRefusedAndRead0) {
    for (const uint32_t intf : kNoGroups) {
        uint32_t stamp = kUnwritten;
        EXPECT_EQ(adp_set_port_last_change(intf), -1);
        EXPECT_EQ(adp_get_port_last_change(static_cast<int32_t>(intf), &stamp), -1);
        EXPECT_EQ(stamp, 0u);
    }
    EXPECT_EQ(stamped(), Ports{});
}

}  // namespace
