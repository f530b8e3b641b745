// Double-tag entries, modes and tag protocol identifiers: written to ports or to all active members of a group, read
// from ports or from a group's management interface.
#include "core/testing/group.h"

namespace {

using agg_test::Trace;
using library_test::table_bytes;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr uint32_t kGroup = 2;
constexpr uint32_t kAgg = ADP_AGG_INTF(kGroup);
constexpr uint32_t kNotWritten = 0xAAAAAAAA;
constexpr int32_t kFailures[] = {-1, 1, 77, INT32_MIN};
constexpr uint32_t kOtherTypes[] = {0x20000001, 0x30000000, 0x70000002, 0xFFFFFFFF};
constexpr uint32_t kNoGroups[] = {ADP_AGG_INTF(0), ADP_AGG_INTF(9), 0x1FFFFFFF};

// Arguments that are not cut have bits above the low 16; those that are cut keep bit 15, which is not a sign.
constexpr adp_word_t kA = 0xA1110001;
constexpr adp_word_t kB = 0xB2220002;
constexpr adp_word_t kE = 0xE4440004;
constexpr uint32_t kInner = 0x18ABC;     // 35516
constexpr uint32_t kOuter = 0xFFFF8001;  // 32769
constexpr uint32_t kTpid = 0x188A8;      // 34984

/** A call on an interface, and what the driver sees around the physical port. */
struct PortCall {
    const char *name;
    adp_status_t (*run)(uint32_t intf);
    const char *driver_call;
    const char *before_port;
    const char *after_port;
};

void PrintTo(const PortCall &call, std::ostream *out) {
    *out << call.name;
}

class PortCallTest : public library_test::LibraryTest, public ::testing::WithParamInterface<PortCall> {
  protected:
    static adp_status_t run(uint32_t intf) { return GetParam().run(intf); }

