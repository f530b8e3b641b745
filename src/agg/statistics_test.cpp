// Port counters, of a group summed over its active members, and the traps of LACP and OAM frames.
#include "core/testing/group.h"

namespace {

using agg_test::first_ports;
using agg_test::Ports;
using agg_test::table_bytes;
using agg_test::Trace;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr uint32_t kGroup = 6;
constexpr uint32_t kAgg = ADP_AGG_INTF(kGroup);
constexpr uint32_t kType = 17;
constexpr uint64_t kNotWritten = 0xAAAAAAAABBBBBBBB;
constexpr int32_t kFailures[] = {-1, 1, 77, INT32_MIN};

class PortStatistics : public agg_test::AggTest {
  protected:
    void SetUp() override {
        start();
        driver().on("user_port_packetstat_get").does([this](recording::Arguments &arguments) {
            *static_cast<uint64_t *>(arguments.pointer("value")) = counters_[arguments.i32("port")];
            return 0;
        });
    }

    static Trace gets(const std::vector<int> &ports) {
        Trace lines;
        for (const int port : ports) {
            lines.push_back("user_port_packetstat_get(unit=0, zero=0, port=" + std::to_string(port) + ", type=17)");
        }
        return lines;
    }

    static Trace clears(const std::vector<int> &ports) {
        Trace lines;
        for (const int port : ports) {
            lines.push_back(agg_test::on_port("user_port_packetstat_clear", port));
        }
        return lines;
    }

