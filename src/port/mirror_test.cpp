// Mirror sessions: the translation of flags, sessions and interfaces, and arguments that are passed on unchanged.
#include "tests/support/library_test.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr uint32_t kSource = 1;        // physical port 4
constexpr uint32_t kDestination = 26;  // physical port 29
constexpr int32_t kResults[] = {0, 1, 77, INT32_MAX, -1, -33, INT32_MIN};
constexpr uint32_t kNoPorts[] = {
    27,         0x0FFFFFFF, ADP_AGG_INTF(0), ADP_AGG_INTF(1), ADP_AGG_INTF(8), ADP_AGG_INTF(9),
    0x20000001, 0xF0000001, 0xFFFFFFFF};

class Mirror : public library_test::LibraryTest {
  protected:
    /** The first group has members of every kind, to show that calls on a group do not visit its members. */
    void SetUp() override {
        library_test::LibraryTest::SetUp();
        set_configured(1, 1u << 2 | 1u << 3);
        set_active(1, {5, 6});
        agg_manage_intf[0] = 2;
        tables_ = library_test::table_bytes();
    }

    void TearDown() override {
        EXPECT_EQ(library_test::table_bytes(), tables_);
        library_test::LibraryTest::TearDown();
    }

    static std::string port_line(int32_t port, uint32_t session, int32_t destination, uint32_t mode) {
        return "user_mirror_port_set(unit=0, zero=0, port=" + std::to_string(port) +
               ", session=" + std::to_string(session) + ", destination=" + std::to_string(destination) +
               ", mode=" + std::to_string(mode) + ")";
    }

    static std::string flow_line(uint32_t session, int32_t port) {
        return "user_set_flow_mirror(unit=0, zero=0, session=" + std::to_string(session) +
               ", port=" + std::to_string(port) + ")";
    }

    std::string tables_;
};

TEST_F(Mirror, AddGivesTheDriverTheModeOfTheLowTwoFlags) {
    constexpr uint32_t kModes[] = {0, 2, 4, 6};
    for (const uint32_t high : {0u, 4u, 0x100u, 0x80000000u, 0xFFFFFFFCu}) {
        for (uint32_t flags = 1; flags < std::size(kModes); ++flags) {
            EXPECT_EQ(adp_add_port_mirror(kSource, kDestination, high | flags, 1), 0);
            EXPECT_THAT(driver().take(), ElementsAre(port_line(4, 0, 29, kModes[flags]))) << high << " " << flags;
        }
    }
}

