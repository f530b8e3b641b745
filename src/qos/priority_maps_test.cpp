// The chip's maps of 802.1p priorities and DSCPs, row by row.
#include "tests/support/port_calls.h"

namespace {

using library_test::table_bytes;
using port_calls::kFailures;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::ValuesIn;

using Trace = std::vector<std::string>;

constexpr uint32_t kDot1p = 0;
constexpr uint32_t kDscp = 1;
constexpr uint32_t kNone = 2;
constexpr uint32_t kUnknownTypes[] = {3, 7, 0x100, 0x101, 0x80000000, 0xFFFFFFFF};
constexpr uint32_t kDefaultQueues[] = {0, 0, 1, 1, 2, 2, 3, 3};

/** The callers' maps, with a value in every byte. */
struct Maps {
    adp_dot1p_map_entry_t dot1p[ADP_PRIORITIES];
    adp_dscp_map_entry_t dscp[ADP_DSCP_COUNT];
};

Maps maps;

void fill_maps() {
    for (uint32_t priority = 0; priority < ADP_PRIORITIES; ++priority) {
        maps.dot1p[priority] = {0xFFFFFFFF - priority, 0x55555555};
    }
    for (uint32_t dscp = 0; dscp < ADP_DSCP_COUNT; ++dscp) {
        maps.dscp[dscp] = {static_cast<uint8_t>(0xFF - dscp), static_cast<uint8_t>(0x80 + dscp), 0x55};
    }
}

std::string map_bytes() {
    return {reinterpret_cast<const char *>(&maps), sizeof maps};
}

std::string cosq_mapping(const char *what, uint32_t priority, const std::string &rest) {
    return "user_cosq_mapping_" + std::string(what) + "(unit=0, zero=0, priority=" + std::to_string(priority) + rest +
           ")";
}

std::string dscp_map(const char *what, int64_t dscp, const std::string &rest) {
    return "user_port_dscp_map_" + std::string(what) + "(unit=0, zero=0, port=-1, dscp=" + std::to_string(dscp) + rest +
           ")";
}

/** A call that makes a driver call for each row of a map. */
struct MapCall {
    const char *name;
    adp_status_t (*run)(uint32_t type);
    uint32_t type;
    uint32_t rows;
    std::string (*line)(uint32_t row);
};

void PrintTo(const MapCall &call, std::ostream *out) {
    *out << call.name;
}

const std::vector<MapCall> kMapCalls = {
    {"CreateDot1p", [](uint32_t type) { return adp_create_dot1p_map(type, maps.dot1p); }, kDot1p, ADP_PRIORITIES,
     [](uint32_t row) { return cosq_mapping("set", row, ", queue=" + std::to_string(0xFFFFFFFF - row)); }},
    {"GetDot1p", [](uint32_t type) { return adp_get_dot1p_map(type, maps.dot1p); }, kDot1p, ADP_PRIORITIES,
     [](uint32_t row) { return cosq_mapping("get", row, ""); }},
    {"DeleteDot1p", adp_delete_dot1p_map, kDot1p, ADP_PRIORITIES,
     [](uint32_t row) { return cosq_mapping("set", row, ", queue=" + std::to_string(kDefaultQueues[row])); }},
    {"CreateDscp", [](uint32_t type) { return adp_create_dscp_map(type, maps.dscp); }, kDscp, ADP_DSCP_COUNT,
     [](uint32_t row) {
         return dscp_map("set", row,
                         ", mapped=" + std::to_string(0xFF - row) + ", priority=" + std::to_string(0x80 + row));
     }},
    {"GetDscp", [](uint32_t type) { return adp_get_dscp_map(type, maps.dscp); }, kDscp, ADP_DSCP_COUNT,
     [](uint32_t row) { return dscp_map("get", row, ""); }},
    {"DeleteDscp", adp_delete_dscp_map, kDscp, ADP_DSCP_COUNT,
     [](uint32_t) { return dscp_map("set", -1, ", mapped=-1, priority=0"); }}};

class PriorityMap : public library_test::LibraryTest, public ::testing::WithParamInterface<MapCall> {
  protected:
    void SetUp() override {
        LibraryTest::SetUp();
        fill_maps();
    }

