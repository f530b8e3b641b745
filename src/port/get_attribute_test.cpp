// adp_get_phy_port_attr(): which port is read, and by which driver call.
#include "port/hold.h"
#include "port/testing/attribute.h"

namespace {

using namespace attribute_test;
using adp::HoldState;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr uint32_t kRead = 0xC0FFEE01;

class GetAttribute : public GetAttributeTest {};

/** A selector that is read from one port. */
struct GetCase {
    const char *name;
    uint32_t selector;
    const char *call;
    const char *output;
    const char *group_call;
    const char *group_output;
};

constexpr GetCase same(const char *name, uint32_t selector, const char *call, const char *output) {
    return {name, selector, call, output, call, output};
}

const GetCase kOnePortCases[] = {
    same("Speed", 0, "user_port_speed_get", "speed"),
    same("Duplex", 1, "user_port_duplex_get", "duplex"),
    same("Autoneg", 2, "user_port_autoneg_get", "enable"),
    same("AdminState", 3, "user_port_enable_get", "enable"),
    same("Loopback", 4, "user_port_loopback_get", "mode"),
    same("Pause", 5, "user_port_pause_get", "enable"),
    same("Jumbo", 6, "user_port_jumboframe_get", "enable"),
    same("Mdix", 9, "user_port_mdix_get", "mode"),
    same("Medium", 10, "user_port_link_medium_get", "medium"),
    {"PauseStatus", 13, "user_port_pause_get_stat", "status", "user_port_pause_get", "enable"},
};

void PrintTo(const GetCase &get, std::ostream *out) {
    *out << get.name;
}

class GetOfOnePort : public GetAttributeTest, public ::testing::WithParamInterface<GetCase> {
  protected:
    using GetAttributeTest::get;
    adp_status_t get(uint32_t intf) { return get(intf, GetParam().selector); }

    static void script() {
        driver().on(GetParam().group_call).sets(GetParam().group_output, kRead + 1);
        driver().on(GetParam().call).sets(GetParam().output, kRead);
    }
    static uint32_t group_value() {
        return std::strcmp(GetParam().call, GetParam().group_call) == 0 ? kRead : kRead + 1;
    }

    void expect_on_group(int32_t port) {
        script();
        value = kUnwritten;
        EXPECT_EQ(get(kAgg), 0);
        EXPECT_EQ(value, group_value());
        EXPECT_THAT(driver().take(), ElementsAre(line_of({GetParam().group_call, ""}, port)));
    }

