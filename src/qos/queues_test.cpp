// Egress queues: their set-up, the schedule of one queue, and the shapers.
#include "tests/support/port_calls.h"

namespace {

using library_test::table_bytes;
using port_calls::kFailures;
using port_calls::kNotWritten;
using port_calls::kOtherTypes;
using port_calls::NotOnGroups;
using port_calls::OnUserPort;
using port_calls::outputs;
using port_calls::PortCall;
using port_calls::ReadOfUserPort;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::ValuesIn;

const std::vector<PortCall> kShapers = {
    {"Set", [](uint32_t intf) { return adp_set_port_egress_shaper(intf, 0xFFFFFFFF, 0x80000001); },
     "user_port_egress_rate_set", ", rate=4294967295, burst=2147483649"},
    {"Get",
     [](uint32_t intf) { return adp_get_port_egress_shaper(intf, &outputs[0], &outputs[1]); },
     "user_port_egress_rate_get",
     "",
     {"rate", "burst"}}};

INSTANTIATE_TEST_SUITE_P(Shaper, OnUserPort, ValuesIn(kShapers), port_calls::name_of);
INSTANTIATE_TEST_SUITE_P(Shaper, NotOnGroups, ValuesIn(kShapers), port_calls::name_of);
INSTANTIATE_TEST_SUITE_P(Shaper, ReadOfUserPort, ValuesIn(port_calls::reads_of(kShapers)), port_calls::name_of);

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

class QosInit : public library_test::LibraryTest {
  protected:
    static constexpr const char *kCalls[] = {"user_cosq_config_set(unit=0, zero=0, queues=8)",
                                             "user_qos_default_cos_src_init()",
                                             "user_qos_remark_inner_tag_src_init()",
                                             "user_qos_trust_sel_group_init()",
                                             "user_field_meter_ifg_exclude_init()",
                                             "user_qos_cpu_weight_init()"};
};

TEST_F(QosInit, SetsUpEightQueuesAndTheDefaults) {
    const std::string before = table_bytes();
    EXPECT_EQ(adp_qos_init(), 0);
    EXPECT_THAT(driver().trace(), ElementsAreArray(kCalls));
    EXPECT_EQ(table_bytes(), before);
}

TEST_F(QosInit, MakesAllSixCallsWhicheverFailsAndReportsTheFirstOnly) {
    for (size_t failing = 0; failing < std::size(kCalls); ++failing) {
        for (const int32_t failure : kFailures) {
            driver().fail_call(failing, failure);
            EXPECT_EQ(adp_qos_init(), failing == 0 ? 102 : 0) << failing;
            EXPECT_THAT(driver().take(), ElementsAreArray(kCalls));
        }
    }
}

TEST_F(QosInit, MakesAllSixCallsWhenAllFail) {
    for (const char *call :
         {"user_cosq_config_set", "user_qos_default_cos_src_init", "user_qos_remark_inner_tag_src_init",
          "user_qos_trust_sel_group_init", "user_field_meter_ifg_exclude_init", "user_qos_cpu_weight_init"}) {
        driver().fail_every(call, 77);
    }
    EXPECT_EQ(adp_qos_init(), 102);
    EXPECT_THAT(driver().trace(), ElementsAreArray(kCalls));
}

class QueueSchedule : public library_test::LibraryTest {};

TEST_F(QueueSchedule, SetPassesFourNumbersOnAndAlwaysSucceeds) {
    EXPECT_EQ(adp_cosq_sched_set(0xFFFFFFFF, 2, 0x80000000, 4), 0);
    for (const int32_t failure : kFailures) {
        driver().fail_every("user_qos_schedule_set", failure);
        EXPECT_EQ(adp_cosq_sched_set(1, 2, 3, 0xFFFFFFFF), 0) << failure;
    }
    EXPECT_THAT(driver().take(),
                ElementsAre("user_qos_schedule_set(port=4294967295, queue=2, weight=2147483648, flags=4)",
                            "user_qos_schedule_set(port=1, queue=2, weight=3, flags=4294967295)",
                            "user_qos_schedule_set(port=1, queue=2, weight=3, flags=4294967295)",
                            "user_qos_schedule_set(port=1, queue=2, weight=3, flags=4294967295)",
                            "user_qos_schedule_set(port=1, queue=2, weight=3, flags=4294967295)"));
}

TEST_F(QueueSchedule, GetReturnsTheDriversWeightWhateverItsResult) {
    uint32_t weight = kNotWritten;
    for (const int32_t result : {0, -1, 1, 77}) {
        driver().on("user_qos_schedule_get").sets("weight", 0x80000001u).returns(result);
        weight = kNotWritten;
        EXPECT_EQ(adp_cosq_sched_get(0xFFFFFFFF, 2, &weight, 4), 0) << result;
        EXPECT_EQ(weight, 0x80000001u);
        EXPECT_THAT(driver().take(), ElementsAre("user_qos_schedule_get(port=4294967295, queue=2, flags=4)"));
    }
}

TEST_F(QueueSchedule, GetReturnsZeroWhenTheDriverWritesNothing) {
    uint32_t weight = kNotWritten;
    EXPECT_EQ(adp_cosq_sched_get(1, 2, &weight, 4), 0);
    EXPECT_EQ(weight, 0u);
    for (const int32_t failure : kFailures) {
        driver().fail_every("user_qos_schedule_get", failure);
        weight = kNotWritten;
        EXPECT_EQ(adp_cosq_sched_get(1, 2, &weight, 4), 0) << failure;
        EXPECT_EQ(weight, 0u);
    }
}

TEST_F(QueueSchedule, GetClearsTheCallersOutputBeforeTheDriverSeesIt) {
    uint32_t weight = kNotWritten;
    uint32_t seen = kNotWritten;
    const void *at = nullptr;
    driver().on("user_qos_schedule_get").does([&](recording::Arguments &arguments) {
        seen = arguments.u32("weight");
        at = arguments.pointer("weight");
        return 0;
    });
    EXPECT_EQ(adp_cosq_sched_get(1, 2, &weight, 4), 0);
    EXPECT_EQ(seen, 0u);
    EXPECT_EQ(at, &weight);
}

TEST(QueueShaping, IsAcceptedAndNotConfigured) {
    recording::driver().reset();
    EXPECT_EQ(adp_set_queue_drop_method(), 0);
    EXPECT_EQ(adp_set_queue_wred_drop_probability(), 0);
    EXPECT_EQ(adp_set_queue_shaper(), 0);
    EXPECT_EQ(adp_get_queue_shaper(), 0);
    EXPECT_THAT(recording::driver().trace(), IsEmpty());
}

}  // namespace
