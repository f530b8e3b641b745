// adp_set_phy_port_attr(): refusals, and the selectors that set the port or each configured member. Speed has its own
// cases in speed_test.cpp and uplink_speed_test.cpp, the administrative state and the protocol's hold in hold_test.cpp.
#include "port/testing/attribute.h"

namespace {

using namespace attribute_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SetAttribute : public AttributeTest {};

TEST_P(SetOnConfigured, UserPortGetsTheCallsInOrder) {
    script();
    expect_set(1, {4});
    expect_set(26, {29});
}

TEST_P(SetOnConfigured, UnmappedPortIsPassedOn) {
    script();
    expect_set(27, {-1});
}

TEST_P(SetOnConfigured, ConfiguredMembersFollowAscendingWhateverTheActiveOnesAre) {
    script();
    set_configured(kGroup, 1u << 26 | 1u << 1 | 1u << 3);
    set_active(kGroup, {20, 21});
    agg_manage_intf[kGroup - 1] = 9;
    expect_set(kAgg, {4, 6, 29});
}

TEST_P(SetOnConfigured, WithoutConfiguredMembersTheActiveOnesFollowInJoiningOrder) {
    script();
    set_active(kGroup, {29, 4, 10});
    expect_set(kAgg, {29, 4, 10});
}

TEST_P(SetOnConfigured, EmptySlotsAreSkippedAndCounted) {
    script();
    set_active(kGroup, {0, 29, 0, 4});
    expect_set(kAgg, {29, 4});
    set_configured(kGroup, 1u << 0 | 1u << 2);
    expect_set(kAgg, {5});
}

TEST_P(SetOnConfigured, OneEightAndNineActiveMembers) {
    script();
    set_active(kGroup, {7});
    expect_set(kAgg, {7});
    set_active(kGroup, {11, 10, 9, 8, 7, 6, 5, 4});
    expect_set(kAgg, {11, 10, 9, 8, 7, 6, 5, 4});
    set_active(kGroup, {12, 11, 10, 9, 8, 7, 6, 5, 4});
    expect_set(kAgg, {12, 11, 10, 9, 8, 7, 6, 5, 4});
}

TEST_P(SetOnConfigured, EveryUserPortConfigured) {
    script();
    set_configured(kGroup, 0x07FFFFFE);
    std::vector<int32_t> ports;
    for (int32_t port = 4; port <= 29; ++port) {
        ports.push_back(port);
    }
    expect_set(kAgg, ports);
}

TEST_P(SetOnConfigured, UnmappedMemberIsPassedOn) {
    script();
    set_active(kGroup, {200, 4});
    expect_set(kAgg, {-1, 4});
}

TEST_P(SetOnConfigured, FirstAndLastGroupHaveTheirOwnMembers) {
    script();
    set_configured(1, 1u << 7);
    set_configured(8, 1u << 9);
    expect_set(ADP_AGG_INTF(1), {10});
    expect_set(ADP_AGG_INTF(8), {12});
}

TEST_P(SetOnConfigured, GroupWithoutMembersSucceeds) {
    script();
    agg_manage_intf[kGroup - 1] = 9;
    expect_set(kAgg, {});
    set_configured(kGroup, 0, 1u << 3);
    expect_set(kAgg, {});
}

TEST_P(SetOnConfigured, FailureOnAUserPortEndsTheCall) {
    expect_each_failure(
        script, [] { return set(3); }, GetParam().own_result);
}

TEST_P(SetOnConfigured, FirstFailureOnAGroupEndsTheCall) {
    const auto prepare = [] {
        script();
        set_configured(kGroup, 1u << 1 | 1u << 3 | 1u << 26);
    };
    expect_each_failure(
        prepare, [] { return set(kAgg); }, GetParam().own_result);
}

const SetCase kCases[] = {
    {"DuplexHalf",
     1,
     0,
     0,
     {{"user_port_ability_advert_get", ""},
      {"user_port_ability_advert_set", value_of("abilities", 0xABFFFFFF)},
      {"user_port_duplex_set", "duplex=0, mode=0"}},
     0xFFFFFFFF},
    {"DuplexFull",
     1,
     1,
     3,
     {{"user_port_ability_advert_get", ""},
      {"user_port_ability_advert_set", value_of("abilities", 0x5FFFFFFF)},
      {"user_port_duplex_set", "duplex=1, mode=3"}},
     0xFFFFFFFF},
    {"DuplexAutomatic",
     1,
     2,
     1,
     {{"user_port_ability_advert_get", ""},
      {"user_port_ability_advert_set", value_of("abilities", 0xF4000000)},
      {"user_port_duplex_set", "duplex=2, mode=1"}}},
    {"DuplexHalfWithAutoneg",
     1,
     0,
     2,
     {{"user_port_ability_advert_get", ""},
      {"user_port_ability_advert_set", value_of("abilities", 0xA8123456)},
      {"user_port_duplex_set", "duplex=0, mode=2"},
      {"user_port_autoneg_set", "enable=1"}},
     0x5C123456},
    {"DuplexAutomaticWithAutoneg",
     1,
     0xFFFFFFFF,
     2,
     {{"user_port_ability_advert_get", ""},
      {"user_port_ability_advert_set", value_of("abilities", 0xF7000001)},
      {"user_port_duplex_set", "duplex=4294967295, mode=2"},
      {"user_port_autoneg_set", "enable=1"}},
     0x03000001},
    {"AutonegOff", 2, 0, 0, {{"user_port_autoneg_set", "enable=0"}}},
    {"AutonegOn",
     2,
     1,
     0,
     {{"user_port_ability_advert_get", ""},
      {"user_port_ability_advert_set", value_of("abilities", 0xFF000001)},
      {"user_port_autoneg_set", "enable=1"}},
     0x0B000001},
    {"AutonegOnByAnyOtherValue",
     2,
     7,
     9,
     {{"user_port_ability_advert_get", ""},
      {"user_port_ability_advert_set", value_of("abilities", 0xF4000000)},
      {"user_port_autoneg_set", "enable=7"}}},
    {"PauseOnAdvertised",
     5,
     1,
     0,
     {{"user_port_autoneg_get", ""},
      {"user_port_ability_advert_get", ""},
      {"user_port_ability_advert_set", value_of("abilities", 0xF7000002)}},
     0xF4000002,
     1},
    {"PauseOnByAnyOtherValueAdvertised",
     5,
     4,
     0,
     {{"user_port_autoneg_get", ""},
      {"user_port_ability_advert_get", ""},
      {"user_port_ability_advert_set", value_of("abilities", 0x03000000)}},
     0,
     9},
    {"PauseOffAdvertised",
     5,
     0,
     0,
     {{"user_port_autoneg_get", ""},
      {"user_port_ability_advert_get", ""},
      {"user_port_ability_advert_set", value_of("abilities", 0xFCFFFFFF)}},
     0xFFFFFFFF,
     1},
    {"PauseOnForced",
     5,
     3,
     0,
     {{"user_port_autoneg_get", ""},
      {"user_port_ability_advert_get", ""},
      {"user_port_pause_set", "transmit=3, receive=3"}},
     0xFFFFFFFF},
    {"PauseOffForced",
     5,
     0,
     0,
     {{"user_port_autoneg_get", ""},
      {"user_port_ability_advert_get", ""},
      {"user_port_pause_set", "transmit=0, receive=0"}},
     0xFFFFFFFF},
    {"Jumbo", 6, 9216, 0, {{"user_port_jumboframe_set", "enable=9216"}}},
    {.name = "Loopback",
     .selector = 4,
     .value = 3,
     .mode = 0,
     .calls = {{"user_port_loopback_set", "mode=3"}},
     .own_result = true},
    {.name = "Mdix",
     .selector = 9,
     .value = 0xFFFFFFFF,
     .mode = 0,
     .calls = {{"user_port_mdix_set", "mode=4294967295"}},
     .own_result = true},
};

INSTANTIATE_TEST_SUITE_P(Selectors, SetOnConfigured, ::testing::ValuesIn(kCases), name_of<SetCase>);

TEST_F(SetAttribute, FullDuplexWithAutonegotiationIsAlreadyDone) {
    set_configured(kGroup, 1u << 3);
    EXPECT_EQ(adp_set_phy_port_attr(3, ADP_ATTR_DUPLEX, 1, 2), 0);
    EXPECT_EQ(adp_set_phy_port_attr(kAgg, ADP_ATTR_DUPLEX, 1, 2), 0);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(SetAttribute, PositiveResultsAreFailuresToo) {
    driver().fail_every("user_port_jumboframe_set", 1);
    driver().fail_every("user_port_mdix_set", 77);
    set_configured(kGroup, 1u << 3 | 1u << 5);
    EXPECT_EQ(adp_set_phy_port_attr(3, ADP_ATTR_JUMBO, 1, 0), 102);
    EXPECT_EQ(adp_set_phy_port_attr(3, ADP_ATTR_MDIX, 1, 0), 77);
    EXPECT_EQ(adp_set_phy_port_attr(kAgg, ADP_ATTR_JUMBO, 1, 0), 102);
    EXPECT_EQ(adp_set_phy_port_attr(kAgg, ADP_ATTR_MDIX, 1, 0), 77);
    EXPECT_EQ(driver().count(), 4u);
}

TEST_F(SetAttribute, SelectorsWithoutASetDoNothing) {
    set_configured(kGroup, 1u << 3);
    for (const uint32_t selector : {10u, 12u}) {
        for (const uint32_t intf : {0u, 1u, 27u, kAgg, ADP_AGG_INTF(9)}) {
            EXPECT_EQ(adp_set_phy_port_attr(intf, selector, 1, 1), 0);
        }
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(SetAttribute, UnknownSelectorIsReportedBeforeTheInterfaceIsChecked) {
    const std::string tables = library_test::table_bytes();
    for (const uint32_t selector : {13u, 14u, 0x100u, 0x80000000u, 0xFFFFFFFFu}) {
        for (const uint32_t intf : {1u, kAgg, ADP_AGG_INTF(9), 0x20000001u, 0xFFFFFFFFu}) {
            EXPECT_EQ(adp_set_phy_port_attr(intf, selector, 0, 0), 101);
        }
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_EQ(library_test::table_bytes(), tables);
}

TEST_F(SetAttribute, OtherInterfaceTypesAreRefusedUnderEverySelector) {
    const std::string tables = library_test::table_bytes();
    for (uint32_t selector = 0; selector <= 12; ++selector) {
        for (const uint32_t intf : kOtherTypes) {
            EXPECT_EQ(adp_set_phy_port_attr(intf, selector, 0, 0), 201) << selector;
            EXPECT_EQ(adp_set_phy_port_attr(intf, selector, 1, 2), 201) << selector;
        }
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_EQ(library_test::table_bytes(), tables);
}

TEST_F(SetAttribute, UnknownGroupsAreRefusedUnderEverySelectorThatNeedsMembers) {
    for (const uint32_t intf : kNoGroups) {
        for (const uint32_t selector : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 11u}) {
            EXPECT_EQ(adp_set_phy_port_attr(intf, selector, 0, 0), -1) << intf << " " << selector;
        }
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(SetAttribute, BeforeTheMapExistsPortMinusOneIsPassedOn) {
    library_test::drop_map();
    EXPECT_EQ(adp_set_phy_port_attr(1, ADP_ATTR_JUMBO, 1, 0), 0);
    EXPECT_THAT(driver().trace(), ElementsAre("user_port_jumboframe_set(unit=0, zero=0, port=-1, enable=1)"));
}

TEST_F(SetAttribute, CpuPortIsAPortLikeAnyOther) {
    EXPECT_EQ(adp_set_phy_port_attr(0, ADP_ATTR_JUMBO, 1, 0), 0);
    EXPECT_THAT(driver().trace(), ElementsAre("user_port_jumboframe_set(unit=0, zero=0, port=0, enable=1)"));
}

}  // namespace