    std::map<int, uint64_t> counters_;
    uint64_t value_ = kNotWritten;
};

TEST_F(PortStatistics, OfAPortIsTheDriversCounter) {
    counters_[29] = 0x0123456789ABCDEF;
    EXPECT_EQ(adp_get_port_stat(26, kType, &value_), 0);
    EXPECT_EQ(value_, 0x0123456789ABCDEFu);
    EXPECT_THAT(driver().take(), ElementsAreArray(gets({29})));
    EXPECT_EQ(adp_get_port_stat(1, 0xFFFFFFFF, &value_), 0);
    EXPECT_THAT(driver().trace(), ElementsAre("user_port_packetstat_get(unit=0, zero=0, port=4, type=4294967295)"));
}

TEST_F(PortStatistics, OfTheCpuRowAndOfAnUnmappedPortAreReadToo) {
    EXPECT_EQ(adp_get_port_stat(0, kType, &value_), 0);
    EXPECT_EQ(adp_get_port_stat(27, kType, &value_), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(gets({0, -1})));
    EXPECT_EQ(adp_clr_port_stat(0), 0);
    EXPECT_EQ(adp_clr_port_stat(27), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(clears({0, -1})));
}

TEST_F(PortStatistics, AnyFailureOnAPortIs102) {
    for (const int32_t failure : kFailures) {
        driver().fail_every("user_port_packetstat_get", failure);
        driver().fail_every("user_port_packetstat_clear", failure);
        EXPECT_EQ(adp_get_port_stat(1, kType, &value_), 102);
        EXPECT_EQ(adp_clr_port_stat(1), 102);
    }
    EXPECT_EQ(value_, kNotWritten);
}

TEST_F(PortStatistics, OfAGroupIsTheSumInMemberOrder) {
    for (const size_t count : {1u, 3u, 8u}) {
        const Ports ports = first_ports(count);
        set_active(kGroup, {ports.rbegin(), ports.rend()});
        uint64_t sum = 0;
        for (const uint8_t port : ports) {
            counters_[port] = uint64_t{1} << port | uint64_t{port} << 40;
            sum += counters_[port];
        }
        EXPECT_EQ(adp_get_port_stat(kAgg, kType, &value_), 0);
        EXPECT_EQ(value_, sum);
        EXPECT_THAT(driver().take(), ElementsAreArray(gets({ports.rbegin(), ports.rend()})));
        EXPECT_EQ(adp_clr_port_stat(kAgg), 0);
        EXPECT_THAT(driver().take(), ElementsAreArray(clears({ports.rbegin(), ports.rend()})));
    }
}

TEST_F(PortStatistics, TheSumCarriesIntoTheHighWordAndWrapsAround) {
    const struct {
        uint64_t first;
        uint64_t second;
        uint64_t sum;
    } sums[] = {
        {0xFFFFFFFF, 1, 0x100000000}, {1, 0xFFFFFFFF, 0x100000000},         {0x1FFFFFFFF, 0x1FFFFFFFF, 0x3FFFFFFFE},
        {0xFFFFFFFFFFFFFFFF, 1, 0},   {0xFFFFFFFF00000000, 0x100000005, 5}, {0x100000000, 0x200000000, 0x300000000}};
    set_active(kGroup, {4, 5});
    for (const auto &[first, second, sum] : sums) {
        counters_ = {{4, first}, {5, second}};
        EXPECT_EQ(adp_get_port_stat(kAgg, kType, &value_), 0);
        EXPECT_EQ(value_, sum);
    }
}

TEST_F(PortStatistics, TheOutputsHigherWordComesFirstInMemoryOnTheTarget) {
    set_active(kGroup, {4, 5});
    counters_ = {{4, 0xFFFFFFFF}, {5, 1}};
    EXPECT_EQ(adp_get_port_stat(kAgg, kType, &value_), 0);
    uint32_t words[2];
    std::memcpy(words, &value_, sizeof words);
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    EXPECT_THAT(words, ElementsAre(1u, 0u));
#else
    EXPECT_THAT(words, ElementsAre(0u, 1u));
#endif
}

TEST_F(PortStatistics, OfAGroupSkipsEmptySlotsOnly) {
    set_active(kGroup, {4, 0, 200, 6});
    counters_ = {{4, 1}, {0, 100}, {-1, 20}, {6, 3}};
    EXPECT_EQ(adp_get_port_stat(kAgg, kType, &value_), 0);
    EXPECT_EQ(value_, 24u);
    EXPECT_THAT(driver().take(), ElementsAreArray(gets({4, -1, 6})));
    EXPECT_EQ(adp_clr_port_stat(kAgg), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(clears({4, -1, 6})));
}

TEST_F(PortStatistics, OfAGroupTakesActiveMembersNotConfiguredOnes) {
    set_active(kGroup, {4});
    set_configured(kGroup, 1u << 7 | 1u << 8);
    EXPECT_EQ(adp_get_port_stat(kAgg, kType, &value_), 0);
    EXPECT_EQ(adp_clr_port_stat(kAgg), 0);
    EXPECT_THAT(driver().trace(), ElementsAreArray(agg_test::calls(gets({4}), clears({4}))));
}

TEST_F(PortStatistics, OfAGroupWithoutMembersIsZero) {
    set_configured(kGroup, 1u << 7);
    agg_manage_intf[kGroup - 1] = 7;
    EXPECT_EQ(adp_get_port_stat(kAgg, kType, &value_), 0);
    EXPECT_EQ(value_, 0u);
    EXPECT_EQ(adp_clr_port_stat(kAgg), 0);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(PortStatistics, NineMembersAndMoreReadAsEmptySlots) {
    for (const size_t count : {9u, 11u}) {
        set_active(kGroup, first_ports(count));
        value_ = kNotWritten;
        EXPECT_EQ(adp_get_port_stat(kAgg, kType, &value_), 0);
        EXPECT_EQ(value_, 0u);
        EXPECT_EQ(adp_clr_port_stat(kAgg), 0);
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(PortStatistics, OfAGroupStopsAtTheFirstFailureAndLeavesTheOutput) {
    const std::vector<int> ports = {4, 5, 6};
    for (size_t failing = 0; failing < ports.size(); ++failing) {
        for (const int32_t failure : kFailures) {
            SetUp();
            set_active(kGroup, {4, 5, 6});
            counters_ = {{4, 1}, {5, 2}, {6, 3}};
            const std::string before = table_bytes();
            const std::vector<int> tried(ports.begin(), ports.begin() + static_cast<long>(failing) + 1);
            driver().fail_call(failing, failure);
            EXPECT_EQ(adp_get_port_stat(kAgg, kType, &value_), 102);
            EXPECT_EQ(value_, kNotWritten);
            EXPECT_THAT(driver().take(), ElementsAreArray(gets(tried)));
            driver().fail_call(failing, failure);
            EXPECT_EQ(adp_clr_port_stat(kAgg), 102);
            EXPECT_THAT(driver().take(), ElementsAreArray(clears(tried)));
            EXPECT_EQ(table_bytes(), before);
        }
    }
}

TEST_F(PortStatistics, OtherTypesAre201AndOtherGroupsRefused) {
    for (const uint32_t intf : {0x20000001u, 0x70000006u, 0xFFFFFFFFu}) {
        EXPECT_EQ(adp_get_port_stat(intf, kType, &value_), 201) << intf;
        EXPECT_EQ(adp_clr_port_stat(intf), 201) << intf;
    }
    EXPECT_EQ(value_, kNotWritten);
    for (const uint32_t group : {0x10000000u, 0x10000009u, 0x1FFFFFFFu}) {
        EXPECT_EQ(adp_get_port_stat(group, kType, &value_), -1) << group;
        EXPECT_EQ(adp_clr_port_stat(group), -1) << group;
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(PortStatistics, TrapsPassOnTheFirstAndTheFourthArgument) {
    std::vector<uintptr_t> options;
    for (const char *call : {"user_trunk_trap_lacp", "user_eoam_trap_set"}) {
        driver().on(call).does([&options](recording::Arguments &arguments) {
            options.push_back(arguments.word("option"));
            return 0;
        });
    }
    EXPECT_EQ(adp_set_trap_lacp_packet(1, 2, 3, 4), 0);
    EXPECT_EQ(adp_set_trap_eoam_packet(0xFFFFFFFF, 6, 7, 8), 0);
    EXPECT_THAT(driver().trace(), ElementsAre("user_trunk_trap_lacp(unit=0, zero=0, enable=1, option=4)",
                                              "user_eoam_trap_set(unit=0, zero=0, enable=4294967295, option=8)"));
    EXPECT_EQ(adp_set_trap_lacp_packet(1, 2, 3, UINTPTR_MAX), 0);
    EXPECT_EQ(adp_set_trap_eoam_packet(1, 6, 7, UINTPTR_MAX - 1), 0);
    EXPECT_THAT(options, ElementsAre(4, 8, UINTPTR_MAX, UINTPTR_MAX - 1));  // not cut to 32 bits: it may be an address
}

TEST_F(PortStatistics, TrapsReturnTheDriversResult) {
    for (const int32_t result : kFailures) {
        driver().fail_every("user_trunk_trap_lacp", result);
        EXPECT_EQ(adp_set_trap_lacp_packet(1, 0, 0, 0), result);
        EXPECT_EQ(adp_set_trap_eoam_packet(1, 0, 0, 0), 0);
        driver().fail_nothing();
        driver().fail_every("user_eoam_trap_set", result);
        EXPECT_EQ(adp_set_trap_lacp_packet(1, 0, 0, 0), 0);
        EXPECT_EQ(adp_set_trap_eoam_packet(1, 0, 0, 0), result);
        driver().fail_nothing();
    }
}

}  // namespace
