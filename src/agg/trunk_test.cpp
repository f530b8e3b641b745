// The two workers that program the hardware trunk, called directly.
#include "agg/trunk.h"

#include "core/testing/group.h"

namespace {

using adp::Commit;
using adp::Intf;
using adp::TrunkId;
using agg_test::announced;
using agg_test::calls;
using agg_test::Intfs;
using agg_test::link_reads;
using agg_test::Ports;
using agg_test::table_bytes;
using agg_test::to_kernel;
using agg_test::trunk_create;
using agg_test::trunk_destroy;
using agg_test::trunk_set;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr uint32_t kGroup = 2;
constexpr uint32_t kNotWritten = 0xAAAAAAAA;

class Trunk : public agg_test::AggTest {
  protected:
    adp_status_t add(const Intfs &list, Commit commit = Commit::kYes) {
        return adp::hal_add_agg_member_ex(trunk(), static_cast<uint32_t>(list.size()), list.data(), commit, &changed_);
    }
    adp_status_t del(const Intfs &list, Commit commit = Commit::kYes) {
        return adp::hal_del_agg_member_ex(trunk(), static_cast<uint32_t>(list.size()), list.data(), commit, &changed_);
    }
    static TrunkId trunk() { return adp::trunk_of(Intf(ADP_AGG_INTF(kGroup))); }
    static std::string event(int state) { return agg_test::event(kGroup, state); }
    static int state() { return adp::agg_link_status[kGroup]; }

