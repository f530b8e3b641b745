// Storm control of groups: the limit visits the counted slots, the reset of the exceeded flags always eight slots.
#include "tests/support/port_calls.h"

namespace {

using library_test::table_bytes;
using port_calls::kBadGroups;
using port_calls::kFailures;
using port_calls::nothing_was_read;
using port_calls::outputs;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

using PortList = std::vector<int>;
using Trace = std::vector<std::string>;

constexpr uint32_t kGroup = 3;
constexpr uint32_t kAgg = ADP_AGG_INTF(kGroup);
constexpr uint32_t kAllUserPorts = 0x07FFFFFE;

class StormOfGroup : public library_test::LibraryTest {
  protected:
    void SetUp() override {
        LibraryTest::SetUp();
        port_calls::forget_outputs();
    }

    static adp_status_t set_limit() { return adp_set_storm_control(0, kAgg, 4, 1000, 64); }
    static adp_status_t get_limit() { return adp_get_storm_control(0, kAgg, 4, &outputs[0], &outputs[1]); }
    static adp_status_t reset_flag() { return adp_reset_storm_exceed_flag(0, kAgg); }

    static Trace lines(const std::string &call, const PortList &ports, const std::string &rest) {
        Trace lines;
        for (const int port : ports) {
            lines.push_back(port_calls::PortCall{"", {}, call, rest}.line(port));
        }
        return lines;
    }
    static Trace limits(const PortList &ports) {
        return lines("user_rate_bandwidth_set", ports, ", type=4, rate=1000, burst=64");
    }
    static Trace reads(const PortList &ports) { return lines("user_rate_bandwidth_get", ports, ", type=4"); }
    static Trace resets(const PortList &ports) { return lines("user_rate_stormExceedFlag_reset", ports, ""); }

    static PortList ports_between(int first, int last) {
        PortList ports;
        for (int port = first; port <= last; ++port) {
            ports.push_back(port);
        }
        return ports;
    }

