// Port isolation: written through all configured members of a group, read through its management interface.
#include "tests/support/library_test.h"

namespace {

using library_test::table_bytes;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr uint32_t kGroup = 2;
constexpr uint32_t kAgg = ADP_AGG_INTF(kGroup);
constexpr uint32_t kNotWritten = 0xAAAAAAAA;
constexpr int32_t kFailures[] = {-1, 1, 77, INT32_MIN};
constexpr uint32_t kOtherTypes[] = {0x20000001, 0x70000002, 0xFFFFFFFF};
constexpr uint32_t kBadGroups[] = {0x10000000, 0x10000009, 0x1FFFFFFF};

/** The two names of each call; both behave alike. */
struct Names {
    const char *name;
    adp_status_t (*set)(adp_intf_t, uint32_t, uint32_t);
    adp_status_t (*get)(adp_intf_t, uint32_t[2]);
};

class Isolation : public library_test::LibraryTest, public ::testing::WithParamInterface<Names> {
  protected:
    static adp_status_t set(uint32_t intf, uint32_t word0, uint32_t word1 = 0) {
        return GetParam().set(intf, word0, word1);
    }
    adp_status_t get(uint32_t intf) {
        map_[0] = map_[1] = kNotWritten;
        return GetParam().get(intf, map_);
    }

    static std::vector<std::string> writes(const std::vector<int> &ports, const std::string &egress) {
        std::vector<std::string> lines;
        for (const int port : ports) {
            lines.push_back("user_port_egress_set(unit=0, zero=0, port=" + std::to_string(port) +
                            ", module=0, egress={" + egress + "})");
        }
        return lines;
    }
    static std::string read_of(int port) {
        return "user_port_egress_get(unit=0, zero=0, port=" + std::to_string(port) + ", module=0)";
    }

    /** The egress set that the driver reads. */
    static void script_read(std::initializer_list<uint32_t> words) {
        driver().on("user_port_egress_get").sets("egress", words);
    }

    /** A map of 60 user ports, so that both words of the callers' bitmaps name some. */
    static void make_large_map() { library_test::make_default_map(60); }