    void expect_on_port(uint32_t intf, int32_t port) {
        script();
        value = kUnwritten;
        EXPECT_EQ(get(intf), 0);
        EXPECT_EQ(value, kRead);
        EXPECT_THAT(driver().take(), ElementsAre(line_of({GetParam().call, ""}, port)));
    }
};

TEST_P(GetOfOnePort, UserPortIsReadItself) {
    expect_on_port(1, 4);
    expect_on_port(26, 29);
    expect_on_port(0, 0);
}

TEST_P(GetOfOnePort, UnmappedPortIsPassedOn) {
    expect_on_port(27, -1);
}

TEST_P(GetOfOnePort, GroupIsReadFromItsManagementInterface) {
    agg_manage_intf[kGroup - 1] = 9;
    set_configured(kGroup, 1u << 3);
    set_active(kGroup, {20});
    expect_on_group(12);
    agg_manage_intf[kGroup - 1] = 27;
    expect_on_group(-1);
}

TEST_P(GetOfOnePort, WithoutAManagementInterfaceTheLowestConfiguredMemberIsRead) {
    set_configured(kGroup, 1u << 26 | 1u << 5);
    set_active(kGroup, {20});
    agg_manage_intf[kGroup] = 9;  // another group's
    expect_on_group(8);
}

TEST_P(GetOfOnePort, GroupWithNeitherIs203) {
    set_active(kGroup, {20});  // active members do not count
    set_configured(kGroup, 0, 1u << 3);
    EXPECT_EQ(get(kAgg), 203);
    EXPECT_EQ(value, kUnwritten);
    // Interface 0 is no member either: it stands for "none".
    set_configured(kGroup, 1u << 0 | 1u << 3);
    EXPECT_EQ(get(kAgg), 203);
    EXPECT_EQ(value, kUnwritten);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_P(GetOfOnePort, FailureIs102AndLeavesTheOutputAlone) {
    script();
    agg_manage_intf[kGroup - 1] = 9;
    for (const int32_t result : {-1, -33, 1}) {
        for (const uint32_t intf : {3u, kAgg}) {
            driver().fail_call(0, result);
            EXPECT_EQ(get(intf), 102);
            EXPECT_EQ(value, kUnwritten);
        }
    }
    EXPECT_EQ(driver().count(), 6u);
}

TEST_P(GetOfOnePort, ReadsChangeNoTable) {
    agg_manage_intf[kGroup - 1] = 9;
    adp::port_hold_state[2] = HoldState::kDisabled;
    const std::string tables = library_test::table_bytes();
    EXPECT_EQ(get(kAgg), 0);
    EXPECT_EQ(get(3), 0);
    EXPECT_EQ(library_test::table_bytes(), tables);
}

INSTANTIATE_TEST_SUITE_P(Selectors, GetOfOnePort, ::testing::ValuesIn(kOnePortCases), name_of<GetCase>);

TEST_F(GetAttribute, HeldInterfaceReadsAsEnabledWithoutADriverCall) {
    adp::port_hold_state[3 - 1] = HoldState::kHeld;
    adp::port_hold_state[ADP_USER_PORTS + kGroup - 1] = HoldState::kHeld;
    // The group has no member that could be read.
    for (const uint32_t intf : {3u, kAgg}) {
        value = kUnwritten;
        EXPECT_EQ(get(intf, ADP_ATTR_ADMIN_STATE), 0);
        EXPECT_EQ(value, 1u);
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(GetAttribute, StateOfAGroupAndOfItsMembersAreSeparate) {
    driver().on("user_port_enable_get").sets("enable", 0);
    agg_manage_intf[kGroup - 1] = 3;
    adp::port_hold_state[3 - 1] = HoldState::kHeld;
    EXPECT_EQ(get(kAgg, ADP_ATTR_ADMIN_STATE), 0);
    EXPECT_EQ(value, 0u) << "the held member is read, not its state";
    adp::port_hold_state[3 - 1] = HoldState::kFree;
    adp::port_hold_state[ADP_USER_PORTS + kGroup - 1] = HoldState::kHeld;
    EXPECT_EQ(get(3, ADP_ATTR_ADMIN_STATE), 0);
    EXPECT_EQ(value, 0u);
    EXPECT_EQ(driver().count(), 2u);
}

TEST_F(GetAttribute, DisabledInterfaceReadsAsTheDriverReports) {
    driver().on("user_port_enable_get").sets("enable", 7);
    adp::port_hold_state[3 - 1] = HoldState::kDisabled;
    EXPECT_EQ(get(3, ADP_ATTR_ADMIN_STATE), 0);
    EXPECT_EQ(value, 7u);
}

TEST_F(GetAttribute, SelectorsWithoutAGetLeaveTheOutputAlone) {
    for (const uint32_t selector : {7u, 8u}) {
        for (const uint32_t intf : {0u, 1u, 27u, kAgg, ADP_AGG_INTF(9)}) {
            EXPECT_EQ(get(intf, selector), 0);
        }
    }
    EXPECT_EQ(value, kUnwritten);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(GetAttribute, UnknownSelectorIsReportedBeforeTheInterfaceIsChecked) {
    for (const uint32_t selector : {15u, 16u, 0x100u, 0x80000000u, 0xFFFFFFFFu}) {
        for (const uint32_t intf : {1u, kAgg, ADP_AGG_INTF(9), 0x20000001u, 0xFFFFFFFFu}) {
            EXPECT_EQ(get(intf, selector), 101);
        }
    }
    EXPECT_EQ(value, kUnwritten);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(GetAttribute, OtherInterfaceTypesAreRefusedUnderEverySelector) {
    for (uint32_t selector = 0; selector <= 14; ++selector) {
        for (const uint32_t intf : kOtherTypes) {
            EXPECT_EQ(get(intf, selector), 201) << selector;
        }
    }
    EXPECT_EQ(value, kUnwritten);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(GetAttribute, UnknownGroupsAreRefusedUnderEverySelectorThatNeedsMembers) {
    for (const uint32_t intf : kNoGroups) {
        for (const uint32_t selector : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 9u, 10u, 11u, 12u, 13u, 14u}) {
            EXPECT_EQ(get(intf, selector), -1) << intf << " " << selector;
        }
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

}  // namespace