    static Trace on_ports(const std::vector<int> &ports) {
        Trace lines;
        for (const int port : ports) {
            lines.push_back(std::string(GetParam().driver_call) + "(unit=0, zero=0" + GetParam().before_port +
                            ", port=" + std::to_string(port) + GetParam().after_port + ")");
        }
        return lines;
    }
};

class DoubleTagSet : public PortCallTest {};

TEST_P(DoubleTagSet, OnAPortCutsWhatIsMarkedAndNothingElse) {
    EXPECT_EQ(run(1), 0);
    EXPECT_EQ(run(26), 0);
    EXPECT_EQ(driver().trace(), on_ports({4, 29}));
}

TEST_P(DoubleTagSet, OnTheCpuRowAndAnUnmappedPortIsPassedOn) {
    EXPECT_EQ(run(0), 0);
    EXPECT_EQ(run(27), 0);
    EXPECT_EQ(driver().trace(), on_ports({0, -1}));
}

TEST_P(DoubleTagSet, OnAPortReturnsTheDriversResult) {
    for (const int32_t failure : kFailures) {
        driver().fail_every(GetParam().driver_call, failure);
        EXPECT_EQ(run(1), failure);
    }
}

TEST_P(DoubleTagSet, OnAGroupGoesToItsActiveMembersInOrder) {
    set_configured(kGroup, 1u << 9 | 1u << 10);
    for (const std::vector<int> &ports : {std::vector<int>{4}, {29, 4, 10}, {11, 10, 9, 8, 7, 6, 5, 4}}) {
        set_active(kGroup, {ports.begin(), ports.end()});
        EXPECT_EQ(run(kAgg), 0);
        EXPECT_EQ(driver().take(), on_ports(ports));
    }
}

TEST_P(DoubleTagSet, OnAGroupCountsEmptySlotsWithoutADriverCall) {
    set_active(kGroup, {4, 0, 200, 6});
    agg_info[kGroup - 1].ports[4] = 7;  // beyond the count
    EXPECT_EQ(run(kAgg), 0);
    EXPECT_EQ(driver().take(), on_ports({4, -1, 6}));
    agg_info[kGroup - 1].count = 3;
    EXPECT_EQ(run(kAgg), 0);
    EXPECT_EQ(driver().take(), on_ports({4, -1}));
}

TEST_P(DoubleTagSet, OnAGroupWithoutActiveMembersDoesNothing) {
    set_configured(kGroup, 1u << 9);
    agg_manage_intf[kGroup - 1] = 9;
    EXPECT_EQ(run(kAgg), 0);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_P(DoubleTagSet, OnAGroupOfNineOrMoreIgnoresTheListsStatusAndFindsOnlyEmptySlots) {
    for (const size_t count : {9u, 11u}) {
        set_active(kGroup, agg_test::first_ports(count));
        EXPECT_EQ(run(kAgg), 0);
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_P(DoubleTagSet, OnAGroupStopsAtTheFirstFailureWith102) {
    const std::vector<int> ports = {4, 29, 6};
    set_active(kGroup, {4, 29, 6});
    const std::string before = table_bytes();
    for (size_t failing = 0; failing < ports.size(); ++failing) {
        for (const int32_t failure : kFailures) {
            driver().fail_call(failing, failure);
            EXPECT_EQ(run(kAgg), 102);
            EXPECT_EQ(driver().take(), on_ports({ports.begin(), ports.begin() + static_cast<long>(failing) + 1}));
        }
    }
    EXPECT_EQ(table_bytes(), before);
}

TEST_P(DoubleTagSet, OnOtherTypesIs201AndOnOtherGroupsRefused) {
    for (const uint32_t intf : kOtherTypes) {
        EXPECT_EQ(run(intf), 201) << intf;
    }
    for (const uint32_t group : kNoGroups) {
        EXPECT_EQ(run(group), -1) << group;
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Of, DoubleTagSet,
    ::testing::Values(PortCall{"EntryAdd",
                               [](uint32_t intf) { return adp_vlan_dtag_add(kA, intf, kB, kInner, kOuter, kE); },
                               "user_vlan_dtag_add", ", kind=2702245889",
                               ", action=2988572674, inner_vid=35516, outer_vid=32769, priority=3829661700"},
                      PortCall{"EntryDelete", [](uint32_t intf) { return adp_vlan_dtag_delete(kA, intf, kInner); },
                               "user_vlan_dtag_delete", ", kind=2702245889", ", inner_vid=35516"},
                      PortCall{"Mode", [](uint32_t intf) { return adp_double_tag_set(intf, kOuter); },
                               "user_port_dtag_mode_set", "", ", mode=32769"},
                      PortCall{"Tpid", [](uint32_t intf) { return adp_double_tag_tipd_set(intf, kTpid, kE); },
                               "user_port_tpid_set", "", ", tpid=34984, option=3829661700"}),
    [](const auto &row) { return std::string(row.param.name); });

uint32_t output[2];

class DoubleTagGet : public PortCallTest {
  protected:
    void SetUp() override {
        PortCallTest::SetUp();
        output[0] = output[1] = kNotWritten;
    }

    static void expect_untouched_outputs() { EXPECT_THAT(output, ElementsAre(kNotWritten, kNotWritten)); }
    static bool checks_for_a_manager() { return GetParam().name == std::string("Mode"); }
};

TEST_P(DoubleTagGet, OfAPortIsReadFromIt) {
    for (const uint32_t intf : {1u, 26u, 0u, 27u}) {
        EXPECT_EQ(run(intf), 0);
    }
    EXPECT_EQ(driver().trace(), on_ports({4, 29, 0, -1}));
    expect_untouched_outputs();  // the driver wrote nothing, and nothing else does
}

TEST_P(DoubleTagGet, OfAGroupIsReadFromItsManagementInterfaceAlone) {
    set_active(kGroup, {20, 21});
    set_configured(kGroup, 1u << 8);
    agg_manage_intf[kGroup - 1] = 26;
    EXPECT_EQ(run(kAgg), 0);
    agg_manage_intf[kGroup - 1] = 0xFFFFFFFF;
    EXPECT_EQ(run(kAgg), 0);
    EXPECT_EQ(driver().trace(), on_ports({29, -1}));
}

TEST_P(DoubleTagGet, OfAGroupWithoutAManagementInterfaceReadsTheCpuPortOrNothing) {
    set_active(kGroup, {20});
    set_configured(kGroup, 1u << 8);
    driver().fail_every(GetParam().driver_call, -7);
    EXPECT_EQ(run(kAgg), checks_for_a_manager() ? 0 : 102);
    EXPECT_EQ(driver().trace(), on_ports(checks_for_a_manager() ? std::vector<int>{} : std::vector<int>{0}));
    expect_untouched_outputs();
}

TEST_P(DoubleTagGet, ReportsAnyFailureAs102AndLeavesTheOutputs) {
    agg_manage_intf[kGroup - 1] = 3;
    const std::string before = table_bytes();
    for (const int32_t failure : kFailures) {
        driver().fail_every(GetParam().driver_call, failure);
        EXPECT_EQ(run(1), 102);
        EXPECT_EQ(run(kAgg), 102);
        expect_untouched_outputs();
    }
    EXPECT_EQ(table_bytes(), before);
}

TEST_P(DoubleTagGet, OfOtherTypesIs201AndOfOtherGroupsRefused) {
    for (const uint32_t intf : kOtherTypes) {
        EXPECT_EQ(run(intf), 201) << intf;
    }
    for (const uint32_t group : kNoGroups) {
        EXPECT_EQ(run(group), -1) << group;
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
    expect_untouched_outputs();
}

INSTANTIATE_TEST_SUITE_P(
    Of, DoubleTagGet,
    ::testing::Values(PortCall{"Entry",
                               [](uint32_t intf) { return adp_vlan_dtag_get(intf, kInner, &output[0], &output[1]); },
                               "user_vlan_dtag_get", "", ", inner_vid=35516"},
                      PortCall{"Mode", [](uint32_t intf) { return adp_double_tag_get(intf, &output[0]); },
                               "user_port_dtag_mode_get", "", ""},
                      PortCall{"Tpid", [](uint32_t intf) { return adp_double_tag_tpid_get(intf, &output[0]); },
                               "user_port_tpid_get", "", ""}),
    [](const auto &row) { return std::string(row.param.name); });

class DoubleTagOutput : public library_test::LibraryTest {
  protected:
    uint32_t first_ = kNotWritten;
    uint32_t second_ = kNotWritten;
};

TEST_F(DoubleTagOutput, IsWhatTheDriverWrites) {
    driver().on("user_vlan_dtag_get").sets("outer_vid", 0x12345678u).sets("priority", 0xFFFFFFFFu);
    EXPECT_EQ(adp_vlan_dtag_get(1, 2, &first_, &second_), 0);
    EXPECT_EQ(first_, 0x12345678u);
    EXPECT_EQ(second_, 0xFFFFFFFFu);
    driver().on("user_port_dtag_mode_get").sets("mode", 0x10002u);
    EXPECT_EQ(adp_double_tag_get(1, &first_), 0);
    EXPECT_EQ(first_, 0x10002u);
    driver().on("user_port_tpid_get").sets("tpid", 0x188A8u);
    EXPECT_EQ(adp_double_tag_tpid_get(1, &first_), 0);
    EXPECT_EQ(first_, 0x188A8u);
}

TEST_F(DoubleTagOutput, OfAGroupIsItsManagementInterfaces) {
    agg_manage_intf[kGroup - 1] = 3;
    driver().on("user_port_tpid_get").does([](recording::Arguments &arguments) {
        *static_cast<uint32_t *>(arguments.pointer("tpid")) = arguments.u32("port");
        return 0;
    });
    EXPECT_EQ(adp_double_tag_tpid_get(kAgg, &first_), 0);
    EXPECT_EQ(first_, 6u);
}

}  // namespace
