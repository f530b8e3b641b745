// Egress queues: their set-up, the schedule of one queue, and the shapers.
#include "tests/support/port_calls.h"

namespace {

using library_test::table_bytes;
using port_calls::kFailures;
using port_calls::kNotWritten;
using port_calls::NotOnGroups;
using port_calls::OnUserPort;
using port_calls::outputs;
using port_calls::PortCall;
using port_calls::ReadOfUserPort;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
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
