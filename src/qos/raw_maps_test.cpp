// The calls of the priority maps that pass their arguments on unchanged.
#include "tests/support/port_calls.h"

namespace {

using port_calls::kFailures;
using ::testing::ElementsAre;

/** Words that would change if they were cut to 32 bits on a machine with longer words. */
constexpr uintptr_t word(uintptr_t number) {
    return UINTPTR_MAX - number;
}

class RawMaps : public library_test::LibraryTest {
  protected:
    /** Records the words that a driver call gets under these names. */
    void watch(const char *call, const std::vector<const char *> &names) {
        driver().on(call).does([this, names](recording::Arguments &arguments) {
            words_.clear();
            for (const char *name : names) {
                words_.push_back(arguments.word(name));
            }
            return 0;
        });
    }

    std::vector<uintptr_t> words_;
    uint32_t output_ = port_calls::kNotWritten;
};

TEST_F(RawMaps, WordsOfTheQueueMapArePassedOnWhole) {
    watch("user_qos_pri_queue_map_set", {"unit", "zero", "priority", "queue"});
    EXPECT_EQ(adp_cosq_mapping_set(word(1), word(2), word(3), word(4)), 0);
    EXPECT_THAT(words_, ElementsAre(word(1), word(2), word(3), word(4)));
    watch("user_qos_pri_queue_map_get", {"unit", "zero", "priority"});
    EXPECT_EQ(adp_cosq_mapping_get(word(5), word(6), word(7), &output_), 0);
    EXPECT_THAT(words_, ElementsAre(word(5), word(6), word(7)));
}

TEST_F(RawMaps, WordsOfTheDscpMapArePassedOnWhole) {
    watch("user_qos_dscp_map_set", {"unit", "zero", "dscp", "priority"});
    EXPECT_EQ(adp_dscp_map_set(word(1), word(2), word(3), word(4)), 0);
    EXPECT_THAT(words_, ElementsAre(word(1), word(2), word(3), word(4)));
    watch("user_qos_dscp_map_get", {"unit", "zero", "dscp"});
    EXPECT_EQ(adp_dscp_map_get(word(5), word(6), word(7), &output_), 0);
    EXPECT_THAT(words_, ElementsAre(word(5), word(6), word(7)));
}

TEST_F(RawMaps, WordsOfTheRemapArePassedOnWholeAfterASingleZero) {
    watch("user_qos_pri_remap_set",
          {"unit", "port", "priority", "new_priority", "option", "option2", "option3", "option4"});
    EXPECT_EQ(adp_set_dot1p_pri_remap(word(1), word(2), word(3), word(4), word(5), word(6), word(7), word(8)), 0);
    EXPECT_THAT(words_, ElementsAre(0u, word(1), word(2), word(4), word(5), word(6), word(7), word(8)));
}

TEST_F(RawMaps, NoCallIsAddedAndNoUnit) {
    EXPECT_EQ(adp_cosq_mapping_set(1, 2, 3, 4), 0);
    EXPECT_EQ(adp_cosq_mapping_get(1, 2, 3, &output_), 0);
    EXPECT_EQ(adp_dscp_map_set(1, 2, 3, 4), 0);
    EXPECT_EQ(adp_dscp_map_get(1, 2, 3, &output_), 0);
    EXPECT_EQ(adp_set_dot1p_pri_remap(1, 2, 3, 4, 5, 6, 7, 8), 0);
    EXPECT_THAT(driver().trace(),
                ElementsAre("user_qos_pri_queue_map_set(unit=1, zero=2, priority=3, queue=4)",
                            "user_qos_pri_queue_map_get(unit=1, zero=2, priority=3)",
                            "user_qos_dscp_map_set(unit=1, zero=2, dscp=3, priority=4)",
                            "user_qos_dscp_map_get(unit=1, zero=2, dscp=3)",
                            "user_qos_pri_remap_set(unit=0, port=1, priority=2, new_priority=4, option=5, option2=6, "
                            "option3=7, option4=8)"));
    EXPECT_EQ(output_, port_calls::kNotWritten);
}

TEST_F(RawMaps, OutputsAndResultsAreTheDrivers) {
    driver().on("user_qos_pri_queue_map_get").sets("queue", 0xFFFFFFFEu);
    driver().on("user_qos_dscp_map_get").sets("priority", 0x80000001u).returns(-5);
    EXPECT_EQ(adp_cosq_mapping_get(0, 0, 1, &output_), 0);
    EXPECT_EQ(output_, 0xFFFFFFFEu);
    EXPECT_EQ(adp_dscp_map_get(0, 0, 1, &output_), -5);
    EXPECT_EQ(output_, 0x80000001u);
}

TEST_F(RawMaps, ReturnsTheDriversResult) {
    for (const int32_t failure : kFailures) {
        for (const char *call : {"user_qos_pri_queue_map_set", "user_qos_pri_queue_map_get", "user_qos_dscp_map_set",
                                 "user_qos_dscp_map_get", "user_qos_pri_remap_set"}) {
            driver().fail_every(call, failure);
        }
        EXPECT_EQ(adp_cosq_mapping_set(1, 2, 3, 4), failure);
        EXPECT_EQ(adp_cosq_mapping_get(1, 2, 3, &output_), failure);
        EXPECT_EQ(adp_dscp_map_set(1, 2, 3, 4), failure);
        EXPECT_EQ(adp_dscp_map_get(1, 2, 3, &output_), failure);
        EXPECT_EQ(adp_set_dot1p_pri_remap(1, 2, 3, 4, 5, 6, 7, 8), failure);
    }
    EXPECT_EQ(output_, port_calls::kNotWritten);
}

}  // namespace
