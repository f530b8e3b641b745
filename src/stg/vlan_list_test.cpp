// A group's VLANs, which are read from the chip in chunks.
#include <initializer_list>

#include "stg/testing/support.h"

namespace {

using agg_test::Trace;
using stg_test::calls;
using stg_test::Outcome;
using stg_test::table_bytes;
using ::testing::ElementsAre;

constexpr uint32_t kGroupChunk = 64;
constexpr uint32_t kVlanChunk = 1024;
constexpr uint16_t kUntouchedVlan = 0xAAAA;

/** A chip with groups 1, 2, 3 ..., one of which has VLANs. */
class StgVlans : public stg_test::StgTest {
  protected:
    void SetUp() override { start(); }

    void start() {
        start_over();
        out_.assign(ADP_VLANS + 1, kUntouchedVlan);
        driver().on("user_stg_stg_count_get").sets("count", groups_);
        driver().on("user_stg_vlan_count_get").sets("count", vlans_);
        driver().on("user_stg_each_time_list").does([this](recording::Arguments &arguments) {
            return fill_chunk<int32_t>(arguments, "groups", groups_, [](uint32_t n) { return n + 1; });
        });
        driver().on("user_stg_vlan_each_time_list").does([this](recording::Arguments &arguments) {
            return fill_chunk<uint16_t>(arguments, "vids", vlans_, vlan_at);
        });
    }

    /** The VLAN at a place of the list: all differ, none is zero, and they are not in order. */
    static uint16_t vlan_at(uint32_t place) { return static_cast<uint16_t>(place * 7 + 3); }

    /** A chip with this many groups, and this many VLANs in each. */
    void chip(uint32_t groups, uint32_t vlans) {
        groups_ = groups;
        vlans_ = vlans;
        start();
    }

    Outcome list(int32_t stg) {
        return stg_test::reported_by([&] { return adp_get_stg_vlan_list(stg, out_.data()); });
    }

    /** Writes all places of the chunk, those after the last number as 0x7777. */
    template <typename T, typename Number>
    static int32_t fill_chunk(recording::Arguments &arguments, const char *name, uint32_t count, Number number) {
        constexpr T kAfterTheLast = 0x7777;
        const uint32_t size = arguments.u32("chunk_size");
        auto *to = static_cast<T *>(arguments.pointer(name));
        for (uint32_t place = 0; place < size; ++place) {
            const uint32_t n = arguments.u32("chunk_index") * size + place;
            to[place] = n < count ? static_cast<T>(number(n)) : kAfterTheLast;
        }
        return 0;
    }

    static std::string chunk(uint32_t index, uint32_t size) {
        return ", chunk_index=" + std::to_string(index) + ", chunk_size=" + std::to_string(size) + ")";
    }

    static std::string group_count() { return "user_stg_stg_count_get(unit=0, zero=0)"; }

    static Trace group_reads(uint32_t chunks) {
        Trace lines = {group_count()};
        for (uint32_t index = 0; index < chunks; ++index) {
            lines.push_back("user_stg_each_time_list(unit=0, zero=0" + chunk(index, kGroupChunk));
        }
        return lines;
    }

    static Trace vlan_reads(int32_t stg, uint32_t chunks) {
        const std::string arguments = "(unit=0, zero=0, stg=" + std::to_string(stg);
        Trace lines = {"user_stg_vlan_count_get" + arguments + ")"};
        for (uint32_t index = 0; index < chunks; ++index) {
            lines.push_back("user_stg_vlan_each_time_list" + arguments + chunk(index, kVlanChunk));
        }
        return lines;
    }

    /** The output when the first @p count places were written, some chunks of them with zeros. */
    static std::vector<uint16_t> written(uint32_t count, std::initializer_list<uint32_t> zero_chunks = {}) {
        std::vector<uint16_t> vlans(ADP_VLANS + 1, kUntouchedVlan);
        for (uint32_t place = 0; place < count; ++place) {
            const bool is_zero = std::count(zero_chunks.begin(), zero_chunks.end(), place / kVlanChunk) > 0;
            vlans[place] = is_zero ? uint16_t{0} : vlan_at(place);
        }
        return vlans;
    }

