// The up and down states of a group: each row of the state machine, committed or not, with and without flag and trace.
#include "agg/trunk.h"

#include "core/testing/group.h"

namespace {

using adp::Commit;
using adp::Intf;
using adp::TrunkId;
using agg_test::announced;
using agg_test::calls;
using agg_test::kAdd;
using agg_test::kDel;
using agg_test::link_reads;
using agg_test::Ports;
using agg_test::table_bytes;
using agg_test::to_kernel;
using agg_test::Trace;
using agg_test::trunk_create;
using agg_test::trunk_destroy;
using agg_test::trunk_set;
using ::testing::ElementsAreArray;

constexpr uint32_t kGroup = 2;
constexpr uint32_t kNotWritten = 0xAAAAAAAA;

std::string event(int state) {
    return agg_test::event(kGroup, state);
}

enum class Worker { kAdds, kDeletes };

/** One row of the state machine: a group of ports 4 and 5, port 4 leaving when the delete worker runs. */
struct Transition {
    const char *name;
    int8_t state;
    Worker worker;
    uint32_t link; /**< attribute 11 of port 5; port 4 reads 0 */
    int8_t next;
    const char *word; /**< announced, or null */
    bool sends_event;
};

void PrintTo(const Transition &row, std::ostream *out) {
    *out << row.name;
}

using Row = std::tuple<Transition, Commit, bool, bool>;

class StateMachine : public agg_test::AggTest, public ::testing::WithParamInterface<Row> {
  protected:
    void SetUp() override {
        start();
        set_record(kGroup, 1, {4, 5});
        set_link(5, row().link);
        adp::agg_link_status[kGroup] = row().state;
        driver().on("sys_trace_get").returns(is_traced() ? 1 : 0);
    }

    static const Transition &row() { return std::get<0>(GetParam()); }
    static Commit commit() { return std::get<1>(GetParam()); }
    static bool wants_changed() { return std::get<2>(GetParam()); }
    static bool is_traced() { return std::get<3>(GetParam()); }
    static bool is_add() { return row().worker == Worker::kAdds; }

    adp_status_t run() {
        const uint32_t list[] = {1};
        const auto worker = is_add() ? adp::hal_add_agg_member_ex : adp::hal_del_agg_member_ex;
        return worker(adp::trunk_of(Intf(ADP_AGG_INTF(kGroup))), 1, list, commit(),
                      wants_changed() ? &changed_ : nullptr);
    }

    static Trace programmed() {
        if (is_add()) {
            return calls(link_reads({4, 5}), trunk_set(kGroup, {4, 5}));
        }
        const Trace emptied = calls(trunk_destroy(kGroup), trunk_create(kGroup));
        return calls(link_reads({5}), row().link == 1 ? Trace{trunk_set(kGroup, {5})} : emptied);
    }

    static Trace announcement() {
        const char *place = is_add() ? kAdd : kDel;
        Trace lines;
        if (row().word != nullptr) {
            agg_test::append(&lines, announced(kGroup, row().word, is_traced() ? place : ""));
        }
        if (row().sends_event) {
            lines.push_back(event(row().next));
        }
        return lines;
    }

    static Trace committed() {
        if (commit() == Commit::kNo) {
            return {};
        }
        return {is_add() ? to_kernel(kGroup, 1, {4, 5}) : to_kernel(kGroup, 0, {5})};
    }

    uint32_t changed_ = kNotWritten;
};

TEST_P(StateMachine, FollowsItsRow) {
    EXPECT_EQ(run(), 0);
    EXPECT_THAT(driver().trace(), ElementsAreArray(calls(programmed(), announcement(), committed())));
    EXPECT_EQ(adp::agg_link_status[kGroup], row().next);
    EXPECT_EQ(changed_, wants_changed() && row().word != nullptr ? 1u : kNotWritten);
}

TEST_P(StateMachine, ChangesTheRecordOnlyOnCommitAndNothingElse) {
    const bool is_removed = commit() == Commit::kYes && !is_add();
    set_record(kGroup, is_removed ? 0 : 1, is_removed ? Ports{5} : Ports{4, 5});
    adp::agg_link_status[kGroup] = row().next;
    const std::string expected = table_bytes();
    SetUp();
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(table_bytes(), expected);
}

TEST_P(StateMachine, AFailingDriverStopsTheCommitButNotTheAnnouncement) {
    for (const char *call : {"user_trunk_set", "user_trunk_create_id"}) {
        driver().fail_every(call, -44);
    }
    adp::agg_link_status[kGroup] = row().next;
    const std::string expected = table_bytes();
    adp::agg_link_status[kGroup] = row().state;
    EXPECT_EQ(run(), -44);
    EXPECT_THAT(driver().trace(), ElementsAreArray(calls(programmed(), announcement())));
    EXPECT_EQ(changed_, wants_changed() && row().word != nullptr ? 1u : kNotWritten);
    EXPECT_EQ(table_bytes(), expected);
}

TEST_P(StateMachine, IsTheSameWithoutAReceiverOfEvents) {
    adp_register_agg_event_cb(nullptr);
    EXPECT_EQ(run(), 0);
    Trace expected = calls(programmed(), announcement(), committed());
    expected.erase(std::remove(expected.begin(), expected.end(), event(row().next)), expected.end());
    EXPECT_THAT(driver().trace(), ElementsAreArray(expected));
    EXPECT_EQ(adp::agg_link_status[kGroup], row().next);
}

const Transition kRows[] = {
    {"DownAddLinked", 0, Worker::kAdds, 1, 1, "up", true},
    {"UpAddLinked", 1, Worker::kAdds, 1, 1, nullptr, true},
    {"DownAddNotLinked", 0, Worker::kAdds, 0, 0, nullptr, false},
    {"UpAddNotLinked", 1, Worker::kAdds, 0, 1, nullptr, false},
    {"DownAddLinkTwo", 0, Worker::kAdds, 2, 0, nullptr, false},
    {"DownAddLinkAllOnes", 0, Worker::kAdds, 0xFFFFFFFF, 0, nullptr, false},
    {"UpDelNoneKeptLinked", 1, Worker::kDeletes, 0, 0, "down", true},
    {"UpDelKeptLinkTwo", 1, Worker::kDeletes, 2, 0, "down", true},
    {"DownDelNoneKeptLinked", 0, Worker::kDeletes, 0, 0, nullptr, false},
    {"DownDelKeptLinked", 0, Worker::kDeletes, 1, 0, nullptr, false},
    {"UpDelKeptLinked", 1, Worker::kDeletes, 1, 1, nullptr, false},
    // Up only starts from 0, and down only from 1.
    {"OtherStateAddLinked", 2, Worker::kAdds, 1, 2, nullptr, true},
    {"OtherStateDelNoneKeptLinked", -1, Worker::kDeletes, 0, -1, nullptr, false},
};

INSTANTIATE_TEST_SUITE_P(Rows, StateMachine,
                         ::testing::Combine(::testing::ValuesIn(kRows), ::testing::Values(Commit::kNo, Commit::kYes),
                                            ::testing::Bool(), ::testing::Bool()),
                         [](const auto &row) {
                             return std::string(std::get<0>(row.param).name) +
                                    (std::get<1>(row.param) == Commit::kYes ? "Commit" : "") +
                                    (std::get<2>(row.param) ? "Changed" : "") +
                                    (std::get<3>(row.param) ? "Traced" : "");
                         });

}  // namespace
