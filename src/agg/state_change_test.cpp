// Announcements and events: what goes to the log, the trace and the registered receiver.
#include "agg/state_change.h"

#include "core/testing/group.h"

namespace {

using adp::Intf;
using adp::Place;
using adp::TrunkId;
using agg_test::announced;
using agg_test::kAdd;
using agg_test::kDel;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr Place kAddWorker = {"hal_add_agg_member_ex", 393};
constexpr Place kDelWorker = {"hal_del_agg_member_ex", 564};
constexpr int32_t kReceiverResult = -5;

std::vector<adp_agg_event_t> received;
const adp_agg_event_t *received_at = nullptr;

int32_t receive(const adp_agg_event_t *event) {
    received.push_back(*event);
    received_at = event;
    return kReceiverResult;
}

class AggEvent : public agg_test::AggTest {
  protected:
    void SetUp() override {
        start();
        received.clear();
        received_at = nullptr;
        EXPECT_EQ(adp_register_agg_event_cb(receive), 0);
    }
    static TrunkId trunk_of(uint32_t group) { return adp::trunk_of(Intf(ADP_AGG_INTF(group))); }
};

TEST_F(AggEvent, RegisteringStoresTheReceiver) {
    EXPECT_EQ(agg_event_handle, receive);
    EXPECT_EQ(adp_register_agg_event_cb(nullptr), 0);
    EXPECT_EQ(agg_event_handle, nullptr);
}

TEST_F(AggEvent, PassesOnTheRecordItselfAndDropsTheName) {
    adp_agg_event_t event = {};
    for (uint32_t i = 0; i < std::size(event.word); ++i) {
        event.word[i] = 0x1000 + i;
    }
    for (const char *name : {"hal_add_agg_member_ex", "", static_cast<const char *>(nullptr)}) {
        EXPECT_EQ(adp_agg_event_handle(name, &event), kReceiverResult);
        EXPECT_EQ(received_at, &event);
    }
    ASSERT_EQ(received.size(), 3u);
    EXPECT_EQ(std::memcmp(&received[2], &event, sizeof event), 0);
}

TEST_F(AggEvent, WithoutAReceiverNothingHappens) {
    adp_register_agg_event_cb(nullptr);
    const adp_agg_event_t event = {};
    EXPECT_EQ(adp_agg_event_handle("anybody", &event), 0);
    adp::send_event(trunk_of(1), kAddWorker);
    EXPECT_TRUE(received.empty());
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(AggEvent, OnlyTheGroupsOwnWordIsSet) {
    EXPECT_EQ(sizeof(adp_agg_event_t), 96u);
    for (uint32_t group = 1; group <= ADP_AGG_GROUPS; ++group) {
        received.clear();
        adp::send_event(trunk_of(group), kDelWorker);
        std::vector<uint32_t> expected(24, 0);
        expected[16 + group - 1] = 0x10000000 | group;
        ASSERT_EQ(received.size(), 1u);
        EXPECT_THAT(received[0].word, ElementsAreArray(expected)) << group;
    }
}

TEST_F(AggEvent, AnnouncementsWithTheTraceOffGoToTheLogOnly) {
    for (uint32_t group = 1; group <= ADP_AGG_GROUPS; ++group) {
        adp::announce_state(trunk_of(group), true, kAddWorker, nullptr);
        EXPECT_THAT(driver().take(), ElementsAreArray(announced(group, "up")));
        adp::announce_state(trunk_of(group), false, kDelWorker, nullptr);
        EXPECT_THAT(driver().take(), ElementsAreArray(announced(group, "down")));
    }
    EXPECT_TRUE(received.empty());
}

TEST_F(AggEvent, AnnouncementsWithTheTraceOnGoToTheTraceFirst) {
    for (const int32_t on : {1, -1, 0x100, INT32_MIN}) {
        driver().on("sys_trace_get").returns(on);
        adp::announce_state(trunk_of(8), true, kAddWorker, nullptr);
        EXPECT_THAT(driver().take(), ElementsAreArray(announced(8, "up", kAdd))) << on;
        adp::announce_state(trunk_of(1), false, kDelWorker, nullptr);
        EXPECT_THAT(driver().take(), ElementsAreArray(announced(1, "down", kDel))) << on;
    }
}

TEST_F(AggEvent, FailingServicesChangeNothing) {
    driver().on("sys_trace_get").returns(1);
    driver().fail_every("sys_trace_add_log");
    driver().fail_every("Log_logging_func");
    uint32_t changed = 0;
    adp::announce_state(trunk_of(3), true, kAddWorker, &changed);
    EXPECT_THAT(driver().take(), ElementsAreArray(announced(3, "up", kAdd)));
    EXPECT_EQ(adp::agg_link_status[3], 1);
    EXPECT_EQ(changed, 1u);
}

TEST_F(AggEvent, AnnouncingStoresTheStateOfThatGroupAndSetsTheFlag) {
    uint32_t changed = 0xAAAAAAAA;
    adp::announce_state(trunk_of(8), true, kAddWorker, &changed);
    EXPECT_EQ(changed, 1u);
    EXPECT_THAT(adp::agg_link_status, ::testing::ElementsAre(0, 0, 0, 0, 0, 0, 0, 0, 1));
    changed = 0;
    adp::announce_state(trunk_of(8), false, kDelWorker, &changed);
    EXPECT_EQ(changed, 1u);
    EXPECT_THAT(adp::agg_link_status, ::testing::Each(0));
}

}  // namespace