    uint32_t map_[2] = {kNotWritten, kNotWritten};
};

TEST_P(Isolation, OfAPortIsWrittenAsPhysicalPorts) {
    EXPECT_EQ(set(3, 1u << 1 | 1u << 2), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(writes({6}, "4,5")));
    EXPECT_EQ(set(26, 0), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(writes({29}, "")));
}

TEST_P(Isolation, BitZeroIsTheCpuPort) {
    EXPECT_EQ(set(3, 1), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(writes({6}, "0")));
}

TEST_P(Isolation, PortsBeyondTheMapAreDroppedFromTheSetButPassedOnAsThePort) {
    EXPECT_EQ(set(3, 0xF8000000 | 1u << 26, 0xFFFFFFFF), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(writes({6}, "29")));
    EXPECT_EQ(set(27, 1u << 26), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(writes({-1}, "29")));
}

TEST_P(Isolation, TheSecondWordNamesPorts32AndUp) {
    make_large_map();
    EXPECT_EQ(set(60, 1u << 31, 1u << 0 | 1u << 8 | 1u << 28 | 1u << 29), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(writes({63}, "34,35,43,63")));
}

TEST_P(Isolation, RowsOutsideTheSetAreDropped) {
    ASSERT_EQ(adp_add_phy_port(1, 0, 0, 255, 0), 0);
    ASSERT_EQ(adp_add_phy_port(2, 0, 0, 256, 0), 0);
    ASSERT_EQ(adp_add_phy_port(4, 0, 0, 0x7FFFFFFF, 0), 0);
    ASSERT_EQ(adp_add_phy_port(5, 0, 0, 0xFFFFFFFF, 0), 0);
    ASSERT_EQ(adp_add_phy_port(6, 0, 0, 0x80000000, 0), 0);
    EXPECT_EQ(set(3, 0x7E), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(writes({6}, "6,255")));
}

TEST_P(Isolation, TwoRowsOfOnePortAreOneBit) {
    ASSERT_EQ(adp_add_phy_port(7, 0, 0, 4, 0), 0);
    EXPECT_EQ(set(3, 1u << 1 | 1u << 7), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(writes({6}, "4")));
    script_read({1u << 4});
    EXPECT_EQ(get(3), 0);
    EXPECT_THAT(map_, ElementsAre(1u << 1, 0u));  // the lower row is found
}

TEST_P(Isolation, AnyFailureOnAPortIs102) {
    for (const int32_t failure : kFailures) {
        driver().fail_every("user_port_egress_set", failure);
        EXPECT_EQ(set(3, 2), 102);
    }
    EXPECT_EQ(driver().count(), std::size(kFailures));
}

TEST_P(Isolation, OfAGroupIsWrittenToItsConfiguredMembersInOrder) {
    set_active(kGroup, {20, 21});
    set_configured(kGroup, 1u << 26 | 1u << 1 | 1u << 8);
    EXPECT_EQ(set(kAgg, 6), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(writes({4, 11, 29}, "4,5")));
}

TEST_P(Isolation, OfAGroupWithoutConfiguredMembersIsWrittenToItsActiveOnes) {
    for (const std::vector<int> &ports : {std::vector<int>{29},
                                          {29, 4, 7},
                                          {4, 5, 6, 7, 8, 9, 10, 11},
                                          {4, 5, 6, 7, 8, 9, 10, 11, 12},
                                          {14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4}}) {
        set_active(kGroup, {ports.begin(), ports.end()});
        EXPECT_EQ(set(kAgg, 6), 0);
        EXPECT_THAT(driver().take(), ElementsAreArray(writes(ports, "4,5")));
    }
}

TEST_P(Isolation, OfAGroupSkipsEmptySlotsOnly) {
    set_active(kGroup, {4, 0, 200, 6});
    EXPECT_EQ(set(kAgg, 6), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(writes({4, -1, 6}, "4,5")));
    set_configured(kGroup, 1u << 0 | 1u << 9);
    EXPECT_EQ(set(kAgg, 6), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(writes({12}, "4,5")));
}

TEST_P(Isolation, OfAGroupWithoutAListWritesNothing) {
    EXPECT_EQ(set(kAgg, 6), 0);
    set_active(kGroup, {4});
    set_configured(kGroup, 0, 1);
    EXPECT_EQ(set(kAgg, 6), 0);
    set_configured(kGroup, 0x07FFFFFF);  // one more than a list has slots
    EXPECT_EQ(set(kAgg, 6), 0);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_P(Isolation, OfAGroupStopsAtTheFirstFailure) {
    const std::vector<int> ports = {4, 5, 29};
    set_configured(kGroup, 1u << 1 | 1u << 2 | 1u << 26);
    const std::string before = table_bytes();
    for (size_t failing = 0; failing < ports.size(); ++failing) {
        for (const int32_t failure : kFailures) {
            driver().fail_call(failing, failure);
            EXPECT_EQ(set(kAgg, 6), 102);
            EXPECT_THAT(driver().take(), ElementsAreArray(writes(
                                             {ports.begin(), ports.begin() + static_cast<long>(failing) + 1}, "4,5")));
        }
    }
    EXPECT_EQ(table_bytes(), before);
}

TEST_P(Isolation, OfAPortIsReadAsUserPorts) {
    script_read({1u << 4 | 1u << 29 | 1u << 30 | 1u << 1, 1, 0, 0, 0, 0, 0, 1u << 31});
    EXPECT_EQ(get(3), 0);
    EXPECT_THAT(map_, ElementsAre(1u << 1 | 1u << 26, 0u));
    EXPECT_THAT(driver().take(), ElementsAre(read_of(6)));
    EXPECT_EQ(get(27), 0);
    EXPECT_THAT(driver().take(), ElementsAre(read_of(-1)));
}

TEST_P(Isolation, TheCpuPortIsReadAsBitZero) {
    script_read({1});
    EXPECT_EQ(get(1), 0);
    EXPECT_THAT(map_, ElementsAre(1u, 0u));
}

TEST_P(Isolation, PortsFrom32AreReadIntoTheSecondWord) {
    make_large_map();
    script_read({0, 1u << 2 | 1u << 3 | 1u << 31});
    EXPECT_EQ(get(60), 0);
    EXPECT_THAT(map_, ElementsAre(1u << 31, 1u << 0 | 1u << 28));
}

TEST_P(Isolation, InterfacesFrom64AreNotReported) {
    library_test::make_default_map(70);
    script_read({0, 0, 1u << 2 | 1u << 3});
    EXPECT_EQ(get(1), 0);
    EXPECT_THAT(map_, ElementsAre(0u, 1u << 31));
}

TEST_P(Isolation, OfAGroupIsReadFromItsManagementInterfaceAlone) {
    set_active(kGroup, {20});
    set_configured(kGroup, 1u << 8);
    agg_manage_intf[kGroup - 1] = 26;
    script_read({1u << 5});
    EXPECT_EQ(get(kAgg), 0);
    EXPECT_THAT(map_, ElementsAre(1u << 2, 0u));
    EXPECT_THAT(driver().take(), ElementsAre(read_of(29)));
    agg_manage_intf[kGroup - 1] = 0;  // no fallback: interface 0 is the CPU port's
    EXPECT_EQ(get(kAgg), 0);
    agg_manage_intf[kGroup - 1] = 0xFFFFFFFF;
    EXPECT_EQ(get(kAgg), 0);
    EXPECT_THAT(driver().take(), ElementsAre(read_of(0), read_of(-1)));
}

TEST_P(Isolation, IsTranslatedEvenWhenTheDriverFails) {
    agg_manage_intf[kGroup - 1] = 3;
    for (const int32_t failure : kFailures) {
        driver().on("user_port_egress_get").sets("egress", {1u << 5, 0}).returns(failure);
        for (const uint32_t intf : {3u, kAgg}) {
            EXPECT_EQ(get(intf), 102);
            EXPECT_THAT(map_, ElementsAre(1u << 2, 0u));
        }
    }
}

TEST_P(Isolation, ReadsAsEmptyWhenAFailingDriverWritesNothing) {
    driver().fail_every("user_port_egress_get");
    EXPECT_EQ(get(3), 102);
    EXPECT_THAT(map_, ElementsAre(0u, 0u));
}

TEST_P(Isolation, OtherTypesAreRefusedWithTheOutputUntouched) {
    for (const uint32_t intf : kOtherTypes) {
        EXPECT_EQ(set(intf, 6), 201) << intf;
        EXPECT_EQ(get(intf), 201) << intf;
        EXPECT_THAT(map_, ElementsAre(kNotWritten, kNotWritten));
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_P(Isolation, GroupsOutsideOneToEightAreRefused) {
    for (const uint32_t group : kBadGroups) {
        EXPECT_EQ(set(group, 6), -1) << group;
        EXPECT_EQ(get(group), -1) << group;
        EXPECT_THAT(map_, ElementsAre(0u, 0u));
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_P(Isolation, WithoutAMapEverySetIsEmpty) {
    library_test::drop_map();
    EXPECT_EQ(set(1, 0xFFFFFFFF, 0xFFFFFFFF), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(writes({-1}, "")));
    script_read({0xFFFFFFFF});
    EXPECT_EQ(get(1), 0);
    EXPECT_THAT(map_, ElementsAre(0u, 0u));
}

INSTANTIATE_TEST_SUITE_P(Of, Isolation,
                         ::testing::Values(Names{"Hal", hal_set_port_isolate, hal_get_port_isolate},
                                           Names{"Adp", adp_set_port_isolate, adp_get_port_isolatestatus}),
                         [](const auto &row) { return std::string(row.param.name); });

}  // namespace
