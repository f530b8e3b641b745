// Members of a group: an example of each direction, and records that are full or damaged.
#include <numeric>

#include "agg/trunk.h"
#include "tests/support/library_test.h"

namespace membership_test {

using adp::Commit;
using adp::Intf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Intfs = std::vector<uint32_t>;

constexpr uint32_t kGroup = 2;
constexpr uint32_t kNotWritten = 0xAAAAAAAA;

class Trunk : public library_test::LibraryTest {
  protected:
    adp_status_t add(const Intfs &list) {
        return adp::hal_add_agg_member_ex(trunk(), static_cast<uint32_t>(list.size()), list.data(), Commit::kYes,
                                          &changed_);
    }
    adp_status_t del(const Intfs &list) {
        return adp::hal_del_agg_member_ex(trunk(), static_cast<uint32_t>(list.size()), list.data(), Commit::kYes,
                                          &changed_);
    }
    static adp::TrunkId trunk() { return adp::trunk_of(Intf(ADP_AGG_INTF(kGroup))); }
    static adp_agg_record_t &record() { return agg_info[kGroup - 1]; }

    static std::vector<uint8_t> eleven_ports() {
        std::vector<uint8_t> ports(ADP_AGG_MEMBER_BYTES);
        std::iota(ports.begin(), ports.end(), uint8_t{4});
        return ports;
    }
    /** This physical port alone has link. */
    static void link_up(int port) {
        driver().on("user_port_link_status_get").does([port](recording::Arguments &arguments) {
            *static_cast<uint32_t *>(arguments.pointer("status")) = arguments.i32("port") == port ? 1 : 0;
            return 0;
        });
    }

    uint32_t changed_ = kNotWritten;
};

TEST_F(Trunk, AddMakesTheseCallsInThisOrder) {
    set_active(kGroup, {7});
    record().in_use = 1;
    link_up(7);
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
            "user_trunk_send_data_to_kernel(unit=0, zero=0, trunk=1, record={count=2, in_use=1, "
            "ports=07:1d:00:00:00:00:00:00:00:00:00})"));
    EXPECT_EQ(changed_, 1u);
}

TEST_F(Trunk, DelMakesTheseCallsInThisOrder) {
    set_active(kGroup, {7, 29});
    link_up(7);
    EXPECT_EQ(del({4}), 0);
    EXPECT_THAT(
        driver().trace(),
        ElementsAre("user_port_link_status_get(unit=0, zero=0, port=29)", "user_trunk_destroy(unit=0, zero=0, trunk=1)",
                    "user_trunk_create_id(unit=0, zero=0, trunk=1)",
                    "user_trunk_send_data_to_kernel(unit=0, zero=0, trunk=1, record={count=1, in_use=0, "
                    "ports=1d:00:00:00:00:00:00:00:00:00:00})"));
}

TEST_F(Trunk, ATwelfthMemberIsRefusedBeforeTheDriverIsCalled) {
    set_active(kGroup, eleven_ports());
    const std::string before = library_test::table_bytes();
    EXPECT_EQ(add({12}), -1);
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_EQ(library_test::table_bytes(), before);
    EXPECT_EQ(changed_, kNotWritten);
}

TEST_F(Trunk, CountsAboveTheRecordsSizeAreNotFollowed) {
    for (const int32_t count : {12, -1, INT32_MAX, INT32_MIN}) {
        record().count = count;
        EXPECT_EQ(add({1}), -1) << count;
        EXPECT_EQ(del({1}), -1) << count;
        EXPECT_EQ(record().count, count);
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

class LinkScan : public library_test::LibraryTest {};

TEST_F(LinkScan, TheFirstGroupWithThePortDecides) {
    set_active(8, {4});
    EXPECT_EQ(adp_agg_linkscan_handle(1, 1, nullptr), 0);
    EXPECT_THAT(driver().take(), ::testing::Contains(::testing::StartsWith("user_trunk_set(unit=0, zero=0, trunk=7")));
    set_active(5, {5, 4});
    EXPECT_EQ(adp_agg_linkscan_handle(1, 1, nullptr), 0);
    EXPECT_THAT(driver().take(), ::testing::Contains(::testing::StartsWith("user_trunk_set(unit=0, zero=0, trunk=4")));
}

// The table is exported and anyone can write to it: a count above the record's size must not be followed.
TEST_F(LinkScan, ACountAboveTheRecordsSizeStopsAtItsEnd) {
    agg_info[kGroup - 1].count = ADP_AGG_MEMBER_BYTES + 1;
    EXPECT_EQ(adp_agg_linkscan_handle(20, 1, nullptr), 0);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

}  // namespace membership_test
