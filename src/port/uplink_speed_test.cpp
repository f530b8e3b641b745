// adp_set_phy_port_attr() for speed, advertised duplex and advertised speed on ports of 10 Gb/s.
#include "port/testing/attribute.h"

namespace {

using namespace attribute_test;

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

    static void expect_set(uint32_t intf, const std::vector<int32_t> &read, const std::vector<PassedOn> &ports) {
        const std::string tables = library_test::table_bytes();
        EXPECT_EQ(set(intf), 0);
        EXPECT_EQ(driver().take(), maximum_reads(read) + uplink_lines(GetParam(), ports));
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

}  // namespace
