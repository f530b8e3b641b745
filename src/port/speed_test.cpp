// adp_set_phy_port_attr() for speed, advertised duplex and advertised speed: the method follows the maximum speed.
#include <algorithm>

#include "port/testing/attribute.h"

namespace {

using namespace attribute_test;
using ::testing::IsEmpty;

SetCase gigabit(const char *name, uint32_t selector, uint32_t value, uint32_t mode, const Calls &calls,
                uint32_t abilities) {
    return {name, selector, value, mode, calls, abilities, 0, kGigabit};
}

// On gigabit ports all three selectors go to the port or to each configured member.
const SetCase kGigabitCases[] = {
    gigabit("Speed10", 0, 10, 1,
            {kReadAbilities, {"user_port_speed_set", "speed=10, mode=1"}, write_abilities(0xCBFFFFFF)}, 0xFFFFFFFF),
    gigabit("Speed100", 0, 100, 0,
            {kReadAbilities, {"user_port_speed_set", "speed=100, mode=0"}, write_abilities(0x30000000)}, 0),
    gigabit("Speed1000", 0, 1000, 2,
            {kReadAbilities, {"user_port_speed_set", "speed=1000, mode=2"}, write_abilities(0x0FFFFFFF), kStartAutoneg},
            0xFFFFFFFF),
    gigabit("SpeedOfTenGigabitAdvertisesAll", 0, 10000, 0xFFFFFFFF,
            {kReadAbilities, {"user_port_speed_set", "speed=10000, mode=4294967295"}, write_abilities(0xFC000001)},
            0x08000001),
    gigabit("AnyOtherSpeedAdvertisesAll", 0, 0, 2,
            {kReadAbilities, {"user_port_speed_set", "speed=0, mode=2"}, write_abilities(0xF4000000)}, 0),
    gigabit("AdvertisedDuplexHalf", 7, 0, 2, {kReadAbilities, write_abilities(0xABFFFFFF), kStartAutoneg}, 0xFFFFFFFF),
    gigabit("AdvertisedDuplexFull", 7, 1, 2, {kReadAbilities, write_abilities(0x5F000001), kStartAutoneg}, 0xAF000001),
    gigabit("AdvertisedDuplexAutomatic", 7, 2, 0, {kReadAbilities, write_abilities(0xF4000000), kStartAutoneg}, 0),
    gigabit("AdvertisedSpeed10", 8, 10, 0, {kReadAbilities, write_abilities(0xCBFFFFFF), kStartAutoneg}, 0xFFFFFFFF),
    gigabit("AdvertisedSpeed100", 8, 100, 0, {kReadAbilities, write_abilities(0x3BFFFFFF), kStartAutoneg}, 0xFFFFFFFF),
    gigabit("AdvertisedSpeed1000", 8, 1000, 0, {kReadAbilities, write_abilities(0x04000000), kStartAutoneg}, 0),
    gigabit("AnyOtherAdvertisedSpeedIsAll", 8, 10000, 0, {kReadAbilities, write_abilities(0xFF000000), kStartAutoneg},
            0x0B000000),
};

INSTANTIATE_TEST_SUITE_P(Gigabit, SetOnConfigured, ::testing::ValuesIn(kGigabitCases), name_of<SetCase>);

/** The three selectors that read the maximum speed. */
class SpeedMethod : public AttributeTest, public ::testing::WithParamInterface<uint32_t> {
  protected:
    static constexpr uint32_t kMode = 77;

    static adp_status_t set(uint32_t intf) { return adp_set_phy_port_attr(intf, GetParam(), 1, kMode); }

    /** Ports of 1 Gb/s take the caller's mode, and for what is advertised no call but the advertisement's own. */
    static bool is_ten_gigabit_method(const Lines &lines) {
        const std::string call =
            GetParam() == ADP_ATTR_ADVERT_DUPLEX ? "user_port_duplex_set(" : "user_port_speed_set(";
        return std::any_of(lines.begin(), lines.end(), [&](const std::string &line) {
            return line.rfind(call, 0) == 0 && line.find(value_of("mode", kMode)) == std::string::npos;
        });
    }

    /** Interfaces 25 and 26 are ports of 10 Gb/s, the others of 1 Gb/s. */
    static void script_default_board() {
        driver().on("user_port_speed_max").does([](recording::Arguments &call) {
            *static_cast<uint32_t *>(call.pointer("speed")) = call.i32("port") < 28 ? kGigabit : kTenGigabit;
            return 0;
        });
    }
};

TEST_P(SpeedMethod, AnyOtherMaximumDoesNothing) {
    set_configured(kGroup, 1u << 3 | 1u << 5);
    set_active(kGroup, {7, 9});
    for (const uint32_t maximum : {0u, 100u, 999u, 1001u, 2500u, 9999u, 10001u, 40000u, 0xFFFFFFFFu}) {
        driver().on("user_port_speed_max").sets("speed", maximum);
        EXPECT_EQ(set(3), 0);
        EXPECT_EQ(driver().take(), maximum_reads({6}));
        EXPECT_EQ(set(kAgg), 0);
        EXPECT_EQ(driver().take(), maximum_reads({6, 8}));
    }
}

TEST_P(SpeedMethod, LargestMaximumOfAGroupDecidesInAnyOrder) {
    const Lines expected_reads[] = {maximum_reads({28, 4, 5}), maximum_reads({4, 28, 5}), maximum_reads({4, 5, 28})};
    const std::vector<uint8_t> orders[] = {{28, 4, 5}, {4, 28, 5}, {4, 5, 28}};
    for (size_t order = 0; order < std::size(orders); ++order) {
        start_over();
        script_default_board();
        set_active(kGroup, orders[order]);
        EXPECT_EQ(set(kAgg), 0);
        Lines lines = driver().take();
        EXPECT_TRUE(is_ten_gigabit_method(lines));
        lines.resize(expected_reads[order].size());
        EXPECT_EQ(lines, expected_reads[order]);
    }
}

TEST_P(SpeedMethod, ConfiguredMembersDecideAndActiveOnesDoNot) {
    script_default_board();
    set_configured(kGroup, 1u << 1);
    set_active(kGroup, {29});
    EXPECT_EQ(set(kAgg), 0);
    EXPECT_FALSE(is_ten_gigabit_method(driver().take()));
    set_configured(kGroup, 1u << 1 | 1u << 26);
    set_active(kGroup, {12});
    EXPECT_EQ(set(kAgg), 0);
    EXPECT_TRUE(is_ten_gigabit_method(driver().take()));
}

TEST_P(SpeedMethod, GroupWithoutMembersSucceeds) {
    script_default_board();
    agg_manage_intf[kGroup - 1] = 25;
    EXPECT_EQ(set(kAgg), 0);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_P(SpeedMethod, UnreadableMaximumIs102AndSetsNothing) {
    driver().fail_every("user_port_speed_max", 5);
    EXPECT_EQ(set(3), 102);
    EXPECT_EQ(driver().take(), maximum_reads({6}));
}

INSTANTIATE_TEST_SUITE_P(Selectors, SpeedMethod,
                         ::testing::Values(ADP_ATTR_SPEED, ADP_ATTR_ADVERT_DUPLEX, ADP_ATTR_ADVERT_SPEED),
                         selector_name);

}  // namespace