    /** Both walks succeed, over these ports. */
    static void expect_walks(const PortList &limited, const PortList &reset) {
        EXPECT_EQ(set_limit(), 0);
        EXPECT_THAT(driver().take(), ElementsAreArray(limits(limited)));
        EXPECT_EQ(reset_flag(), 0);
        EXPECT_THAT(driver().take(), ElementsAreArray(resets(reset)));
    }
};

TEST_F(StormOfGroup, GoesToTheConfiguredMembersInAscendingOrder) {
    set_active(kGroup, {20, 21});
    set_configured(kGroup, 1u << 26 | 1u << 1 | 1u << 8);
    expect_walks({4, 11, 29}, {4, 11, 29});
}

TEST_F(StormOfGroup, GoesToTheActiveMembersWhenNoneAreConfigured) {
    for (const PortList &ports : {PortList{29}, {29, 4, 7}, ports_between(4, 11)}) {
        set_active(kGroup, {ports.begin(), ports.end()});
        expect_walks(ports, ports);
    }
}

TEST_F(StormOfGroup, LimitsAllMembersButResetsEight) {
    for (const int members : {9, 10, 11}) {
        const PortList ports = ports_between(4, 3 + members);
        set_active(kGroup, {ports.begin(), ports.end()});
        expect_walks(ports, ports_between(4, 11));
    }
    set_configured(kGroup, 0x3FE);
    expect_walks(ports_between(4, 12), ports_between(4, 11));
    set_configured(kGroup, kAllUserPorts);
    expect_walks(ports_between(4, 29), ports_between(4, 11));
}

TEST_F(StormOfGroup, SkipsEmptySlotsAndCountsThem) {
    set_active(kGroup, {4, 0, 200, 6});
    expect_walks({4, -1, 6}, {4, -1, 6});
    set_active(kGroup, {0, 0, 0, 0, 0, 0, 0, 0, 5});
    expect_walks({5}, {});
    set_configured(kGroup, 1u << 0 | 1u << 9);
    expect_walks({12}, {12});
    set_configured(kGroup, 0x3FF);  // interfaces 0 to 9
    expect_walks(ports_between(4, 12), ports_between(4, 10));
}

TEST_F(StormOfGroup, WithoutMembersSucceedsWithoutACall) {
    agg_manage_intf[kGroup - 1] = 5;
    expect_walks({}, {});
    set_active(kGroup, {4});
    set_configured(kGroup, 0, 1);  // the second word is ignored, and yet the bitmap is not empty
    expect_walks({}, {});
    set_configured(kGroup, 0xF8000000);  // bits beyond the last user port
    expect_walks({}, {});
}

TEST_F(StormOfGroup, WithMoreMembersThanAListHoldsCountsNoneButResetsThoseListed) {
    set_configured(kGroup, kAllUserPorts | 1);
    expect_walks({}, ports_between(4, 10));
}

TEST_F(StormOfGroup, WithACountAboveTheRecordsSizeVisitsNothing) {
    for (const int32_t count : {12, 26, 27, INT32_MAX, -1, INT32_MIN}) {
        set_active(kGroup, {4, 5});
        agg_info[kGroup - 1].count = count;
        expect_walks({}, {});
    }
}

TEST_F(StormOfGroup, StopsAtTheFirstFailure) {
    const PortList ports = {4, 5, 29};
    set_configured(kGroup, 1u << 1 | 1u << 2 | 1u << 26);
    const std::string before = table_bytes();
    for (size_t failing = 0; failing < ports.size(); ++failing) {
        const PortList reached(ports.begin(), ports.begin() + static_cast<long>(failing) + 1);
        for (const int32_t failure : kFailures) {
            driver().fail_call(failing, failure);
            EXPECT_EQ(set_limit(), 102);
            EXPECT_THAT(driver().take(), ElementsAreArray(limits(reached)));
            driver().fail_call(failing, failure);
            EXPECT_EQ(reset_flag(), 102);
            EXPECT_THAT(driver().take(), ElementsAreArray(resets(reached)));
        }
    }
    EXPECT_EQ(table_bytes(), before);
}

TEST_F(StormOfGroup, IsReadFromItsManagementInterfaceAlone) {
    set_active(kGroup, {20, 21});
    set_configured(kGroup, 1u << 8);
    driver().on("user_rate_bandwidth_get").sets("rate", 0xFFFFFFFFu).sets("burst", 0x80000001u);
    for (const auto &[manager, port] :
         {std::pair{26u, 29}, std::pair{0u, 0}, std::pair{27u, -1}, std::pair{0xFFFFFFFFu, -1}}) {
        agg_manage_intf[kGroup - 1] = manager;
        port_calls::forget_outputs();
        EXPECT_EQ(get_limit(), 0);
        EXPECT_THAT(driver().take(), ElementsAreArray(reads({port})));
        EXPECT_THAT(outputs, ::testing::ElementsAre(0xFFFFFFFFu, 0x80000001u));
    }
}

TEST_F(StormOfGroup, ReportsAFailedReadAs102) {
    agg_manage_intf[kGroup - 1] = 3;
    const std::string before = table_bytes();
    for (const int32_t failure : kFailures) {
        driver().fail_every("user_rate_bandwidth_get", failure);
        EXPECT_EQ(get_limit(), 102);
        EXPECT_THAT(driver().take(), ElementsAreArray(reads({6})));
    }
    EXPECT_TRUE(nothing_was_read());
    EXPECT_EQ(table_bytes(), before);
}

TEST_F(StormOfGroup, OutsideOneToEightIsRefused) {
    const std::string before = table_bytes();
    for (const uint32_t group : kBadGroups) {
        EXPECT_EQ(adp_set_storm_control(0, group, 4, 1000, 64), -1) << group;
        EXPECT_EQ(adp_get_storm_control(0, group, 4, &outputs[0], &outputs[1]), -1) << group;
        EXPECT_EQ(adp_reset_storm_exceed_flag(0, group), -1) << group;
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_TRUE(nothing_was_read());
    EXPECT_EQ(table_bytes(), before);
}

}  // namespace
