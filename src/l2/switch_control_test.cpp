// Switch controls, the trap of the device's own address, and the per-port controls that do not fan out.
#include "tests/support/port_calls.h"

namespace {

using port_calls::kFailures;
using port_calls::kNotWritten;
using port_calls::NotOnGroups;
using port_calls::OnUserPort;
using port_calls::outputs;
using port_calls::PortCall;
using port_calls::ReadOfUserPort;
using ::testing::ElementsAre;
using ::testing::ValuesIn;

class SwitchControl : public library_test::LibraryTest {
  protected:
    uint32_t value_ = kNotWritten;
};

TEST_F(SwitchControl, SetPassesBothNumbersOn) {
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

TEST_F(SwitchControl, SelfMacTrapPassesOnTheFirstAndTheFourthArgument) {
    EXPECT_EQ(adp_selfmac_trap_tocpu(0xFFFFFFFF, 2, 3, 4), 0);
    EXPECT_THAT(driver().trace(), ElementsAre("user_selfmac_trap_to_cpu(unit=0, zero=0, enable=4294967295, option=4)"));
    uintptr_t option = 0;
    driver().on("user_selfmac_trap_to_cpu").does([&option](recording::Arguments &arguments) {
        option = arguments.word("option");
        return 0;
    });
    EXPECT_EQ(adp_selfmac_trap_tocpu(1, 0, 0, UINTPTR_MAX - 1), 0);
    EXPECT_EQ(option, UINTPTR_MAX - 1);  // not cut to 32 bits: it may be an address
}

TEST_F(SwitchControl, SelfMacTrapReturnsTheDriversResult) {
    for (const int32_t failure : kFailures) {
        driver().fail_every("user_selfmac_trap_to_cpu", failure);
        EXPECT_EQ(adp_selfmac_trap_tocpu(1, 0, 0, 0), failure);
    }
}

const std::vector<PortCall> kPortControls = {
    {"VlanControlSet", [](uint32_t intf) { return hal_vlan_control_port_set(intf, 9, INT32_MIN); },
     "user_vlan_control_port_set", ", control=9, value=-2147483648"},
    {"VlanControlGet",
     [](uint32_t intf) { return hal_vlan_control_port_get(intf, 0xFFFFFFFF, &outputs[0]); },
     "user_vlan_control_port_get",
     ", control=4294967295",
     {"value"}}};

INSTANTIATE_TEST_SUITE_P(Control, OnUserPort, ValuesIn(kPortControls), port_calls::name_of);
INSTANTIATE_TEST_SUITE_P(Control, NotOnGroups, ValuesIn(kPortControls), port_calls::name_of);
INSTANTIATE_TEST_SUITE_P(Control, ReadOfUserPort, ValuesIn(port_calls::reads_of(kPortControls)), port_calls::name_of);

}  // namespace
