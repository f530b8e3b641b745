// The walks of the MAC table: the driver's own words are passed on whole, the unused one is not passed on.
#include "l2/testing/support.h"

namespace {

using namespace l2_test;
using ::testing::ElementsAre;

constexpr adp_word_t kA = kWholeWord;
constexpr adp_word_t kB = kWholeWord - 1;
constexpr adp_word_t kC = kWholeWord - 2;
constexpr adp_word_t kD = kWholeWord - 3;

/** A walk: its call with words a to d, and the driver call with the words that it gets. */
struct Walk {
    const char *name;
    adp_status_t (*run)(adp_word_t a, adp_word_t b, adp_word_t c, adp_word_t d);
    const char *driver_call;
    const char *trace_of_1_to_4;
    std::vector<std::pair<std::string, adp_word_t>> words;
};

class MacWalk : public L2Test, public ::testing::WithParamInterface<Walk> {};

TEST_P(MacWalk, IsOneDriverCall) {
    EXPECT_EQ(GetParam().run(1, 2, 3, 4), 0);
    EXPECT_THAT(driver().trace(), ElementsAre(std::string(GetParam().driver_call) + GetParam().trace_of_1_to_4));
}

TEST_P(MacWalk, PassesItsWordsOnWhole) {
    expect_words(GetParam().driver_call, GetParam().words);
    EXPECT_EQ(GetParam().run(kA, kB, kC, kD), 0);
    EXPECT_EQ(driver().count(GetParam().driver_call), 1u);
}

TEST_P(MacWalk, ReturnsTheDriversResult) {
    expect_results_passed_on(GetParam().driver_call, [] { return GetParam().run(1, 2, 3, 4); });
}

INSTANTIATE_TEST_SUITE_P(Walks, MacWalk,
                         ::testing::Values(Walk{"Table",
                                                adp_traverse_mac_table,
                                                "user_mac_table_show",
                                                "(unit=0, vid=1, option=3, option2=4)",
                                                {{"vid", kA}, {"option", kC}, {"option2", kD}}},
                                           Walk{"Multicast",
                                                adp_traverse_mac_mcast_table,
                                                "user_mac_mcast_table_show",
                                                "(unit=0, vid=1, option=3, option2=4)",
                                                {{"vid", kA}, {"option", kC}, {"option2", kD}}},
                                           Walk{"Bulk",
                                                adp_l2_mactable_fread,
                                                "user_l2_mactable_fread",
                                                "(first=1, second=2, third=3, fourth=4)",
                                                {{"first", kA}, {"second", kB}, {"third", kC}, {"fourth", kD}}},
                                           Walk{"MulticastExistsEx",
                                                adp_is_mcast_addr_exist_by_vlan_ex,
                                                "user_is_mcast_addr_exist_vlan_is",
                                                "(unit=0, vid=1, option=3, option2=4)",
                                                {{"vid", kA}, {"option", kC}, {"option2", kD}}},
                                           Walk{"MulticastExists",
                                                [](adp_word_t a, adp_word_t b, adp_word_t c, adp_word_t d) {
                                                    return adp_is_mcast_addr_exist_by_vlan(
                                                        static_cast<uint32_t>(a), static_cast<uint32_t>(b), c, d);
                                                },
                                                "user_is_mcast_addr_exist_by_vlan",
                                                "(unit=0, vid=1, last_vid=2, option=4)",
                                                {{"vid", kA & 0xFFFF}, {"last_vid", kB & 0xFFFF}, {"option", kD}}}),
                         [](const auto &row) { return std::string(row.param.name); });

}  // namespace
