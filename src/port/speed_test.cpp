// adp_set_phy_port_attr() for speed, advertised duplex and advertised speed: the method follows the maximum speed.
#include <algorithm>

#include "port/testing/attribute.h"

namespace {

using namespace attribute_test;
using ::testing::IsEmpty;

constexpr uint32_t kGigabit = 1000;
constexpr uint32_t kTenGigabit = 10000;
const PortCall kReadAbilities = {"user_port_ability_advert_get", ""};
const PortCall kStartAutoneg = {"user_port_autoneg_set", "enable=1"};

PortCall write_abilities(uint32_t abilities) {
    return {"user_port_ability_advert_set", value_of("abilities", abilities)};
}

Lines maximum_reads(const std::vector<int32_t> &ports) {
    return lines_of({{"user_port_speed_max", ""}}, ports);
}

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

/** A set on 10-gigabit ports: some calls get the number passed in, the others that number translated once more. */
struct UplinkCall {
    PortCall call;
    bool is_on_translation = false;
};

struct UplinkCase {
    const char *name;
    uint32_t selector;
    uint32_t value;
    uint32_t read_abilities;
    std::vector<UplinkCall> calls;
};

UplinkCall on_translation(const PortCall &call) {
    return {call, true};
}

UplinkCall speed_set(uint32_t speed) {
    return {{"user_port_speed_set", value_of("speed", speed) + ", mode=2"}};
}

UplinkCall duplex_set(uint32_t duplex) {
    return {{"user_port_duplex_set", value_of("duplex", duplex) + ", mode=0"}};
}

const UplinkCase kUplinkCases[] = {
    {"Speed10000", 0, 10000, 0xFFFFFFFF, {{kReadAbilities}, {write_abilities(0xF3FFFFFF)}, speed_set(10000)}},
    {"Speed1000",
     0,
     1000,
     0xFBFFFFFF,
     {{kReadAbilities}, {write_abilities(0xF7FFFFFF)}, speed_set(1000), {kStartAutoneg}}},
    {"Speed100", 0, 100, 0, {{kReadAbilities}, {write_abilities(0x04000000)}, speed_set(100)}},
    {"SpeedOfZero", 0, 0, 0x08000001, {{kReadAbilities}, {write_abilities(0x04000001)}, speed_set(0)}},
    {"AdvertisedDuplexHalf",
     7,
     0,
     0xFFFFFFFF,
     {{kReadAbilities}, duplex_set(0), on_translation(write_abilities(0xF3FFFFFF)), on_translation(kStartAutoneg)}},
    {"AdvertisedDuplexFull",
     7,
     1,
     0x08000001,
     {{kReadAbilities}, duplex_set(1), on_translation(write_abilities(0x04000001)), on_translation(kStartAutoneg)}},
    {"AdvertisedDuplexAutomatic",
     7,
     2,
     0x0C000001,
     {{kReadAbilities}, duplex_set(2), on_translation(write_abilities(0x00000001)), on_translation(kStartAutoneg)}},
    {"AdvertisedSpeed10000",
     8,
     10000,
     0xFFFFFFFF,
     {{kReadAbilities}, speed_set(10000), on_translation(write_abilities(0xF3FFFFFF))}},
    {"AdvertisedSpeed1000",
     8,
     1000,
     0xF3FFFFFF,
     {{kReadAbilities}, speed_set(1000), on_translation(write_abilities(0xF7FFFFFF)), on_translation(kStartAutoneg)}},
    {"AdvertisedSpeed10",
     8,
     10,
     0x0C000000,
     {{kReadAbilities}, speed_set(10), on_translation(write_abilities(0x00000000))}},
};

/** The number that a set passes on, and that number's translation. */
struct PassedOn {
    int32_t number;
    int32_t translation;
};

Lines uplink_lines(const UplinkCase &set, const std::vector<PassedOn> &ports) {
    Lines lines;
    for (const PassedOn &port : ports) {
        for (const UplinkCall &call : set.calls) {
            lines.push_back(line_of(call.call, call.is_on_translation ? port.translation : port.number));
        }
    }
    return lines;
}

void PrintTo(const UplinkCase &set, std::ostream *out) {
    *out << set.name;
}

class SetOnUplinks : public AttributeTest, public ::testing::WithParamInterface<UplinkCase> {
  protected:
    static void script() {
        driver().on("user_port_speed_max").sets("speed", kTenGigabit);
        driver().on("user_port_ability_advert_get").sets("abilities", GetParam().read_abilities);
    }

