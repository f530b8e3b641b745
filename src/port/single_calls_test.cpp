// The single-purpose calls: learning, cable diagnosis, energy-efficient Ethernet, counters, copper or fibre.
#include <netlink_api.h>

#include "port/testing/attribute.h"

namespace {

using namespace attribute_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Learning : public AttributeTest {
  protected:
    static Lines lines(const std::vector<int32_t> &ports, const char *mode) {
        return lines_of({{"user_port_learn_set", std::string("mode=") + mode}}, ports);
    }
};

TEST_F(Learning, SetOnAUserPortReturnsTheDriversResult) {
    EXPECT_EQ(adp_intf_learn_set(26, -2), 0);
    EXPECT_EQ(driver().take(), lines({29}, "-2"));
    for (const int32_t result : {-33, 1}) {
        driver().fail_every("user_port_learn_set", result);
        EXPECT_EQ(adp_intf_learn_set(1, 1), result);
    }
}

TEST_F(Learning, SetOnAGroupGoesToTheConfiguredMembers) {
    set_configured(kGroup, 1u << 26 | 1u << 1 | 1u << 3);
    set_active(kGroup, {20});
    agg_manage_intf[kGroup - 1] = 9;
    const std::string tables = library_test::table_bytes();
    EXPECT_EQ(adp_intf_learn_set(kAgg, 1), 0);
    EXPECT_EQ(driver().take(), lines({4, 6, 29}, "1"));
    EXPECT_EQ(library_test::table_bytes(), tables);
}

TEST_F(Learning, SetOnAGroupSkipsEmptySlots) {
    set_active(kGroup, {0, 29, 0, 200, 4});
    EXPECT_EQ(adp_intf_learn_set(kAgg, 0), 0);
    EXPECT_EQ(driver().take(), lines({29, -1, 4}, "0"));
    set_active(kGroup, {12, 11, 10, 9, 8, 7, 6, 5, 4});
    EXPECT_EQ(adp_intf_learn_set(kAgg, 0), 0);
    EXPECT_EQ(driver().take(), lines({12, 11, 10, 9, 8, 7, 6, 5, 4}, "0"));
}

TEST_F(Learning, SetOnAGroupWithoutMembersSucceeds) {
    agg_manage_intf[kGroup - 1] = 9;
    EXPECT_EQ(adp_intf_learn_set(kAgg, 1), 0);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(Learning, SetOnAGroupIs102AtTheFirstFailure) {
    const auto prepare = [] { set_configured(kGroup, 1u << 26 | 1u << 1 | 1u << 3); };
    expect_each_failure(prepare, [] { return adp_intf_learn_set(kAgg, 1); });
}

/** A call that reads one port: on a group its management interface, without fallback. */
struct OnePortCase {
    const char *name;
    PortCall call;
    adp_status_t (*run)(uint32_t intf);
};

netlink_cable_diag_t diagnosis;
uint32_t output;

const OnePortCase kOnePortCases[] = {
    {"LearnGet", {"user_port_learn_get", ""}, [](uint32_t intf) { return adp_intf_learn_get(intf, &output); }},
    {"CableDiagnosis", {"User_port_cablediag", ""}, [](uint32_t intf) { return adp_intf_cablediag(intf, &diagnosis); }},
    {"EeeOn", {"user_eee_portEnable_set", "enable=1"}, [](uint32_t intf) { return adp_intf_eee_set(intf, 1); }},
    {"EeeByAnyValue",
     {"user_eee_portEnable_set", "enable=4294967295"},
     [](uint32_t intf) { return adp_intf_eee_set(intf, 0xFFFFFFFF); }},
    {"EeeGet", {"user_eee_portEnable_get", ""}, [](uint32_t intf) { return adp_intf_eee_get(intf, &output); }},
};

class ServiceOfOnePort : public AttributeTest, public ::testing::WithParamInterface<OnePortCase> {
  protected:
    void SetUp() override {
        AttributeTest::SetUp();
        output = kUnwritten;
        std::memset(&diagnosis, 0, sizeof diagnosis);
    }

    static adp_status_t run(uint32_t intf) { return GetParam().run(intf); }

    static void expect(uint32_t intf, int32_t port) {
        EXPECT_EQ(run(intf), 0);
        EXPECT_THAT(driver().take(), ElementsAre(line_of(GetParam().call, port)));
    }
};

TEST_P(ServiceOfOnePort, UserPortIsReadItself) {
    expect(1, 4);
    expect(26, 29);
    expect(27, -1);
}

TEST_P(ServiceOfOnePort, GroupIsReadFromItsManagementInterface) {
    set_configured(kGroup, 1u << 3);
    set_active(kGroup, {20});
    agg_manage_intf[kGroup - 1] = 9;
    expect(kAgg, 12);
}

TEST_P(ServiceOfOnePort, WithoutAManagementInterfaceTheCpuPortIsRead) {
    set_configured(kGroup, 1u << 3);
    set_active(kGroup, {20});
    ASSERT_EQ(adp_add_cpu_port(0, 0, 0, 30, 0), ADP_OK);
    expect(kAgg, 30);
}

TEST_P(ServiceOfOnePort, ResultIsTheDrivers) {
    agg_manage_intf[kGroup - 1] = 9;
    for (const int32_t result : {-33, 1, 102}) {
        driver().fail_every(GetParam().call.name, result);
        EXPECT_EQ(run(3), result);
        EXPECT_EQ(run(kAgg), result);
    }
    EXPECT_EQ(output, kUnwritten);
}

TEST_P(ServiceOfOnePort, NoTableIsChanged) {
    const std::string tables = library_test::table_bytes();
    EXPECT_EQ(run(3), 0);
    EXPECT_EQ(run(kAgg), 0);
    EXPECT_EQ(library_test::table_bytes(), tables);
}

INSTANTIATE_TEST_SUITE_P(Calls, ServiceOfOnePort, ::testing::ValuesIn(kOnePortCases), name_of<OnePortCase>);

class Services : public AttributeTest {};

TEST_F(Services, OutputsComeFromTheDriver) {
    const netlink_cable_diag_t measured = {{1, 2, 3, 4}, {10, 20, 30, 40}};
    driver().on("user_port_learn_get").sets("mode", 4);
    driver().on("user_eee_portEnable_get").sets("enable", 5);
    driver().on("User_port_cablediag").sets_object("result", measured);
    uint32_t learning = kUnwritten;
    uint32_t eee = kUnwritten;
    netlink_cable_diag_t result = {};
    EXPECT_EQ(adp_intf_learn_get(3, &learning), 0);
    EXPECT_EQ(adp_intf_eee_get(3, &eee), 0);
    EXPECT_EQ(adp_intf_cablediag(3, &result), 0);
    EXPECT_EQ(learning, 4u);
    EXPECT_EQ(eee, 5u);
    EXPECT_EQ(std::memcmp(&result, &measured, sizeof result), 0);
}

TEST_F(Services, OtherTypesAndUnknownGroupsAreRefusedWithoutADriverCall) {
    const std::string tables = library_test::table_bytes();
    uint32_t value = kUnwritten;
    const auto expect_status = [&](uint32_t intf, adp_status_t status) {
        EXPECT_EQ(adp_intf_learn_set(intf, 1), status);
        EXPECT_EQ(adp_intf_learn_get(intf, &value), status);
        EXPECT_EQ(adp_intf_cablediag(intf, &value), status);
        EXPECT_EQ(adp_intf_eee_set(intf, 1), status);
        EXPECT_EQ(adp_intf_eee_get(intf, &value), status);
    };
    for (const uint32_t intf : kOtherTypes) {
        expect_status(intf, 201);
    }
    for (const uint32_t intf : kNoGroups) {
        expect_status(intf, -1);
    }
    EXPECT_EQ(value, kUnwritten);
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_EQ(library_test::table_bytes(), tables);
}

TEST_F(Services, CounterOfAPortIsA64BitNumber) {
    uint64_t counter = 0;
    driver().on("user_stat_port_get").does([](recording::Arguments &call) {
        *static_cast<uint64_t *>(call.pointer("value")) = 0x0123456789ABCDEF;
        return 0;
    });
    EXPECT_EQ(adp_intf_stat_get(3, 77, &counter), 0);
    EXPECT_EQ(counter, 0x0123456789ABCDEFu);
    EXPECT_THAT(driver().take(), ElementsAre("user_stat_port_get(unit=0, zero=0, port=6, selector=77)"));
}

TEST_F(Services, CounterOfAnythingElseIsReadFromPortMinusOne) {
    uint64_t counter = 0;
    agg_manage_intf[kGroup - 1] = 9;
    set_configured(kGroup, 1u << 3);
    for (const uint32_t intf : {kAgg, 27u, ADP_AGG_INTF(9), 0x20000001u, 0xFFFFFFFFu}) {
        EXPECT_EQ(adp_intf_stat_get(intf, 1, &counter), 0);
        EXPECT_THAT(driver().take(), ElementsAre("user_stat_port_get(unit=0, zero=0, port=-1, selector=1)"));
        driver().fail_call(0, kDriverError);
        EXPECT_EQ(adp_intf_stat_get(intf, 1, &counter), kDriverError);
        EXPECT_EQ(driver().take().size(), 1u);
    }
    EXPECT_EQ(counter, 0u);
}

class CopperOrFibre : public AttributeTest {
  protected:
    static void script(uint32_t autoneg, uint32_t abilities) {
        driver().on("user_port_autoneg_get").sets("enable", autoneg);
        driver().on("user_port_ability_advert_get").sets("abilities", abilities);
    }

    static Lines both_reads(int32_t port) {
        return lines_of({{"user_port_autoneg_get", ""}, {"user_port_ability_advert_get", ""}}, {port});
    }
};

TEST_F(CopperOrFibre, AnyAbilityOf10Or100IsCopper) {
    for (const uint32_t abilities : {0x80000000u, 0x40000000u, 0x20000000u, 0x10000000u, 0xFFFFFFFFu}) {
        script(1, abilities);
        EXPECT_EQ(adp_intf_combo_port_copper_or_fiber_check(3), 0);
        EXPECT_EQ(driver().take(), both_reads(6));
    }
}

TEST_F(CopperOrFibre, NoneOfTheseIsFibre) {
    for (const uint32_t abilities : {0u, 0x0FFFFFFFu}) {
        script(7, abilities);
        EXPECT_EQ(adp_intf_combo_port_copper_or_fiber_check(3), -1);
        EXPECT_EQ(driver().take(), both_reads(6));
    }
}

TEST_F(CopperOrFibre, WithoutAutonegotiationItIsFibreAndNothingElseIsRead) {
    script(0, 0xFFFFFFFF);
    EXPECT_EQ(adp_intf_combo_port_copper_or_fiber_check(3), -1);
    EXPECT_EQ(driver().take(), lines_of({{"user_port_autoneg_get", ""}}, {6}));
}

TEST_F(CopperOrFibre, ResultsOfTheReadsAreIgnored) {
    script(1, 0x10000000);
    driver().on("user_port_autoneg_get").returns(kDriverError);
    driver().on("user_port_ability_advert_get").returns(kDriverError);
    EXPECT_EQ(adp_intf_combo_port_copper_or_fiber_check(3), 0);
    EXPECT_EQ(driver().take(), both_reads(6));
}

TEST_F(CopperOrFibre, WhatIsNotReadCountsAsOff) {
    script(1, 0x10000000);
    driver().fail_call(0);
    EXPECT_EQ(adp_intf_combo_port_copper_or_fiber_check(3), -1);
    EXPECT_EQ(driver().take().size(), 1u);
    driver().fail_call(1);
    EXPECT_EQ(adp_intf_combo_port_copper_or_fiber_check(3), -1);
    EXPECT_EQ(driver().take(), both_reads(6));
}

TEST_F(CopperOrFibre, AggregationInterfaceReachesTheDriverAsNoPort) {
    script(1, 0x10000000);
    for (const uint32_t intf : {kAgg, 27u, ADP_AGG_INTF(9)}) {
        EXPECT_EQ(adp_intf_combo_port_copper_or_fiber_check(intf), 0);
        EXPECT_EQ(driver().take(), both_reads(-1));
    }
}

TEST_F(CopperOrFibre, OtherInterfaceTypesAreRefusedWithoutADriverCall) {
    script(1, 0x10000000);
    for (const uint32_t intf : {0x20000001u, 0xFFFFFFFFu}) {
        EXPECT_EQ(adp_intf_combo_port_copper_or_fiber_check(intf), ADP_E_INTF_TYPE);
        EXPECT_EQ(driver().take(), Lines{});
    }
}

}  // namespace
