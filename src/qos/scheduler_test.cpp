// The scheduler of a port, which is set by a mask of interfaces: its mode, its mapping, its weights.
#include "tests/support/port_calls.h"

namespace {

using library_test::table_bytes;
using port_calls::kFailures;
using port_calls::kOtherTypes;
using port_calls::NotOnGroups;
using port_calls::PortCall;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::ValuesIn;

constexpr adp_queue_weights_t kWeights = {{1, 2, 4, 8, 16, 32, 64, 0xFFFFFFFF}};
constexpr char kWeightsText[] = "[1, 2, 4, 8, 16, 32, 64, 4294967295]";

std::string sched_get(uint32_t mask) {
    return "user_cosq_port_sched_get(unit=0, zero=0, port_mask=" + std::to_string(mask) + ")";
}

std::string sched_set(uint32_t mask, uint32_t mode, const std::string &weights, uint32_t delay) {
    return "user_cosq_port_sched_set(unit=0, zero=0, port_mask=" + std::to_string(mask) +
           ", mode=" + std::to_string(mode) + ", weights=" + weights + ", delay=" + std::to_string(delay) + ")";
}

std::string mode_set(uint32_t mask, uint32_t mode) {
    return sched_set(mask, mode, "[0, 0, 0, 0, 0, 0, 0, 0]", 0);
}

// The mask is passed as the driver call's port, which is signed.
std::string mapping_set(uint32_t mask, uint32_t priority, uint32_t queue) {
    return "user_cosq_port_mapping_set(unit=0, zero=0, port=" + std::to_string(static_cast<int32_t>(mask)) +
           ", priority=" + std::to_string(priority) + ", queue=" + std::to_string(queue) + ")";
}

// These pass the interface's mask, so only their refusals are the same as for other calls.
const std::vector<PortCall> kByMask = {
    {"Mode", [](uint32_t intf) { return adp_set_port_queue_sch_mode(intf, 1); }, "user_cosq_port_sched_set", ""},
    {"Weights", [](uint32_t intf) { return adp_set_queue_weight_pri(intf, 5, 0, kWeights); },
     "user_cosq_port_sched_set", ""},
    {"Mapping", [](uint32_t intf) { return adp_set_queue_weight_pri(intf, 5, 1, kWeights); },
     "user_cosq_port_mapping_set", ""}};

INSTANTIATE_TEST_SUITE_P(Scheduler, NotOnGroups, ValuesIn(kByMask), port_calls::name_of);

class Scheduler : public library_test::LibraryTest {
  protected:
    static constexpr uint32_t kNumbers[] = {65, 96, 100, 255, 256, 0x0FFFFFFF};

    /** Calls check(interface, its mask) for the interfaces 0 to 64 and some beyond. */
    template <typename Check>
    static void for_each_mask(Check check) {
        for (uint32_t intf = 0; intf <= 64; ++intf) {
            check(intf, intf < 32 ? static_cast<uint32_t>(1u << intf) : 0);
        }
        for (const uint32_t intf : kNumbers) {
            check(intf, 0u);
        }
    }