    uint32_t groups_ = 3;
    uint32_t vlans_ = 2;
    std::vector<uint16_t> out_;
};

TEST_F(StgVlans, AreNotFoundWithoutGroups) {
    const struct {
        uint32_t chip;
        const char *shown;
    } counts[] = {{0, "0"}, {0xFFFFFFFF, "-1"}, {0x80000000, "-2147483648"}};
    for (const auto &[count, shown] : counts) {
        chip(count, 2);
        const std::string text = "adp_get_stg_vlan_list LINE: get STG count failed! STG count=" + std::string(shown);
        EXPECT_EQ(list(0), (Outcome{0, "", text + "\n"}));
        EXPECT_THAT(driver().trace(), ElementsAre(group_count()));
        EXPECT_EQ(out_, written(0));
    }
}

TEST_F(StgVlans, AreNotFoundWhenTheGroupsCannotBeCounted) {
    driver().fail_every("user_stg_stg_count_get", -7);
    EXPECT_EQ(list(1), (Outcome{0, "adp_get_max_stg LINE fail.ret=-7\n",
                                "adp_get_stg_vlan_list LINE: get STG count failed! STG count=-7\n"}));
    EXPECT_THAT(driver().trace(), ElementsAre(group_count()));
    EXPECT_EQ(out_, written(0));
}

TEST_F(StgVlans, AreFoundForTheFirstAndTheLastGroup) {
    for (const uint32_t groups : {1u, 2u, 63u, 64u}) {
        for (const int32_t stg : {1, static_cast<int32_t>(groups)}) {
            chip(groups, 2);
            EXPECT_EQ(list(stg), (Outcome{2, "", ""}));
            EXPECT_EQ(driver().trace(), calls(group_reads(groups / kGroupChunk + 1), vlan_reads(stg, 1)));
            EXPECT_EQ(out_, written(2));
        }
    }
}

TEST_F(StgVlans, AreNotFoundForAGroupUnknownToTheChip) {
    for (const uint32_t groups : {1u, 63u, 64u}) {
        for (const int32_t stg : {0, -1, 65, 0x10001, 0x7777}) {
            chip(groups, 2);
            EXPECT_EQ(list(stg), Outcome{}) << groups << " " << stg;
            EXPECT_EQ(driver().trace(), group_reads(groups / kGroupChunk + 1));
            EXPECT_EQ(out_, written(0));
        }
    }
}

TEST_F(StgVlans, AreNotReadFromAChipWithMoreGroupsThanTheListHolds) {
    for (const uint32_t groups : {65u, 128u, 0x7FFFFFFFu}) {
        chip(groups, 2);
        EXPECT_EQ(list(1), Outcome{}) << groups;
        EXPECT_THAT(driver().trace(), ElementsAre(group_count()));
        EXPECT_EQ(out_, written(0));
    }
}

TEST_F(StgVlans, ComeInChunksOneMoreThanAFullOneNeeds) {
    for (const uint32_t vlans : {1u, 1023u, 1024u, 1025u, 2048u, 4095u, 4096u}) {
        chip(3, vlans);
        EXPECT_EQ(list(2), (Outcome{static_cast<int32_t>(vlans), "", ""}));
        EXPECT_EQ(driver().trace(), calls(group_reads(1), vlan_reads(2, vlans / kVlanChunk + 1)));
        EXPECT_EQ(out_, written(vlans));
    }
}

TEST_F(StgVlans, OfAChunkAreWithTheCallerBeforeTheNextIsRead) {
    chip(2, 2 * kVlanChunk + 1);
    std::vector<size_t> copied;
    driver().on("user_stg_vlan_each_time_list").does([&](recording::Arguments &arguments) {
        copied.push_back(static_cast<size_t>(std::find(out_.begin(), out_.end(), kUntouchedVlan) - out_.begin()));
        return fill_chunk<uint16_t>(arguments, "vids", vlans_, vlan_at);
    });
    EXPECT_EQ(list(2).result, static_cast<int32_t>(vlans_));
    EXPECT_THAT(copied, ElementsAre(0, kVlanChunk, 2 * kVlanChunk));
}

TEST_F(StgVlans, OfAnEmptyGroupAreNotRead) {
    chip(3, 0);
    EXPECT_EQ(list(2), Outcome{});
    EXPECT_EQ(driver().trace(), calls(group_reads(1), vlan_reads(2, 0)));
    EXPECT_EQ(out_, written(0));
}

TEST_F(StgVlans, AreNotReadWhenTheirCountExceedsAllVlans) {
    for (const uint32_t vlans : {4097u, 5120u, 0x7FFFFFFFu}) {
        chip(3, vlans);
        EXPECT_EQ(list(2), Outcome{}) << vlans;
        EXPECT_EQ(driver().trace(), calls(group_reads(1), vlan_reads(2, 0)));
        EXPECT_EQ(out_, written(0));
    }
}

TEST_F(StgVlans, OfANegativeCountReturnTheCountAndReadTheChunksUpToItsQuotient) {
    const struct {
        int32_t count;
        uint32_t chunks;
    } counts[] = {{-1, 1}, {-1023, 1}, {-1024, 0}, {INT32_MIN, 0}};
    for (const auto &[count, chunks] : counts) {
        chip(3, static_cast<uint32_t>(count));
        EXPECT_EQ(list(2), (Outcome{count, "", ""}));
        EXPECT_EQ(driver().trace(), calls(group_reads(1), vlan_reads(2, chunks)));
        EXPECT_EQ(out_, written(0));

        chip(3, 2);
        driver().fail_every("user_stg_vlan_count_get", count);
        const std::string report = "adp_get_stg_max_vlan LINE fail.stg:2 ret=" + std::to_string(count) + "\n";
        EXPECT_EQ(list(2), (Outcome{count, report, ""}));
        EXPECT_EQ(driver().trace(), calls(group_reads(1), vlan_reads(2, chunks)));
        EXPECT_EQ(out_, written(0));
    }
}

TEST_F(StgVlans, OfAGroupWhoseChunkCannotBeReadAreNotFound) {
    const std::string report = "adp_get_stg_each_time_list LINE fail.ret=-3\n";
    chip(64, 2);
    driver().fail_call(1, -3);
    EXPECT_EQ(list(5), (Outcome{0, report, ""}));
    EXPECT_EQ(driver().take(), group_reads(2));
    driver().fail_every("user_stg_each_time_list", -3);
    EXPECT_EQ(list(5), (Outcome{0, report + report, ""}));
    EXPECT_EQ(driver().take(), group_reads(2));
    EXPECT_EQ(out_, written(0));
}

TEST_F(StgVlans, AreFoundWhenOnlyTheChunkAfterTheLastGroupFails) {
    chip(64, 2);
    driver().fail_call(2, -3);
    EXPECT_EQ(list(64), (Outcome{2, "adp_get_stg_each_time_list LINE fail.ret=-3\n", ""}));
    EXPECT_EQ(out_, written(2));
}

TEST_F(StgVlans, OfAChunkThatFailsAreZerosAndTheOthersAreStillRead) {
    constexpr size_t kCallsBefore = 3;
    const std::string report = "adp_get_stg_vlan_each_time_list LINE fail.stg 2 ret=-3\n";
    for (const uint32_t failing : {0u, 1u, 3u, 4u}) {
        chip(3, 4096);
        const std::string before = table_bytes();
        driver().fail_call(kCallsBefore + failing, -3);
        EXPECT_EQ(list(2), (Outcome{4096, report, ""}));
        EXPECT_EQ(driver().trace(), calls(group_reads(1), vlan_reads(2, 5)));
        EXPECT_EQ(out_, written(4096, {failing}));
        EXPECT_EQ(table_bytes(), before);
    }
    chip(3, 1025);
    driver().fail_every("user_stg_vlan_each_time_list", -3);
    EXPECT_EQ(list(2), (Outcome{1025, report + report, ""}));
    EXPECT_EQ(out_, written(1025, {0, 1}));
}

}  // namespace
