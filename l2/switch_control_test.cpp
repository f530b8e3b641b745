// Switch controls, the trap of the device's own address, and the per-port controls that do not fan out.
#include "port/untagged_priority.h"
#include "tests/support/library_test.h"

namespace {

using library_test::table_bytes;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr uint32_t kNotWritten = 0xAAAAAAAA;
constexpr int32_t kFailures[] = {-1, 1, 77, INT32_MIN};
constexpr uint32_t kOtherTypes[] = {0x20000001, 0x70000002, 0xFFFFFFFF};
constexpr uint32_t kGroups[] = {ADP_AGG_INTF(1), ADP_AGG_INTF(8), ADP_AGG_INTF(0), ADP_AGG_INTF(9), 0x1FFFFFFF};

class SwitchControl : public library_test::LibraryTest {
  protected:
    uint32_t value_ = kNotWritten;
};

TEST_F(SwitchControl, SetHandsBothNumbersOn) {
    EXPECT_EQ(adp_switch_control_set(136, 0x70), 0);
    EXPECT_EQ(adp_switch_control_set(0xFFFFFFFF, 0x80000000), 0);
    EXPECT_THAT(driver().trace(),
                ElementsAre("user_switch_control_set(unit=0, zero=0, control=136, value=112)",
                            "user_switch_control_set(unit=0, zero=0, control=4294967295, value=2147483648)"));
}

TEST_F(SwitchControl, SetReportsAnyFailureAs102) {
    for (const int32_t failure : kFailures) {
        driver().fail_every("user_switch_control_set", failure);
        EXPECT_EQ(adp_switch_control_set(1, 2), 102);
    }
}

TEST_F(SwitchControl, GetReturnsTheDriversResult) {
    driver().on("user_switch_control_get").sets("value", 0xFFFFFFFFu);
    EXPECT_EQ(adp_switch_control_get(136, &value_), 0);
    EXPECT_EQ(value_, 0xFFFFFFFFu);
    EXPECT_THAT(driver().trace(), ElementsAre("user_switch_control_get(unit=0, zero=0, control=136)"));
    for (const int32_t failure : kFailures) {
        driver().on("user_switch_control_get").sets("value", 5u).returns(failure);
        value_ = kNotWritten;
        EXPECT_EQ(adp_switch_control_get(136, &value_), failure);
        EXPECT_EQ(value_, 5u);  // the driver writes to the caller's output itself
    }
}

TEST_F(SwitchControl, SelfMacTrapHandsTheFirstAndTheFourthArgumentOn) {
    EXPECT_EQ(adp_selfmac_trap_tocpu(0xFFFFFFFF, 2, 3, 4), 0);
    EXPECT_THAT(driver().trace(), ElementsAre("user_selfmac_trap_to_cpu(unit=0, zero=0, value=4294967295, option=4)"));
    uintptr_t option = 0;
    driver().on("user_selfmac_trap_to_cpu").does([&option](recording::Arguments &arguments) {
        option = arguments.word("option");
        return 0;
    });
    EXPECT_EQ(adp_selfmac_trap_tocpu(1, 0, 0, UINTPTR_MAX - 1), 0);
    EXPECT_EQ(option, UINTPTR_MAX - 1);  // not cut: it may be an address
}

TEST_F(SwitchControl, SelfMacTrapReturnsTheDriversResult) {
    for (const int32_t failure : kFailures) {
        driver().fail_every("user_selfmac_trap_to_cpu", failure);
        EXPECT_EQ(adp_selfmac_trap_tocpu(1, 0, 0, 0), failure);
    }
}

uint32_t output;

/** A control of one port: its call and what the driver sees for physical port %d. */
struct PortControl {
    const char *name;
    adp_status_t (*run)(uint32_t intf);
    std::string driver_call;
    std::string arguments;
};

void PrintTo(const PortControl &control, std::ostream *out) {
    *out << control.name;
}

class OnOnePort : public library_test::LibraryTest, public ::testing::WithParamInterface<PortControl> {
  protected:
    void SetUp() override {
        LibraryTest::SetUp();
        output = kNotWritten;
    }
    static std::string expected(int port) {
        return GetParam().driver_call + "(unit=0, zero=0, port=" + std::to_string(port) + GetParam().arguments + ")";
    }
};

TEST_P(OnOnePort, IsSentToThePhysicalPort) {
    for (const uint32_t intf : {1u, 26u, 0u, 27u}) {
        EXPECT_EQ(GetParam().run(intf), 0);
    }
    EXPECT_THAT(driver().trace(), ElementsAre(expected(4), expected(29), expected(0), expected(-1)));
}

TEST_P(OnOnePort, ReportsAnyFailureAs102) {
    for (const int32_t failure : kFailures) {
        driver().fail_every(GetParam().driver_call, failure);
        EXPECT_EQ(GetParam().run(1), 102);
    }
    EXPECT_EQ(driver().count(), std::size(kFailures));
    EXPECT_EQ(output, kNotWritten);
}

TEST_P(OnOnePort, OnAnyGroupIs102WithoutADriverCall) {
    set_active(1, {4, 5});
    set_configured(1, 1u << 1);
    agg_manage_intf[0] = 1;
    const std::string before = table_bytes();
    for (const uint32_t group : kGroups) {
        EXPECT_EQ(GetParam().run(group), 102) << group;
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_EQ(output, kNotWritten);
    EXPECT_EQ(table_bytes(), before);
}

TEST_P(OnOnePort, OnOtherTypesIs201WithoutADriverCall) {
    for (const uint32_t intf : kOtherTypes) {
        EXPECT_EQ(GetParam().run(intf), 201) << intf;
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_EQ(output, kNotWritten);
}

INSTANTIATE_TEST_SUITE_P(
    Controls, OnOnePort,
    ::testing::Values(PortControl{"VlanControlSet",
                                  [](uint32_t intf) { return hal_vlan_control_port_set(intf, 9, INT32_MIN); },
                                  "user_vlan_control_port_set", ", control=9, value=-2147483648"},
                      PortControl{"VlanControlGet",
                                  [](uint32_t intf) { return hal_vlan_control_port_get(intf, 9, &output); },
                                  "user_vlan_control_port_get", ", control=9"},
                      PortControl{"UntaggedPriority",
                                  [](uint32_t intf) { return adp::hal_port_untagged_priority_set(adp::Intf(intf), 7); },
                                  "user_port_untagged_priority_set", ", priority=7"}),
    [](const auto &row) { return std::string(row.param.name); });

TEST_F(SwitchControl, VlanControlGetFillsTheOutput) {
    driver().on("user_vlan_control_port_get").sets("value", 0xFFFFFFFEu);
    EXPECT_EQ(hal_vlan_control_port_get(26, 0xFFFFFFFF, &value_), 0);
    EXPECT_EQ(value_, 0xFFFFFFFEu);
    EXPECT_THAT(driver().trace(),
                ElementsAre("user_vlan_control_port_get(unit=0, zero=0, port=29, control=4294967295)"));
    driver().on("user_vlan_control_port_get").sets("value", 3u).returns(-9);
    EXPECT_EQ(hal_vlan_control_port_get(26, 0, &value_), 102);
    EXPECT_EQ(value_, 3u);
}

}  // namespace