    static adp_status_t set_weights(uint32_t intf, const adp_queue_weights_t &weights = kWeights) {
        return adp_set_queue_weight_pri(intf, 5, 0, weights);
    }
    /** What the driver reads besides the weights. */
    static recording::Script &script_read(uint32_t mode, uint32_t delay) {
        return driver().on("user_cosq_port_sched_get").sets("mode", mode).sets("delay", delay);
    }
};

TEST_F(Scheduler, RefusesOtherTypesWithoutADriverCall) {
    for (const PortCall &call : kByMask) {
        for (const uint32_t intf : kOtherTypes) {
            EXPECT_EQ(call.run(intf), 201) << call.name << " " << intf;
        }
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(Scheduler, ModeIsWrittenUnderTheInterfacesMaskWithZeroWeightsAndNoDelay) {
    for_each_mask([](uint32_t intf, uint32_t mask) {
        EXPECT_EQ(adp_set_port_queue_sch_mode(intf, 2), 0);
        EXPECT_THAT(driver().take(), ElementsAre(mode_set(mask, 2))) << intf;
    });
}

TEST_F(Scheduler, InterfaceFortyHasNoBitInTheMask) {
    EXPECT_EQ(adp_set_port_queue_sch_mode(40, 1), 0);
    EXPECT_THAT(driver().trace(), ElementsAre(mode_set(0, 1)));
}

TEST_F(Scheduler, ModeThreeIsRefusedBeforeAnythingElse) {
    for (const uint32_t intf : {1u, 0u, 27u, 40u, ADP_AGG_INTF(2), ADP_AGG_INTF(0), ADP_AGG_INTF(9), kOtherTypes[0],
                                kOtherTypes[1], kOtherTypes[2]}) {
        EXPECT_EQ(adp_set_port_queue_sch_mode(intf, 3), 501) << intf;
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(Scheduler, EveryOtherModeIsPassedOn) {
    for (const uint32_t mode : {0u, 1u, 2u, 4u, 0x103u, 0x80000003u, 0xFFFFFFFFu}) {
        EXPECT_EQ(adp_set_port_queue_sch_mode(5, mode), 0) << mode;
        EXPECT_THAT(driver().take(), ElementsAre(mode_set(1u << 5, mode)));
    }
}

TEST_F(Scheduler, ReportsAnyFailureOfTheModeAs102) {
    const std::string before = table_bytes();
    for (const int32_t failure : kFailures) {
        driver().fail_every("user_cosq_port_sched_set", failure);
        EXPECT_EQ(adp_set_port_queue_sch_mode(1, 2), 102) << failure;
        EXPECT_THAT(driver().take(), SizeIs(1));
    }
    EXPECT_EQ(table_bytes(), before);
}

TEST_F(Scheduler, MappingIsWrittenUnderTheInterfacesMask) {
    for_each_mask([](uint32_t intf, uint32_t mask) {
        EXPECT_EQ(adp_set_queue_weight_pri(intf, 0xFFFFFFFF, 1, {{0xFFFFFFFE, 9, 9, 9, 9, 9, 9, 9}}), 0);
        EXPECT_THAT(driver().take(), ElementsAre(mapping_set(mask, 0xFFFFFFFE, 0xFFFFFFFF))) << intf;
    });
}

TEST_F(Scheduler, TheLowByteSelectsTheMapping) {
    for (const uint32_t select : {1u, 2u, 0x80u, 0xFFu, 0x101u, 0xFFFFFFFFu}) {
        EXPECT_EQ(adp_set_queue_weight_pri(4, 6, select, kWeights), 0) << select;
        EXPECT_THAT(driver().take(), ElementsAre(mapping_set(1u << 4, 1, 6))) << select;
    }
    for (const uint32_t select : {0u, 0x100u, 0xFFFFFF00u}) {
        EXPECT_EQ(adp_set_queue_weight_pri(4, 6, select, kWeights), 0) << select;
        EXPECT_EQ(driver().take().front(), sched_get(1u << 4)) << select;
    }
}

TEST_F(Scheduler, ReportsAnyFailureOfTheMappingAs102) {
    const std::string before = table_bytes();
    for (const int32_t failure : kFailures) {
        driver().fail_every("user_cosq_port_mapping_set", failure);
        EXPECT_EQ(adp_set_queue_weight_pri(1, 5, 1, kWeights), 102) << failure;
        EXPECT_THAT(driver().take(), ElementsAre(mapping_set(2, 1, 5)));
    }
    EXPECT_EQ(table_bytes(), before);
}

TEST_F(Scheduler, WeightsAreReadAndWrittenUnderTheInterfacesMask) {
    script_read(0xFFFFFFFE, 0x80000001);
    for_each_mask([](uint32_t intf, uint32_t mask) {
        EXPECT_EQ(set_weights(intf), 0);
        EXPECT_THAT(driver().take(),
                    ElementsAre(sched_get(mask), sched_set(mask, 0xFFFFFFFE, kWeightsText, 0x80000001)))
            << intf;
    });
}

TEST_F(Scheduler, AModeReadAsThreeIsStillWrittenBack) {
    script_read(3, 1);
    EXPECT_EQ(set_weights(1), 0);
    EXPECT_THAT(driver().trace(), ElementsAre(sched_get(2), sched_set(2, 3, kWeightsText, 1)));
}

TEST_F(Scheduler, WeightsThatTheDriverReadsAreWrittenBackInstead) {
    script_read(1, 7).sets("weights", {10, 11, 12, 13, 14, 15, 16, 17});
    EXPECT_EQ(set_weights(2), 0);
    EXPECT_THAT(driver().take(), ElementsAre(sched_get(4), sched_set(4, 1, "[10, 11, 12, 13, 14, 15, 16, 17]", 7)));
    script_read(1, 7).sets("weights", {20, 21, 22, 8, 16, 32, 64, 5});
    EXPECT_EQ(set_weights(2), 0);
    EXPECT_THAT(driver().take(), ElementsAre(sched_get(4), sched_set(4, 1, "[20, 21, 22, 8, 16, 32, 64, 5]", 7)));
}

TEST_F(Scheduler, TheReadGetsTheCallersWeightsInTheBlockThatIsWritten) {
    const void *read_into = nullptr;
    const void *written_from = nullptr;
    std::vector<uint32_t> found(ADP_QUEUES);
    driver().on("user_cosq_port_sched_get").does([&](recording::Arguments &arguments) {
        read_into = arguments.pointer("weights");
        std::memcpy(found.data(), read_into, sizeof kWeights);
        return 0;
    });
    driver().on("user_cosq_port_sched_set").does([&](recording::Arguments &arguments) {
        written_from = arguments.pointer("weights");
        return 0;
    });
    EXPECT_EQ(set_weights(2), 0);
    EXPECT_THAT(found, ElementsAreArray(kWeights.weight));
    ASSERT_NE(read_into, nullptr);
    EXPECT_EQ(read_into, written_from);
}

TEST_F(Scheduler, NothingIsWrittenAfterAFailedRead) {
    const std::string before = table_bytes();
    for (const int32_t failure : kFailures) {
        driver().fail_call(0, failure);
        EXPECT_EQ(set_weights(1), 102) << failure;
        EXPECT_THAT(driver().take(), ElementsAre(sched_get(2)));
        script_read(1, 7).returns(failure);
        EXPECT_EQ(set_weights(1), 102) << failure;
        EXPECT_THAT(driver().take(), ElementsAre(sched_get(2)));
        driver().reset();
    }
    EXPECT_EQ(table_bytes(), before);
}

TEST_F(Scheduler, ReportsAFailedWriteAs102) {
    script_read(1, 7);
    const std::string before = table_bytes();
    for (const int32_t failure : kFailures) {
        driver().fail_call(1, failure);
        EXPECT_EQ(set_weights(1), 102) << failure;
        EXPECT_THAT(driver().take(), ElementsAre(sched_get(2), sched_set(2, 1, kWeightsText, 7)));
    }
    EXPECT_EQ(table_bytes(), before);
}

}  // namespace