TEST_F(Mirror, AddWithoutADirectionDoesNothing) {
    driver().fail_every("user_mirror_port_set", -33);
    for (const uint32_t flags : {0u, 4u, 8u, 0x80000000u, 0xFFFFFFFCu}) {
        EXPECT_EQ(adp_add_port_mirror(kSource, kDestination, flags, 1), 0) << flags;
        EXPECT_EQ(adp_add_port_mirror(0xFFFFFFFF, ADP_AGG_INTF(1), flags, 0), 0) << flags;
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(Mirror, FlagsHaveNames) {
    EXPECT_EQ(adp_add_port_mirror(kSource, kDestination, ADP_MIRROR_INGRESS, 1), 0);
    EXPECT_EQ(adp_add_port_mirror(kSource, kDestination, ADP_MIRROR_EGRESS, 1), 0);
    EXPECT_THAT(driver().trace(), ElementsAre(port_line(4, 0, 29, 2), port_line(4, 0, 29, 4)));
}

TEST_F(Mirror, DeleteIsModeZeroWhateverTheThirdArgument) {
    for (const uint32_t unused : {0u, 1u, 3u, 0xFFFFFFFFu}) {
        EXPECT_EQ(adp_del_port_mirror(kSource, kDestination, unused, 1), 0);
        EXPECT_THAT(driver().take(), ElementsAre(port_line(4, 0, 29, 0)));
    }
}

/** Sessions as the caller and as the driver number them; the number before the first wraps. */
struct Session {
    uint32_t caller;
    uint32_t driver;
};
constexpr Session kSessions[] = {
    {1, 0}, {2, 1}, {4, 3}, {0, 0xFFFFFFFF}, {0x80000000, 0x7FFFFFFF}, {0xFFFFFFFF, 0xFFFFFFFE}};

TEST_F(Mirror, SessionsCountFromZeroInTheDriver) {
    for (const Session &session : kSessions) {
        EXPECT_EQ(adp_add_port_mirror(kSource, kDestination, 3, session.caller), 0);
        EXPECT_EQ(adp_del_port_mirror(kSource, kDestination, 0, session.caller), 0);
        EXPECT_EQ(adp_set_flow_mirror(kDestination, session.caller), 0);
        EXPECT_EQ(adp_set_mirror_disable(session.caller, 91, 92, 7), 0);
        EXPECT_EQ(adp_check_set_mirror_disable(session.caller, 91, 92, 7), 0);
        const std::string number = std::to_string(session.driver);
        EXPECT_THAT(driver().take(),
                    ElementsAre(port_line(4, session.driver, 29, 6), port_line(4, session.driver, 29, 0),
                                flow_line(session.driver, 29),
                                "user_set_mirror_disable(unit=0, zero=0, session=" + number + ", disable=7)",
                                "user_check_set_mirror_disable(unit=0, zero=0, session=" + number + ", disable=7)"));
    }
}

TEST_F(Mirror, SourceAndDestinationAreTranslatedEachForItself) {
    EXPECT_EQ(adp_add_port_mirror(kDestination, kSource, 1, 1), 0);
    EXPECT_EQ(adp_add_port_mirror(0, 0, 1, 1), 0);  // the CPU port has a row too
    EXPECT_EQ(adp_del_port_mirror(3, 3, 0, 1), 0);
    EXPECT_EQ(adp_set_flow_mirror(0, 1), 0);
    EXPECT_THAT(driver().trace(),
                ElementsAre(port_line(29, 0, 4, 2), port_line(0, 0, 0, 2), port_line(6, 0, 6, 0), flow_line(0, 0)));
}

TEST_F(Mirror, InterfacesWithoutAPortArePassedOnAsMinusOne) {
    for (const uint32_t intf : kNoPorts) {
        EXPECT_EQ(adp_add_port_mirror(intf, kDestination, 1, 1), 0);
        EXPECT_EQ(adp_add_port_mirror(kSource, intf, 2, 1), 0);
        EXPECT_EQ(adp_del_port_mirror(intf, kDestination, 0, 1), 0);
        EXPECT_EQ(adp_del_port_mirror(intf, intf, 0, 1), 0);
        EXPECT_EQ(adp_set_flow_mirror(intf, 1), 0);
        EXPECT_THAT(driver().take(), ElementsAre(port_line(-1, 0, 29, 2), port_line(4, 0, -1, 4),
                                                 port_line(-1, 0, 29, 0), port_line(-1, 0, -1, 0), flow_line(0, -1)))
            << intf;
    }
}

TEST_F(Mirror, BeforeTheMapExistsPortsAreMinusOne) {
    library_test::drop_map();
    tables_ = library_test::table_bytes();
    EXPECT_EQ(adp_add_port_mirror(kSource, 0, 1, 1), 0);
    EXPECT_EQ(adp_set_flow_mirror(0, 1), 0);
    EXPECT_THAT(driver().trace(), ElementsAre(port_line(-1, 0, -1, 2), flow_line(0, -1)));
}

TEST_F(Mirror, ResultsAreTheDrivers) {
    for (const int32_t result : kResults) {
        driver().on("user_mirror_port_set").returns(result);
        driver().on("user_set_flow_mirror").returns(result);
        driver().on("user_set_mirror_disable").returns(result);
        driver().on("user_check_set_mirror_disable").returns(result);
        EXPECT_EQ(adp_add_port_mirror(kSource, kDestination, 1, 1), result);
        EXPECT_EQ(adp_add_port_mirror(ADP_AGG_INTF(1), kDestination, 1, 1), result);
        EXPECT_EQ(adp_del_port_mirror(kSource, kDestination, 0, 1), result);
        EXPECT_EQ(adp_set_flow_mirror(kDestination, 1), result);
        EXPECT_EQ(adp_set_mirror_disable(1, 0, 0, 0), result);
        EXPECT_EQ(adp_check_set_mirror_disable(1, 0, 0, 0), result);
    }
}

/** The two calls that pass on a word, which may be an address. */
TEST_F(Mirror, DisableValuesArePassedOnWhole) {
    for (const char *name : {"user_set_mirror_disable", "user_check_set_mirror_disable"}) {
        uintptr_t seen = 0;
        driver().on(name).does([&seen](recording::Arguments &arguments) {
            seen = arguments.word("disable");
            return 0;
        });
        const auto call =
            name == std::string("user_set_mirror_disable") ? adp_set_mirror_disable : adp_check_set_mirror_disable;
        for (const uintptr_t value : {uintptr_t{0}, UINTPTR_MAX, UINTPTR_MAX - 1}) {
            seen = 1;
            EXPECT_EQ(call(2, 3, 4, value), 0);
            EXPECT_EQ(seen, value) << name;
        }
        EXPECT_EQ(driver().count(name), 3u);
    }
    EXPECT_EQ(driver().count(), 6u);
}

}  // namespace
