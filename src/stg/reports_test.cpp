// The calls that report a failure of their one driver call: which results they report, on which stream, in which words.
#include <cstring>

#include "stg/testing/support.h"

namespace {

using stg_test::Outcome;
using stg_test::reported_by;
using stg_test::table_bytes;
using ::testing::ElementsAre;

constexpr int32_t kStg = -5;
constexpr adp_word_t kHandle = 0xFEDCBA98;
constexpr uint32_t kChipCount = 7;
constexpr uint8_t kUntouched = 0xAA;

/** Where the calls' outputs go. */
struct Outputs {
    uint32_t number;
    int32_t groups[2];
    uint16_t vlans[2];
    adp_word_t list;
    int32_t count;
} outputs;

bool outputs_are_untouched() {
    const auto *bytes = reinterpret_cast<const uint8_t *>(&outputs);
    return std::all_of(bytes, bytes + sizeof outputs, [](uint8_t byte) { return byte == kUntouched; });
}

struct Reporting {
    const char *name;
    int32_t (*run)();
    const char *driver_call;
    /** RESULT stands for the driver's result, LINE for the source line. */
    const char *report;
    bool is_positive_a_failure = false;
    /** For the calls that return the driver's count rather than its result. */
    bool returns_count = false;
};

void PrintTo(const Reporting &call, std::ostream *out) {
    *out << call.name;
}

class StgReport : public stg_test::StgTest, public ::testing::WithParamInterface<Reporting> {
  protected:
    void SetUp() override {
        StgTest::SetUp();
        std::memset(&outputs, kUntouched, sizeof outputs);
    }

    static std::string driver_call_name() {
        const std::string line = GetParam().driver_call;
        return line.substr(0, line.find('('));
    }

    static std::string report_of(int32_t result) {
        const std::string placeholder = "RESULT";
        std::string text = GetParam().report;
        const size_t at = text.find(placeholder);
        return at == std::string::npos ? text : text.replace(at, placeholder.size(), std::to_string(result));
    }

    static std::vector<int32_t> results(bool failures) {
        std::vector<int32_t> all = failures ? std::vector<int32_t>{-1, -77, INT32_MIN} : std::vector<int32_t>{0};
        if (failures == GetParam().is_positive_a_failure) {
            all.insert(all.end(), {1, 77, INT32_MAX});
        }
        return all;
    }
};

TEST_P(StgReport, IsPrintedForEachFailureAndTheOutputsStayAsTheyWere) {
    set_map({{100, 5}});
    const std::string before = table_bytes();
    for (const int32_t result : results(true)) {
        driver().fail_every(driver_call_name(), result);
        EXPECT_EQ(reported_by(GetParam().run), (Outcome{result, report_of(result), ""}));
        EXPECT_THAT(driver().take(), ElementsAre(GetParam().driver_call));
        EXPECT_TRUE(outputs_are_untouched());
    }
    EXPECT_EQ(table_bytes(), before);
}

TEST_P(StgReport, IsNotPrintedOtherwise) {
    set_map({{100, 5}});
    const std::string before = table_bytes();
    for (const int32_t result : results(false)) {
        driver().on(driver_call_name()).returns(result);
        if (GetParam().returns_count) {
            driver().on(driver_call_name()).sets("count", kChipCount);
        }
        const int32_t expected = GetParam().returns_count ? static_cast<int32_t>(kChipCount) : result;
        EXPECT_EQ(library_test::outcome_of(GetParam().run), (Outcome{expected, "", ""}));
        EXPECT_THAT(driver().take(), ElementsAre(GetParam().driver_call));
    }
    EXPECT_EQ(table_bytes(), before);
}

INSTANTIATE_TEST_SUITE_P(
    Of, StgReport,
    ::testing::Values(Reporting{"StpGet", [] { return adp_stg_stp_get(kStg, 26, &outputs.number); },
                                "user_stg_stp_get(unit=0, zero=0, stg=-5, port=29)",
                                "adp_stg_stp_get LINE: get max support stg number failed. ret=RESULT\n"},
                      Reporting{"RingGet", [] { return adp_get_port_erps_state(26, &outputs.number); },
                                "user_stg_stp_get(unit=0, zero=0, stg=0, port=29)",
                                "adp_get_port_erps_state LINE: get max support stg number failed. ret=RESULT\n"},
                      Reporting{"MaxSupport", [] { return adp_get_max_support_stg(&outputs.number); },
                                "user_stg_max_support_count_get(unit=0, zero=0)",
                                "adp_get_max_support_stg LINE: get max support stg number failed\n"},
                      Reporting{"L2CacheSize", [] { return adp_get_l2_cache_size(&outputs.number); },
                                "user_l2_cache_size_get(unit=0, zero=0)",
                                "adp_get_l2_cache_size LINE: get l2 cache size failed. ret=RESULT\n", true},
                      Reporting{"DefaultGet", [] { return adp_stg_default_get(&outputs.number); },
                                "user_stg_default_get(unit=0, zero=0)",
                                "adp_stg_default_get LINE: stg vlan list failed. ret=RESULT\n", true},
                      Reporting{"MaxStg", adp_get_max_stg, "user_stg_stg_count_get(unit=0, zero=0)",
                                "adp_get_max_stg LINE fail.ret=RESULT\n", false, true},
                      Reporting{"MaxVlan", [] { return adp_get_stg_max_vlan(kStg); },
                                "user_stg_vlan_count_get(unit=0, zero=0, stg=-5)",
                                "adp_get_stg_max_vlan LINE fail.stg:-5 ret=RESULT\n", false, true},
                      Reporting{"GroupChunk", [] { return adp_get_stg_each_time_list(outputs.groups, 0x10003, 2); },
                                "user_stg_each_time_list(unit=0, zero=0, chunk_index=65539, chunk_size=2)",
                                "adp_get_stg_each_time_list LINE fail.ret=RESULT\n"},
                      Reporting{"VlanChunk",
                                [] { return adp_get_stg_vlan_each_time_list(kStg, outputs.vlans, 0x10003, 2); },
                                "user_stg_vlan_each_time_list(unit=0, zero=0, stg=-5, chunk_index=65539, chunk_size=2)",
                                "adp_get_stg_vlan_each_time_list LINE fail.stg -5 ret=RESULT\n"},
                      Reporting{"VlanList", [] { return adp_stg_vlan_list(kStg, &outputs.list, &outputs.count); },
                                "user_stg_vlan_list(unit=0, zero=0, stg=-5)",
                                "adp_stg_vlan_list LINE: stg vlan list failed. ret=RESULT\n", true},
                      Reporting{"VlanListDestroy", [] { return adp_stg_vlan_list_destroy(kHandle, -2); },
                                "user_stg_vlan_list_destroy(unit=0, zero=0, list=4275878552, count=-2)",
                                "adp_stg_vlan_list_destroy LINE: stg vlan list destroy failed. ret=RESULT\n", true},
                      Reporting{"List", [] { return adp_stg_list(&outputs.list, &outputs.count); },
                                "user_stg_list(unit=0, zero=0)",
                                "adp_stg_list LINE: stg vlan list destroy failed. ret=RESULT\n", true},
                      Reporting{"ListDestroy", [] { return adp_stg_list_destroy(kHandle, -2); },
                                "user_stg_list_destroy(unit=0, zero=0, list=4275878552, count=-2)",
                                "adp_stg_list_destroy LINE: stg vlan list destroy failed. ret=RESULT\n", true}),
    [](const auto &row) { return std::string(row.param.name); });

}  // namespace