    uint32_t changed_ = kNotWritten;
};

/** The lines are written out once, to find mistakes in the helpers that build them. */
TEST_F(Trunk, AddMakesTheseCallsInThisOrder) {
    set_record(kGroup, 1, {7});
    set_links({7});
    driver().on("sys_trace_get").returns(1);
    EXPECT_EQ(add({26}), 0);
    EXPECT_THAT(
        driver().trace(),
        ElementsAre(
            "user_port_link_status_get(unit=0, zero=0, port=7)", "user_port_link_status_get(unit=0, zero=0, port=29)",
            "user_trunk_set(unit=0, zero=0, trunk=1, record={count=2, in_use=0, "
            "ports=07:1d:00:00:00:00:00:00:00:00:00})",
            "sys_trace_get()",
            "sys_trace_add_log(prefix=\"hal_add_agg_member_ex():393\", message=\"interface aggregateport 2, changed "
            "state to up\")",
            "Log_logging_func(level=5, module=5, word=\"UPDOWN\", format=\"interface %s %d, changed state to %s\", "
            "text=\"interface aggregateport 2, changed state to up\")",
            "event(word[17]=268435458, state=1)",
            "user_trunk_send_data_to_kernel(unit=0, zero=0, trunk=1, record={count=2, in_use=1, "
            "ports=07:1d:00:00:00:00:00:00:00:00:00})"));
    EXPECT_EQ(changed_, 1u);
    EXPECT_EQ(record_ports(kGroup), (Ports{7, 29}));
    EXPECT_EQ(agg_info[1].in_use, 1);
}

TEST_F(Trunk, DelMakesTheseCallsInThisOrder) {
    set_record(kGroup, 1, {7, 29});
    set_links({7});
    adp::agg_link_status[kGroup] = 1;
    driver().on("sys_trace_get").returns(-1);
    EXPECT_EQ(del({4}), 0);
    EXPECT_THAT(
        driver().trace(),
        ElementsAre("user_port_link_status_get(unit=0, zero=0, port=29)", "user_trunk_destroy(unit=0, zero=0, trunk=1)",
                    "user_trunk_create_id(unit=0, zero=0, trunk=1)", "sys_trace_get()",
                    "sys_trace_add_log(prefix=\"hal_del_agg_member_ex():564\", message=\"interface aggregateport 2, "
                    "changed state to down\")",
                    "Log_logging_func(level=5, module=5, word=\"UPDOWN\", format=\"interface %s %d, changed state to "
                    "%s\", text=\"interface aggregateport 2, changed state to down\")",
                    "event(word[17]=268435458, state=0)",
                    "user_trunk_send_data_to_kernel(unit=0, zero=0, trunk=1, record={count=1, in_use=0, "
                    "ports=1d:00:00:00:00:00:00:00:00:00:00})"));
    EXPECT_EQ(changed_, 1u);
    EXPECT_EQ(record_ports(kGroup), Ports{29});
    EXPECT_EQ(agg_info[1].in_use, 0);
}

TEST_F(Trunk, AddProgramsDownMembersTooAndDelOnlyLinkedOnes) {
    for (const size_t count : {1u, 3u, 8u}) {
        start();
        const Ports all = agg_test::first_ports(count);
        set_record(kGroup, 1, all);
        set_links({4, 6, 11});
        Ports linked = {4, 6, 11};
        linked.resize(count == 1 ? 1 : count == 3 ? 2 : 3);
        adp::agg_link_status[kGroup] = 1;
        EXPECT_EQ(add({}, Commit::kNo), 0);
        EXPECT_THAT(driver().take(), ElementsAreArray(calls(link_reads(all), trunk_set(kGroup, all), event(1))));
        EXPECT_EQ(del({}, Commit::kNo), 0);
        EXPECT_THAT(driver().take(), ElementsAreArray(calls(link_reads(all), trunk_set(kGroup, linked))));
    }
}

TEST_F(Trunk, AddToAnEmptyRecordWithoutAListDoesNothing) {
    adp::agg_link_status[kGroup] = 1;
    agg_info[kGroup - 1].in_use = 1;
    const std::string before = table_bytes();
    for (const Commit commit : {Commit::kNo, Commit::kYes}) {
        EXPECT_EQ(adp::hal_add_agg_member_ex(trunk(), 0, nullptr, commit, &changed_), 0);
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_EQ(table_bytes(), before);
    EXPECT_EQ(changed_, kNotWritten);
}

TEST_F(Trunk, DelOfAnEmptyRecordStillEmptiesTheTrunk) {
    EXPECT_EQ(adp::hal_del_agg_member_ex(trunk(), 0, nullptr, Commit::kYes, &changed_), 0);
    EXPECT_THAT(driver().trace(),
                ElementsAreArray(calls(trunk_destroy(kGroup), trunk_create(kGroup), to_kernel(kGroup, 0, {}))));
    EXPECT_EQ(changed_, kNotWritten);
}

TEST_F(Trunk, AddComparesWithTheMembersBeforeTheCallOnly) {
    set_record(kGroup, 0, {7, 8});
    EXPECT_EQ(add({5, 1, 4, 1, 4, 5}), 0);
    EXPECT_THAT(driver().trace(), ElementsAreArray(calls(link_reads({7, 8, 4, 4}), trunk_set(kGroup, {7, 8, 4, 4}),
                                                         to_kernel(kGroup, 0, {7, 8, 4, 4}))));
    EXPECT_EQ(record_ports(kGroup), (Ports{7, 8, 4, 4}));
}

TEST_F(Trunk, AnUnmappedInterfaceIsAppendedEachTimeAndNotRead) {
    const Ports expected[] = {{255}, {255, 255}};
    for (const Ports &ports : expected) {
        EXPECT_EQ(add({27}), 0);
        EXPECT_THAT(driver().take(), ElementsAre(trunk_set(kGroup, ports), to_kernel(kGroup, 0, ports)));
        EXPECT_EQ(record_ports(kGroup), ports);
    }
}

TEST_F(Trunk, AnUnmappedInterfaceRemovesNothing) {
    set_record(kGroup, 0, {255, 4});
    EXPECT_EQ(del({27}), 0);
    EXPECT_EQ(record_ports(kGroup), (Ports{255, 4}));
}

TEST_F(Trunk, DelRemovesEveryCopyOfAPortAndKeepsTheOrder) {
    set_record(kGroup, 1, {9, 4, 8, 4, 7});
    set_links({9, 7});
    EXPECT_EQ(del({1, 1}), 0);
    EXPECT_THAT(driver().trace(), ElementsAreArray(calls(link_reads({9, 8, 7}), trunk_set(kGroup, {9, 7}),
                                                         to_kernel(kGroup, 0, {9, 8, 7}))));
    EXPECT_EQ(record_ports(kGroup), (Ports{9, 8, 7}));
    EXPECT_EQ(agg_info[kGroup - 1].ports[3], 0);
    EXPECT_EQ(agg_info[kGroup - 1].ports[4], 0);
}

TEST_F(Trunk, TheCpuRowIsAPortLikeAnyOther) {
    set_links({0});
    EXPECT_EQ(add({0}), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(calls(link_reads({0}), trunk_set(kGroup, {0}),
                                                        announced(kGroup, "up"), event(1), to_kernel(kGroup, 0, {0}))));
    EXPECT_EQ(del({0}), 0);
    EXPECT_EQ(agg_info[kGroup - 1].count, 0);
}

TEST_F(Trunk, NineToElevenMembersAreProgrammedLikeAnyOther) {
    for (const size_t count : {9u, 10u, 11u}) {
        start();
        const Ports ports = agg_test::first_ports(count);
        EXPECT_EQ(add(agg_test::first_intfs(count)), 0);
        EXPECT_THAT(driver().take(),
                    ElementsAreArray(calls(link_reads(ports), trunk_set(kGroup, ports), to_kernel(kGroup, 0, ports))));
        set_links(ports);
        EXPECT_EQ(del({1}), 0);
        const Ports kept(ports.begin() + 1, ports.end());
        EXPECT_THAT(driver().take(),
                    ElementsAreArray(calls(link_reads(kept), trunk_set(kGroup, kept), to_kernel(kGroup, 0, kept))));
    }
}

TEST_F(Trunk, ATwelfthMemberIsRefusedBeforeTheDriverIsCalled) {
    const struct {
        size_t before;
        Intfs list;
    } cases[] = {{11, {12}}, {10, {11, 12}}, {10, {12, 12}}, {0, agg_test::first_intfs(12)}, {11, {27}}};
    for (const auto &[count, list] : cases) {
        start();
        set_record(kGroup, 1, agg_test::first_ports(count));
        set_links(agg_test::first_ports(12));
        const std::string before = table_bytes();
        EXPECT_EQ(add(list), -1);
        EXPECT_THAT(driver().trace(), IsEmpty());
        EXPECT_EQ(table_bytes(), before);
        EXPECT_EQ(changed_, kNotWritten);
    }
}

TEST_F(Trunk, AFullRecordAcceptsItsOwnMembersAgain) {
    const Ports ports = agg_test::first_ports(11);
    set_record(kGroup, 1, ports);
    EXPECT_EQ(add({11, 1}), 0);
    EXPECT_THAT(driver().trace(),
                ElementsAreArray(calls(link_reads(ports), trunk_set(kGroup, ports), to_kernel(kGroup, 1, ports))));
}

TEST_F(Trunk, CountsAboveTheRecordsSizeAreNotFollowed) {
    for (const int32_t count : {12, -1, INT32_MAX, INT32_MIN}) {
        agg_info[kGroup - 1].count = count;
        EXPECT_EQ(add({1}), -1) << count;
        EXPECT_EQ(del({1}), -1) << count;
        EXPECT_EQ(agg_info[kGroup - 1].count, count);
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(Trunk, AMemberWhoseLinkCannotBeReadCountsAsDown) {
    set_record(kGroup, 1, {4, 5});
    set_links({4, 5});
    driver().fail_call(0);
    EXPECT_EQ(del({}, Commit::kNo), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(calls(link_reads({4, 5}), trunk_set(kGroup, {5}))));
    driver().fail_every("user_port_link_status_get");
    EXPECT_EQ(add({}, Commit::kNo), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(calls(link_reads({4, 5}), trunk_set(kGroup, {4, 5}))));
}

TEST_F(Trunk, TheStatusOfALinkReadIsIgnored) {
    set_record(kGroup, 1, {4});
    driver().on("user_port_link_status_get").does([](recording::Arguments &arguments) {
        *static_cast<uint32_t *>(arguments.pointer("status")) = 1;
        return -1;
    });
    EXPECT_EQ(del({}, Commit::kNo), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(calls(link_reads({4}), trunk_set(kGroup, {4}))));
    EXPECT_EQ(add({}, Commit::kNo), 0);
    EXPECT_EQ(state(), 1);
}

TEST_F(Trunk, EachLinkReadStartsFromZero) {
    set_record(kGroup, 1, {4, 5});
    driver().once("user_port_link_status_get").sets("status", 1u);
    driver().once("user_port_link_status_get").returns(0);
    EXPECT_EQ(del({}, Commit::kNo), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(calls(link_reads({4, 5}), trunk_set(kGroup, {4}))));
}

TEST_F(Trunk, TheWorkersReadTheLinkNotTheFibreLink) {
    set_record(kGroup, 1, {4});
    set_fibre_link(4, 1);
    EXPECT_EQ(add({}, Commit::kNo), 0);
    EXPECT_EQ(state(), 0);
    EXPECT_EQ(driver().count("user_fiberport_link_status_get"), 0u);
}

TEST_F(Trunk, TheKernelsResultIsIgnored) {
    driver().fail_every("user_trunk_send_data_to_kernel", -3);
    EXPECT_EQ(add({1}), 0);
    EXPECT_EQ(record_ports(kGroup), Ports{4});
    EXPECT_EQ(del({1}), 0);
    EXPECT_EQ(agg_info[kGroup - 1].count, 0);
}

TEST_F(Trunk, AFailedDestroyIsIgnored) {
    set_record(kGroup, 1, {4});
    driver().fail_every("user_trunk_destroy", -3);
    EXPECT_EQ(del({1}), 0);
    EXPECT_THAT(driver().trace(),
                ElementsAreArray(calls(trunk_destroy(kGroup), trunk_create(kGroup), to_kernel(kGroup, 0, {}))));
}

}  // namespace