    /** The mode is not used: 10-gigabit ports have modes of their own. */
    static adp_status_t set(uint32_t intf) {
        constexpr uint32_t kMode = 77;
        return adp_set_phy_port_attr(intf, GetParam().selector, GetParam().value, kMode);
    }

    static bool is_speed() { return GetParam().selector == ADP_ATTR_SPEED; }

    static void expect_set(uint32_t intf, const std::vector<int32_t> &asked, const std::vector<PassedOn> &ports) {
        const std::string tables = library_test::table_bytes();
        EXPECT_EQ(set(intf), 0);
        EXPECT_EQ(driver().take(), maximum_reads(asked) + uplink_lines(GetParam(), ports));
        EXPECT_EQ(library_test::table_bytes(), tables);
    }
};

TEST_P(SetOnUplinks, UserPortPassesItsPhysicalPortForSpeedAndElseItsInterfaceNumber) {
    script();
    expect_set(25, {28}, {is_speed() ? PassedOn{28, 28} : PassedOn{25, 28}});
}

TEST_P(SetOnUplinks, UnmappedPortIsPassedOn) {
    script();
    expect_set(27, {-1}, {is_speed() ? PassedOn{-1, -1} : PassedOn{27, -1}});
}

TEST_P(SetOnUplinks, ConfiguredMembersAreReadAndActiveOnesSet) {
    script();
    set_configured(kGroup, 1u << 25 | 1u << 4);
    set_active(kGroup, {11, 5, 29});
    // Port 29 is no interface of the map, so that its second translation finds none.
    expect_set(kAgg, {7, 28}, {{11, 14}, {5, 8}, {29, -1}});
}

TEST_P(SetOnUplinks, WithoutConfiguredMembersTheActiveOnesAreReadToo) {
    script();
    set_active(kGroup, {0, 28, 26});
    expect_set(kAgg, {28, 26}, {{28, -1}, {26, 29}});
}

TEST_P(SetOnUplinks, WithoutActiveMembersNothingIsSet) {
    script();
    set_configured(kGroup, 1u << 25 | 1u << 26);
    expect_set(kAgg, {28, 29}, {});
}

TEST_P(SetOnUplinks, EightActiveMembersAreSetAndNineAreNot) {
    script();
    set_configured(kGroup, 1u << 25);
    set_active(kGroup, {11, 10, 9, 8, 7, 6, 5, 4});
    expect_set(kAgg, {28}, {{11, 14}, {10, 13}, {9, 12}, {8, 11}, {7, 10}, {6, 9}, {5, 8}, {4, 7}});
    set_active(kGroup, {12, 11, 10, 9, 8, 7, 6, 5, 4});
    expect_set(kAgg, {28}, {});
}

TEST_P(SetOnUplinks, UnmappedMemberIsPassedOn) {
    script();
    set_configured(kGroup, 1u << 25);
    set_active(kGroup, {200});
    expect_set(kAgg, {28}, {{-1, -1}});
}

TEST_P(SetOnUplinks, AnyFailureOnAUserPortIs102) {
    expect_each_failure(script, [] { return set(26); });
}

TEST_P(SetOnUplinks, FirstFailureOnAGroupIs102) {
    const auto prepare = [] {
        script();
        set_configured(kGroup, 1u << 25 | 1u << 26);
        set_active(kGroup, {28, 29, 7});
    };
    expect_each_failure(prepare, [] { return set(kAgg); });
}

INSTANTIATE_TEST_SUITE_P(TenGigabit, SetOnUplinks, ::testing::ValuesIn(kUplinkCases), name_of<UplinkCase>);

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
