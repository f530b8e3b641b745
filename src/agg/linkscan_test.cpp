// Link changes of members: the hardware trunk follows, the record stays, the management interface moves when needed.
#include "core/testing/group.h"

namespace {

using agg_test::announced;
using agg_test::calls;
using agg_test::fibre_reads;
using agg_test::kAdd;
using agg_test::kDel;
using agg_test::link_reads;
using agg_test::Ports;
using agg_test::table_bytes;
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

class LinkScan : public agg_test::AggTest {
  protected:
    void SetUp() override {
        start();
        set_record(kGroup, 1, {4, 5});
    }

    /** A group with one linked member, 1, and one that is down, 2. */
    void set_up_group(int8_t state, uint32_t manager) {
        adp::agg_link_status[kGroup] = state;
        agg_manage_intf[kGroup - 1] = manager;
    }

    static uint32_t manager() { return agg_manage_intf[kGroup - 1]; }

    uint32_t changed_ = kNotWritten;
};

TEST_F(LinkScan, UpProgramsEveryMemberAndAnnouncesAGroupThatWasDown) {
    set_up_group(1, 1);
    const std::string expected = table_bytes();
    for (const bool is_traced : {false, true}) {
        set_up_group(0, 1);
        changed_ = kNotWritten;
        set_link(4, 1);
        driver().on("sys_trace_get").returns(is_traced ? 1 : 0);
        EXPECT_EQ(adp_agg_linkscan_handle(1, 1, &changed_), 0);
        EXPECT_THAT(driver().take(), ElementsAreArray(calls(link_reads({4, 5}), trunk_set(kGroup, {4, 5}),
                                                            announced(kGroup, "up", is_traced ? kAdd : ""), event(1))));
        EXPECT_EQ(changed_, 1u);
        EXPECT_EQ(table_bytes(), expected);
    }
}

TEST_F(LinkScan, UpInAGroupThatIsUpSendsTheEventOnly) {
    set_up_group(1, 1);
    const std::string before = table_bytes();
    set_link(4, 1);
    for (const uint32_t up : {1u, 2u, 0x80000000u}) {
        EXPECT_EQ(adp_agg_linkscan_handle(1, up, &changed_), 0);
        EXPECT_THAT(driver().take(), ElementsAreArray(calls(link_reads({4, 5}), trunk_set(kGroup, {4, 5}), event(1))));
    }
    EXPECT_EQ(changed_, kNotWritten);
    EXPECT_EQ(table_bytes(), before);
}

// The link is read again: the caller's value only selects the worker.
TEST_F(LinkScan, UpIsNotAnnouncedUnlessALinkReadsOne) {
    set_up_group(0, 1);
    const std::string before = table_bytes();
    set_link(4, 2);
    EXPECT_EQ(adp_agg_linkscan_handle(1, 1, &changed_), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(calls(link_reads({4, 5}), trunk_set(kGroup, {4, 5}))));
    EXPECT_EQ(changed_, kNotWritten);
    EXPECT_EQ(table_bytes(), before);
}

TEST_F(LinkScan, DownOfTheLastLinkedMemberAnnouncesTheGroupAndKeepsTheRecord) {
    set_up_group(0, 2);
    const std::string expected = table_bytes();
    for (const bool is_traced : {false, true}) {
        set_up_group(1, 1);
        changed_ = kNotWritten;
        driver().on("sys_trace_get").returns(is_traced ? 1 : 0);
        EXPECT_EQ(adp_agg_linkscan_handle(1, 0, &changed_), 0);
        EXPECT_THAT(
            driver().take(),
            ElementsAreArray(calls(link_reads({5}), trunk_destroy(kGroup), trunk_create(kGroup),
                                   announced(kGroup, "down", is_traced ? kDel : ""), event(0), fibre_reads({4, 5}))));
        EXPECT_EQ(changed_, 1u);
        EXPECT_EQ(table_bytes(), expected);
    }
}

TEST_F(LinkScan, DownWhileAnotherMemberIsLinkedProgramsThatOneSilently) {
    set_up_group(1, 2);
    const std::string before = table_bytes();
    set_links({4, 5});  // the leaving port is removed although its link still reads 1
    EXPECT_EQ(adp_agg_linkscan_handle(1, 0, &changed_), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(calls(link_reads({5}), trunk_set(kGroup, {5}))));
    EXPECT_EQ(changed_, kNotWritten);
    EXPECT_EQ(table_bytes(), before);
}

TEST_F(LinkScan, DownInAGroupThatIsDownEmptiesTheTrunkSilently) {
    set_up_group(0, 9);
    const std::string before = table_bytes();
    EXPECT_EQ(adp_agg_linkscan_handle(1, 0, &changed_), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(calls(link_reads({5}), trunk_destroy(kGroup), trunk_create(kGroup))));
    EXPECT_EQ(changed_, kNotWritten);
    EXPECT_EQ(table_bytes(), before);
}

TEST_F(LinkScan, ANullFlagIsNeverWritten) {
    set_up_group(0, 1);
    set_link(4, 1);
    EXPECT_EQ(adp_agg_linkscan_handle(1, 1, nullptr), 0);
    EXPECT_EQ(adp::agg_link_status[kGroup], 1);
    EXPECT_EQ(adp_agg_linkscan_handle(1, 0, nullptr), 0);
    EXPECT_EQ(adp::agg_link_status[kGroup], 0);
}

TEST_F(LinkScan, AGroupPulledCableByCableIsAnnouncedOnceEachWay) {
    const Ports ports = {4, 5, 6, 7};
    set_record(kGroup, 1, ports);
    set_up_group(1, 1);
    set_links(ports);
    for (const uint8_t port : ports) {
        set_fibre_link(port, 1);
    }
    const uint32_t managers_down[] = {2, 3, 4, 4};
    for (uint32_t intf = 1; intf <= 4; ++intf) {
        set_link(static_cast<int>(intf + 3), 0);
        set_fibre_link(static_cast<int>(intf + 3), 0);
        EXPECT_EQ(driver().count("Log_logging_func"), 0u);
        EXPECT_EQ(adp_agg_linkscan_handle(intf, 0, nullptr), 0);
        EXPECT_EQ(manager(), managers_down[intf - 1]);
    }
    EXPECT_EQ(driver().count("Log_logging_func"), 1u);
    const uint32_t managers_up[] = {4, 3, 2, 1};
    for (uint32_t intf = 4; intf >= 1; --intf) {
        set_link(static_cast<int>(intf + 3), 1);
        set_fibre_link(static_cast<int>(intf + 3), 1);
        EXPECT_EQ(adp_agg_linkscan_handle(intf, 1, nullptr), 0);
        EXPECT_EQ(manager(), managers_up[4 - intf]);
        EXPECT_EQ(driver().count("Log_logging_func"), 2u);
    }
    EXPECT_EQ(record_ports(kGroup), ports);
}

struct Manager {
    const char *name;
    uint32_t before;
    uint32_t after_up;   /**< after interface 3 came up */
    uint32_t after_down; /**< after interface 3 went down */
};

class LinkScanManager : public LinkScan, public ::testing::WithParamInterface<Manager> {
  protected:
    void SetUp() override {
        start();
        set_record(kGroup, 1, {8, 6, 5});
        set_links({8, 6, 5});
        set_fibre_link(8, 1);
        set_fibre_link(5, 1);
        set_up_group(1, GetParam().before);
    }
};

TEST_P(LinkScanManager, Follows) {
    EXPECT_EQ(adp_agg_linkscan_handle(3, 1, nullptr), 0);
    EXPECT_EQ(manager(), GetParam().after_up);
    EXPECT_EQ(driver().count("user_fiberport_link_status_get"), 0u);

    agg_manage_intf[kGroup - 1] = GetParam().before;
    EXPECT_EQ(adp_agg_linkscan_handle(3, 0, nullptr), 0);
    EXPECT_EQ(manager(), GetParam().after_down);
    EXPECT_EQ(driver().count("user_fiberport_link_status_get"), GetParam().before == 3 ? 3u : 0u);
}

TEST_P(LinkScanManager, FollowsAlsoWhenTheDriverFails) {
    driver().fail_every("user_trunk_set", -12);
    EXPECT_EQ(adp_agg_linkscan_handle(3, 1, nullptr), -12);
    EXPECT_EQ(manager(), GetParam().after_up);

    agg_manage_intf[kGroup - 1] = GetParam().before;
    EXPECT_EQ(adp_agg_linkscan_handle(3, 0, nullptr), -12);
    EXPECT_EQ(manager(), GetParam().after_down);
}

INSTANTIATE_TEST_SUITE_P(Of, LinkScanManager,
                         ::testing::Values(Manager{"AHigherOne", 5, 3, 5}, Manager{"ALowerOne", 2, 2, 2},
                                           Manager{"ThePortItself", 3, 3, 2}, Manager{"AnEmptySlot", 0, 0, 0},
                                           Manager{"AnUnmappedOne", 0xFFFFFFFF, 3, 0xFFFFFFFF}),
                         [](const auto &row) { return std::string(row.param.name); });

TEST_F(LinkScan, UpWithEachCallFailingInTurn) {
    const Trace whole = calls(link_reads({4, 5}), trunk_set(kGroup, {4, 5}), announced(kGroup, "up"), event(1));
    Trace traced = whole;
    traced.insert(traced.begin() + 4, announced(kGroup, "up", kAdd)[1]);
    const struct {
        Trace trace;
        adp_status_t status;
    } cases[] = {{whole, 0}, {whole, 0}, {whole, -44}, {traced, 0}, {whole, 0}};
    for (size_t k = 0; k < std::size(cases); ++k) {
        start();
        set_record(kGroup, 1, {4, 5});
        set_links({4, 5});
        set_up_group(1, 1);
        const std::string expected = table_bytes();
        set_up_group(0, 2);
        driver().fail_call(k, -44);
        changed_ = kNotWritten;
        EXPECT_EQ(adp_agg_linkscan_handle(1, 1, &changed_), cases[k].status) << k;
        EXPECT_THAT(driver().trace(), ElementsAreArray(cases[k].trace)) << k;
        EXPECT_EQ(table_bytes(), expected) << k;
        EXPECT_EQ(changed_, 1u);
    }
}

TEST_F(LinkScan, DownWithEachCallFailingInTurn) {
    const Trace whole = calls(link_reads({5}), trunk_destroy(kGroup), trunk_create(kGroup), announced(kGroup, "down"),
                              event(0), fibre_reads({4, 5}));
    Trace traced = whole;
    traced.insert(traced.begin() + 4, announced(kGroup, "down", kDel)[1]);
    const struct {
        Trace trace;
        adp_status_t status;
        uint32_t manager;
    } cases[] = {{whole, 0, 1}, {whole, 0, 1}, {whole, -44, 1}, {traced, 0, 1},
                 {whole, 0, 1}, {whole, 0, 2}, {whole, 0, 1}};
    for (size_t k = 0; k < std::size(cases); ++k) {
        start();
        set_record(kGroup, 1, {4, 5});
        set_fibre_link(4, 1);
        set_up_group(0, cases[k].manager);
        const std::string expected = table_bytes();
        set_up_group(1, 1);
        driver().fail_call(k, -44);
        changed_ = kNotWritten;
        EXPECT_EQ(adp_agg_linkscan_handle(1, 0, &changed_), cases[k].status) << k;
        EXPECT_THAT(driver().trace(), ElementsAreArray(cases[k].trace)) << k;
        EXPECT_EQ(table_bytes(), expected) << k;
        EXPECT_EQ(changed_, 1u);
    }
}

}  // namespace