    static Trace first_lines(uint32_t rows) {
        Trace lines;
        for (uint32_t row = 0; row < rows; ++row) {
            lines.push_back(GetParam().line(row));
        }
        return lines;
    }
};

TEST_P(PriorityMap, OfItsOwnTypeMakesACallForEachRowInAscendingOrder) {
    const std::string before = map_bytes();
    EXPECT_EQ(GetParam().run(GetParam().type), 0);
    EXPECT_THAT(driver().trace(), ElementsAreArray(first_lines(GetParam().rows)));
    EXPECT_EQ(map_bytes(), before);
}

TEST_P(PriorityMap, OfTypeTwoIsAcceptedAndMakesNoCall) {
    const std::string before = map_bytes();
    EXPECT_EQ(GetParam().run(kNone), 0);
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_EQ(map_bytes(), before);
}

TEST_P(PriorityMap, OfAnyOtherTypeIsRefused) {
    const std::string before = map_bytes();
    EXPECT_EQ(GetParam().run(GetParam().type == kDot1p ? kDscp : kDot1p), 101);
    for (const uint32_t type : kUnknownTypes) {
        EXPECT_EQ(GetParam().run(type), 101) << type;
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_EQ(map_bytes(), before);
}

TEST_P(PriorityMap, StopsAtTheFirstFailure) {
    const std::string before = table_bytes();
    const std::string maps_before = map_bytes();
    for (uint32_t failing = 0; failing < GetParam().rows; ++failing) {
        for (const int32_t failure : kFailures) {
            driver().fail_call(failing, failure);
            EXPECT_EQ(GetParam().run(GetParam().type), 102) << failing;
            EXPECT_THAT(driver().take(), ElementsAreArray(first_lines(failing + 1)));
        }
    }
    EXPECT_EQ(table_bytes(), before);
    EXPECT_EQ(map_bytes(), maps_before);
}

INSTANTIATE_TEST_SUITE_P(By, PriorityMap, ValuesIn(kMapCalls),
                         [](const auto &row) { return std::string(row.param.name); });

class MapRead : public library_test::LibraryTest {
  protected:
    void SetUp() override {
        LibraryTest::SetUp();
        fill_maps();
        driver().on("user_cosq_mapping_get").does([](recording::Arguments &arguments) {
            *static_cast<uint32_t *>(arguments.pointer("queue")) = read_queue(arguments.u32("priority"));
            return 0;
        });
        driver().on("user_port_dscp_map_get").does([](recording::Arguments &arguments) {
            const uint32_t dscp = arguments.u32("dscp");
            *static_cast<uint8_t *>(arguments.pointer("mapped")) = read_mapped(dscp);
            *static_cast<uint8_t *>(arguments.pointer("priority")) = read_priority(dscp);
            return 0;
        });
    }

    static uint32_t read_queue(uint32_t priority) { return 0x80000000 + priority; }
    static uint8_t read_mapped(uint32_t dscp) { return static_cast<uint8_t>(dscp + 1); }
    static uint8_t read_priority(uint32_t dscp) { return static_cast<uint8_t>(0xC0 - dscp); }

    /** The maps as passed in, the first rows replaced by what the driver reads. */
    static std::string expected_bytes(uint32_t priorities, uint32_t dscps) {
        fill_maps();
        for (uint32_t priority = 0; priority < priorities; ++priority) {
            maps.dot1p[priority].queue = read_queue(priority);
        }
        for (uint32_t dscp = 0; dscp < dscps; ++dscp) {
            maps.dscp[dscp].mapped = read_mapped(dscp);
            maps.dscp[dscp].priority = read_priority(dscp);
        }
        return map_bytes();
    }
};

TEST_F(MapRead, FillsQueuesAndLeavesTheUnusedWordsAlone) {
    EXPECT_EQ(adp_get_dot1p_map(kDot1p, maps.dot1p), 0);
    const std::string read = map_bytes();
    EXPECT_EQ(read, expected_bytes(ADP_PRIORITIES, 0));
}

TEST_F(MapRead, FillsCodePointsAndPrioritiesAndLeavesTheUnusedBytesAlone) {
    EXPECT_EQ(adp_get_dscp_map(kDscp, maps.dscp), 0);
    const std::string read = map_bytes();
    EXPECT_EQ(read, expected_bytes(0, ADP_DSCP_COUNT));
}

TEST_F(MapRead, LeavesTheRowsFromTheFailingOneOnAlone) {
    for (uint32_t failing = 0; failing < ADP_PRIORITIES; ++failing) {
        fill_maps();
        driver().fail_call(failing);
        EXPECT_EQ(adp_get_dot1p_map(kDot1p, maps.dot1p), 102);
        const std::string read = map_bytes();
        EXPECT_EQ(read, expected_bytes(failing, 0)) << failing;
    }
    for (uint32_t failing = 0; failing < ADP_DSCP_COUNT; ++failing) {
        fill_maps();
        driver().fail_call(failing);
        EXPECT_EQ(adp_get_dscp_map(kDscp, maps.dscp), 102);
        const std::string read = map_bytes();
        EXPECT_EQ(read, expected_bytes(0, failing)) << failing;
    }
}

class MapWrite : public library_test::LibraryTest {};

TEST_F(MapWrite, ReadsEightPairsOfWordsOrSixtyFourTriplesOfBytes) {
    const uint32_t pairs[2 * ADP_PRIORITIES] = {7, 99, 6, 99, 5, 99, 4, 99, 3, 99, 2, 99, 1, 99, 0, 99};
    adp_dot1p_map_entry_t dot1p[ADP_PRIORITIES];
    static_assert(sizeof dot1p == sizeof pairs);
    std::memcpy(dot1p, pairs, sizeof pairs);
    EXPECT_EQ(adp_create_dot1p_map(kDot1p, dot1p), 0);
    EXPECT_EQ(driver().trace().front(), "user_cosq_mapping_set(unit=0, zero=0, priority=0, queue=7)");
    EXPECT_EQ(driver().take().back(), "user_cosq_mapping_set(unit=0, zero=0, priority=7, queue=0)");

    constexpr size_t kLastTriple = size_t{3} * 63;
    uint8_t triples[kLastTriple + 3] = {11, 12, 13, 21, 22, 23};
    triples[kLastTriple] = 255;
    triples[kLastTriple + 1] = 128;
    adp_dscp_map_entry_t dscp[ADP_DSCP_COUNT];
    static_assert(sizeof dscp == sizeof triples);
    std::memcpy(dscp, triples, sizeof triples);
    EXPECT_EQ(adp_create_dscp_map(kDscp, dscp), 0);
    ASSERT_THAT(driver().trace(), SizeIs(64));
    EXPECT_EQ(driver().trace()[0], dscp_map("set", 0, ", mapped=11, priority=12"));
    EXPECT_EQ(driver().trace()[1], dscp_map("set", 1, ", mapped=21, priority=22"));
    EXPECT_EQ(driver().trace()[63], dscp_map("set", 63, ", mapped=255, priority=128"));
}

TEST_F(MapWrite, OfTheDefaultsLeavesTwoPrioritiesToAQueue) {
    EXPECT_EQ(adp_delete_dot1p_map(kDot1p), 0);
    EXPECT_THAT(driver().trace(), ElementsAre("user_cosq_mapping_set(unit=0, zero=0, priority=0, queue=0)",
                                              "user_cosq_mapping_set(unit=0, zero=0, priority=1, queue=0)",
                                              "user_cosq_mapping_set(unit=0, zero=0, priority=2, queue=1)",
                                              "user_cosq_mapping_set(unit=0, zero=0, priority=3, queue=1)",
                                              "user_cosq_mapping_set(unit=0, zero=0, priority=4, queue=2)",
                                              "user_cosq_mapping_set(unit=0, zero=0, priority=5, queue=2)",
                                              "user_cosq_mapping_set(unit=0, zero=0, priority=6, queue=3)",
                                              "user_cosq_mapping_set(unit=0, zero=0, priority=7, queue=3)"));
}

TEST_F(MapWrite, OfTheDefaultDscpMapIsOneForEveryCodePointSixtyFourTimes) {
    EXPECT_EQ(adp_delete_dscp_map(kDscp), 0);
    EXPECT_THAT(driver().trace(), SizeIs(64));
    EXPECT_THAT(driver().trace(),
                Each("user_port_dscp_map_set(unit=0, zero=0, port=-1, dscp=-1, mapped=-1, priority=0)"));
}

class DscpRow : public library_test::LibraryTest {};

TEST_F(DscpRow, IsSetOnAllPortsWhateverTheFirstArgument) {
    EXPECT_EQ(adp_port_dscp_map_set(1, 46, 10, 5), 0);
    EXPECT_EQ(adp_port_dscp_map_set(0xFFFFFFFF, -1, INT32_MIN, 0xFFFFFFFF), 0);
    EXPECT_THAT(driver().trace(), ElementsAre(dscp_map("set", 46, ", mapped=10, priority=5"),
                                              dscp_map("set", -1, ", mapped=-2147483648, priority=4294967295")));
}

TEST_F(DscpRow, IsReadFromAllPortsIntoTwoBytes) {
    driver().on("user_port_dscp_map_get").sets("mapped", 0xFEu).sets("priority", 0x81u);
    uint8_t read[4] = {1, 2, 3, 4};
    EXPECT_EQ(adp_port_dscp_map_get(0xFFFFFFFF, -1, &read[0], &read[2]), 0);
    EXPECT_THAT(read, ElementsAre(0xFE, 2, 0x81, 4));
    EXPECT_EQ(adp_port_dscp_map_get(0, 63, &read[0], &read[2]), 0);
    EXPECT_THAT(driver().trace(), ElementsAre(dscp_map("get", -1, ""), dscp_map("get", 63, "")));
}

TEST_F(DscpRow, ReturnsTheDriversResult) {
    uint8_t mapped = 1;
    uint8_t priority = 2;
    for (const int32_t failure : kFailures) {
        driver().fail_every("user_port_dscp_map_set", failure);
        driver().fail_every("user_port_dscp_map_get", failure);
        EXPECT_EQ(adp_port_dscp_map_set(0, 1, 2, 3), failure);
        EXPECT_EQ(adp_port_dscp_map_get(0, 1, &mapped, &priority), failure);
    }
    EXPECT_EQ(mapped, 1);
    EXPECT_EQ(priority, 2);
}

}  // namespace
