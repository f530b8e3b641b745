// Storm control and the ingress limit of user ports, storm codes, and the device that needs no call.
#include "tests/support/port_calls.h"

namespace {

using library_test::table_bytes;
using port_calls::kFailures;
using port_calls::kNotWritten;
using port_calls::kOtherTypes;
using port_calls::nothing_was_read;
using port_calls::NotOnGroups;
using port_calls::OnUserPort;
using port_calls::outputs;
using port_calls::PortCall;
using port_calls::ReadOfUserPort;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::ValuesIn;

constexpr uint32_t kNoDevice = 1;
constexpr uint32_t kDevice = 0;
constexpr uint32_t kRate = 0xFFFFFFFF;
constexpr uint32_t kBurst = 0x80000001;
constexpr char kLimit[] = ", rate=4294967295, burst=2147483649";

/** The storm type that the driver gets for a code. */
uint32_t type_of(uint32_t code) {
    switch (code & 0xFF) {
        case 1:
            return 3;
        case 2:
            return 2;
        case 4:
            return 4;
        case 8:
            return 1;
        default:
            return 0;
    }
}

/** The calls of a port, as a device and a storm code make them. */
std::vector<PortCall> code_calls(uint32_t device, uint32_t code) {
    const std::string type = ", type=" + std::to_string(type_of(code));
    return {{"Enable", [=](uint32_t intf) { return adp_set_stormcontrol_enable(device, intf, code, 0xFFFFFFFE); },
             "user_rate_stormControlEnable_set", type + ", enable=4294967294"},
            {"SelTypeSet", [=](uint32_t intf) { return adp_set_storm_seltype(device, intf, code, 0xFFFFFFFD); },
             "user_rate_stormsel_set", type + ", selected=4294967293"},
            {"SelTypeGet",
             [=](uint32_t intf) { return adp_get_storm_seltype(device, intf, code, &outputs[0]); },
             "user_rate_stormsel_get",
             type,
             {"selected"}},
            {"ExceedFlag",
             [=](uint32_t intf) { return adp_get_storm_exceed_flag(device, intf, code, &outputs[0]); },
             "user_rate_stormExceedFlag_get",
             ", storm_code=" + std::to_string(code & 0xFF),
             {"flag"}}};
}

std::vector<PortCall> ingress_calls(uint32_t device) {
    return {{"IngressSet", [=](uint32_t intf) { return adp_set_ingress_limit(device, intf, kRate, kBurst); },
             "user_port_ingress_rate_set", kLimit},
            {"IngressGet",
             [=](uint32_t intf) { return adp_get_ingress_limit(device, intf, &outputs[0], &outputs[1]); },
             "user_port_ingress_rate_get",
             "",
             {"rate", "burst"}}};
}

std::vector<PortCall> limit_calls(uint32_t device, uint32_t code) {
    const std::string type = ", type=" + std::to_string(type_of(code));
    return {{"LimitSet", [=](uint32_t intf) { return adp_set_storm_control(device, intf, code, kRate, kBurst); },
             "user_rate_bandwidth_set", type + kLimit},
            {"LimitGet",
             [=](uint32_t intf) { return adp_get_storm_control(device, intf, code, &outputs[0], &outputs[1]); },
             "user_rate_bandwidth_get",
             type,
             {"rate", "burst"}}};
}

std::vector<PortCall> joined(std::vector<PortCall> calls, const std::vector<PortCall> &more) {
    calls.insert(calls.end(), more.begin(), more.end());
    return calls;
}

std::vector<PortCall> calls_with_code(uint32_t device, uint32_t code) {
    return joined(code_calls(device, code), limit_calls(device, code));
}

std::vector<PortCall> calls_not_on_groups(uint32_t device) {
    return joined(code_calls(device, 8), ingress_calls(device));
}

std::vector<PortCall> all_calls(uint32_t device) {
    std::vector<PortCall> calls = joined(calls_not_on_groups(device), limit_calls(device, 8));
    calls.push_back({"ExceedReset", [=](uint32_t intf) { return adp_reset_storm_exceed_flag(device, intf); },
                     "user_rate_stormExceedFlag_reset", ""});
    return calls;
}

INSTANTIATE_TEST_SUITE_P(Storm, OnUserPort, ValuesIn(all_calls(kDevice)), port_calls::name_of);
INSTANTIATE_TEST_SUITE_P(Storm, NotOnGroups, ValuesIn(calls_not_on_groups(kDevice)), port_calls::name_of);
INSTANTIATE_TEST_SUITE_P(Storm, ReadOfUserPort, ValuesIn(port_calls::reads_of(all_calls(kDevice))),
                         port_calls::name_of);

class Storm : public library_test::LibraryTest {
  protected:
    void SetUp() override {
        LibraryTest::SetUp();
        port_calls::forget_outputs();
    }
};

class StormDevice : public Storm {};

TEST_F(StormDevice, OneMakesNoCallForAnyInterface) {
    set_active(2, {4, 5});
    set_configured(2, 1u << 1);
    agg_manage_intf[1] = 1;
    const std::string before = table_bytes();
    for (const PortCall &call : all_calls(kNoDevice)) {
        for (const uint32_t intf : {1u, 0u, 27u, ADP_AGG_INTF(2), ADP_AGG_INTF(0), ADP_AGG_INTF(9), kOtherTypes[0],
                                    kOtherTypes[1], kOtherTypes[2]}) {
            EXPECT_EQ(call.run(intf), 0) << call.name << " " << intf;
        }
    }
    EXPECT_EQ(adp_set_storm_counting_mode(kNoDevice, 2, 3, 4), 0);
    EXPECT_EQ(adp_get_storm_counting_mode(kNoDevice, 2, 3, &outputs[0]), 0);
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_TRUE(nothing_was_read());
    EXPECT_EQ(table_bytes(), before);
}

TEST_F(StormDevice, AnyOtherIsTheDriversUnitZero) {
    for (const uint32_t device : {2u, 0x101u, 0x80000001u, 0xFFFFFFFFu}) {
        for (const PortCall &call : all_calls(device)) {
            EXPECT_EQ(call.run(3), 0) << call.name;
            EXPECT_THAT(driver().take(), ElementsAre(call.line(6)));
            EXPECT_EQ(call.run(kOtherTypes[0]), 201) << call.name;
        }
        EXPECT_EQ(adp_set_storm_counting_mode(device, 2, 3, 4), 0);
        EXPECT_EQ(adp_get_storm_counting_mode(device, 2, 3, &outputs[0]), 0);
        EXPECT_THAT(driver().take(), ElementsAre("user_rate_stormCountMode_set(unit=0, zero=0, storm_code=2, mode=4)",
                                                 "user_rate_stormCountMode_get(unit=0, zero=0, storm_code=2)"));
    }
}

class StormCode : public Storm {
  protected:
    /** Every low byte, below bits that are not used. */
    static std::vector<uint32_t> all_codes() {
        std::vector<uint32_t> codes;
        for (const uint32_t unused : {0u, 0x100u, 0x80000000u, 0xFFFFFF00u}) {
            for (uint32_t low = 0; low <= 0xFF; ++low) {
                codes.push_back(unused | low);
            }
        }
        return codes;
    }
};

// Only the exceeded flag gets the code itself, cut to a byte.
TEST_F(StormCode, IsTheLowByteAndBecomesTheDriversTypeExceptForTheExceededFlag) {
    for (const uint32_t code : all_codes()) {
        for (const PortCall &call : calls_with_code(kDevice, code)) {
            EXPECT_EQ(call.run(1), 0) << call.name << " " << code;
            EXPECT_THAT(driver().take(), ElementsAre(call.line(4))) << code;
        }
    }
}

TEST_F(StormCode, EightIsTypeOneWhereverItIsTranslated) {
    EXPECT_EQ(adp_set_storm_control(0, 1, 8, 5, 6), 0);
    EXPECT_EQ(adp_set_storm_seltype(0, 1, 8, 7), 0);
    EXPECT_EQ(adp_set_stormcontrol_enable(0, 1, 8, 1), 0);
    EXPECT_EQ(adp_get_storm_exceed_flag(0, 1, 8, &outputs[0]), 0);
    EXPECT_THAT(driver().trace(),
                ElementsAre("user_rate_bandwidth_set(unit=0, zero=0, port=4, type=1, rate=5, burst=6)",
                            "user_rate_stormsel_set(unit=0, zero=0, port=4, type=1, selected=7)",
                            "user_rate_stormControlEnable_set(unit=0, zero=0, port=4, type=1, enable=1)",
                            "user_rate_stormExceedFlag_get(unit=0, zero=0, port=4, storm_code=8)"));
}

TEST_F(StormCode, ZeroAndThreeAreEnabledAsTypeZero) {
    EXPECT_EQ(adp_set_stormcontrol_enable(0, 1, 0, 1), 0);
    EXPECT_EQ(adp_set_stormcontrol_enable(0, 1, 3, 1), 0);
    EXPECT_THAT(driver().trace(), SizeIs(2));
    EXPECT_THAT(driver().trace(), Each("user_rate_stormControlEnable_set(unit=0, zero=0, port=4, type=0, enable=1)"));
}

class StormCountingMode : public Storm {};

TEST_F(StormCountingMode, IsSetWithTheLowByteOfTheSelectorAndTheWholeMode) {
    EXPECT_EQ(adp_set_storm_counting_mode(0, 0xFFFFFF07, 0xFFFFFFFF, 0xFFFFFFFE), 0);
    EXPECT_EQ(adp_set_storm_counting_mode(0, 0x100, 0, 0), 0);
    EXPECT_THAT(driver().trace(),
                ElementsAre("user_rate_stormCountMode_set(unit=0, zero=0, storm_code=7, mode=4294967294)",
                            "user_rate_stormCountMode_set(unit=0, zero=0, storm_code=0, mode=0)"));
}

TEST_F(StormCountingMode, IsReadWithTheWholeSelector) {
    driver().on("user_rate_stormCountMode_get").sets("mode", 0xFFFFFFFEu);
    EXPECT_EQ(adp_get_storm_counting_mode(0, 0xFFFFFF07, 5, &outputs[0]), 0);
    EXPECT_EQ(outputs[0], 0xFFFFFFFEu);
    EXPECT_THAT(driver().trace(), ElementsAre("user_rate_stormCountMode_get(unit=0, zero=0, storm_code=4294967047)"));
}

TEST_F(StormCountingMode, ReportsAnyFailureAs102) {
    const std::string before = table_bytes();
    for (const int32_t failure : kFailures) {
        driver().fail_every("user_rate_stormCountMode_set", failure);
        driver().fail_every("user_rate_stormCountMode_get", failure);
        EXPECT_EQ(adp_set_storm_counting_mode(0, 1, 2, 3), 102) << failure;
        EXPECT_EQ(adp_get_storm_counting_mode(0, 1, 2, &outputs[0]), 102) << failure;
    }
    EXPECT_EQ(driver().count(), 2 * std::size(kFailures));
    EXPECT_EQ(outputs[0], kNotWritten);
    EXPECT_EQ(table_bytes(), before);
}

}  // namespace
