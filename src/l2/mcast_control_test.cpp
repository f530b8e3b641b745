// Switches of IGMP handling and multicast forwarding: thin calls, and two walks that no failure stops.
#include "l2/testing/support.h"

namespace {

using namespace l2_test;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

uint32_t output;

/** A call and its driver call; %d stands for the physical port, if the call has one. */
struct Control {
    const char *name;
    adp_status_t (*run)(uint32_t intf);
    std::string driver_call;
    std::string before_port;
    std::string after_port;
    bool has_port = true;
    const char *output_name = nullptr;
};

class McastControl : public L2Test, public ::testing::WithParamInterface<Control> {
  protected:
    void SetUp() override {
        L2Test::SetUp();
        output = kNotWritten;
    }
    static std::string expected(int port) {
        const Control &control = GetParam();
        return control.driver_call + control.before_port + (control.has_port ? std::to_string(port) : "") +
               control.after_port;
    }
};

TEST_P(McastControl, IsOneDriverCall) {
    for (const uint32_t intf : {1u, 26u, 0u, 27u, 0x10000001u, 0x20000001u}) {
        EXPECT_EQ(GetParam().run(intf), 0);
    }
    EXPECT_THAT(driver().trace(),
                ElementsAre(expected(4), expected(29), expected(0), expected(-1), expected(-1), expected(-1)));
}

TEST_P(McastControl, ReturnsTheDriversResult) {
    expect_results_passed_on(GetParam().driver_call, [] { return GetParam().run(1); });
    EXPECT_EQ(output, kNotWritten);
}

class McastControlRead : public McastControl {};

TEST_P(McastControlRead, LetsTheDriverWriteTheOutput) {
    for (const int32_t result : {0, -1, 77}) {
        driver().on(GetParam().driver_call).sets(GetParam().output_name, 0xFEDCBA98u).returns(result);
        output = kNotWritten;
        EXPECT_EQ(GetParam().run(1), result);
        EXPECT_EQ(output, 0xFEDCBA98u);
    }
}

const auto kSets = ::testing::Values(
    Control{"IgmpActionSet", [](uint32_t) { return adp_set_vlan_igmp_pkt_action(0xFFFFFFFF, 0x80000000); },
            "user_switch_control_set", "(unit=0, zero=0, control=4294967295, value=2147483648)", "", false},
    Control{"L2mcSet", [](uint32_t intf) { return adp_control_port_l2mc_enable(intf, 0xFFFFFFFF); },
            "User_switch_port_control_l2mc_enable", "(unit=0, port=", ", zero=0, enable=4294967295)"},
    Control{"IpmcSet", [](uint32_t intf) { return adp_control_port_ipmc_set_enable(intf, 7); },
            "User_switch_port_control_ipmc_set", "(unit=0, port=", ", zero=0, enable=7)"},
    Control{"IpmcOff", [](uint32_t) { return adp_control_ipmc_set_disable(); }, "User_switch_ipmc_set",
            "(unit=0, zero=0, enable=0)", "", false},
    Control{"IpmcOn", [](uint32_t) { return adp_control_ipmc_set_enable(); }, "User_switch_ipmc_set",
            "(unit=0, zero=0, enable=1)", "", false},
    Control{"Ip6mcMode", [](uint32_t) { return adp_control_ip6mc_mode_enable(0xFFFFFFFF); },
            "User_switch_ip6mc_mode_set", "(unit=0, zero=0, mode=4294967295)", "", false});

const auto kReads =
    ::testing::Values(Control{"IgmpActionGet", [](uint32_t) { return adp_get_vlan_igmp_pkt_action(136, &output); },
                              "user_switch_control_get", "(unit=0, zero=0, control=136)", "", false, "value"},
                      Control{"L2mcGet", [](uint32_t intf) { return adp_control_port_l2mc_get_status(intf, &output); },
                              "User_switch_port_control_l2mc_get", "(unit=0, port=", ", zero=0)", true, "enable"},
                      Control{"IpmcGet", [](uint32_t intf) { return adp_control_port_ipmc_get_status(intf, &output); },
                              "User_switch_port_control_ipmc_get", "(unit=0, port=", ", zero=0)", true, "enable"});

INSTANTIATE_TEST_SUITE_P(Sets, McastControl, kSets, [](const auto &row) { return std::string(row.param.name); });
INSTANTIATE_TEST_SUITE_P(Reads, McastControl, kReads, [](const auto &row) { return std::string(row.param.name); });
INSTANTIATE_TEST_SUITE_P(Reads, McastControlRead, kReads, [](const auto &row) { return std::string(row.param.name); });

/** The two walks over the board's user ports. */
struct Miss {
    const char *name;
    adp_status_t (*run)(uint32_t action);
    std::string driver_call;
};

class LookupMiss : public L2Test, public ::testing::WithParamInterface<Miss> {
  protected:
    static constexpr uint32_t kCalls = 26;

    /** The calls when the map's last row is @p user_ports. */
    static Trace expected(uint32_t user_ports) {
        Trace lines;
        for (uint32_t intf = 1; intf <= kCalls; ++intf) {
            const std::string port = intf > user_ports ? "-1" : std::to_string(intf + library_test::kPortOffset);
            lines.push_back(GetParam().driver_call + "(unit=0, zero=0, port=" + port + ", action=4294967294)");
        }
        return lines;
    }
    static adp_status_t run() { return GetParam().run(0xFFFFFFFE); }
};

TEST_P(LookupMiss, GoesToUserPorts1To26) {
    EXPECT_EQ(run(), 0);
    EXPECT_THAT(driver().trace(), ElementsAreArray(expected(kCalls)));
}

TEST_P(LookupMiss, MakesTheSame26CallsWhateverTheMap) {
    for (const uint32_t user_ports : {8u, 60u}) {
        library_test::make_default_map(user_ports);
        EXPECT_EQ(run(), 0);
        EXPECT_THAT(driver().take(), ElementsAreArray(expected(user_ports)));
    }
    library_test::drop_map();
    EXPECT_EQ(run(), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(expected(0)));
}

TEST_P(LookupMiss, Returns0WhicheverCallFails) {
    for (size_t failing = 0; failing < kCalls; ++failing) {
        driver().fail_call(failing);
        EXPECT_EQ(run(), 0);
        EXPECT_THAT(driver().take(), ElementsAreArray(expected(kCalls)));
    }
    driver().fail_every(GetParam().driver_call, INT32_MIN);
    EXPECT_EQ(run(), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(expected(kCalls)));
}

INSTANTIATE_TEST_SUITE_P(
    Walks, LookupMiss,
    ::testing::Values(Miss{"Ipmc", adp_control_ipmc_lookup_miss_action, "User_switch_ipmc_lookup_miss_action"},
                      Miss{"Ip6mc", adp_control_ip6mc_lookup_miss_action, "User_switch_ip6mc_lookup_miss_action"}),
    [](const auto &row) { return std::string(row.param.name); });

}  // namespace
