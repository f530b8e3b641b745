// Link changes of members: the group whose trunk follows is found by the members in the records.
#include "core/testing/group.h"

namespace {

using agg_test::calls;
using agg_test::link_reads;
using agg_test::Ports;
using agg_test::table_bytes;
using agg_test::trunk_set;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr uint32_t kGroup = 2;
constexpr uint32_t kNotWritten = 0xAAAAAAAA;

class LinkScanMembers : public agg_test::AggTest {
  protected:
    void SetUp() override {
        start();
        set_record(kGroup, 1, {4, 5});
    }
};

TEST_F(LinkScanMembers, APortInNoGroupChangesNothing) {
    fill_tables();
    set_record(1, 1, {255});
    uint32_t changed = kNotWritten;
    const std::string before = table_bytes();
    // 25 and 26 are in no group, 27 and more and other types translate to -1, which is not the member byte 255.
    for (const uint32_t intf : {25u, 26u, 27u, 0xFFFFFFFFu, ADP_AGG_INTF(2), 0x20000001u}) {
        for (const uint32_t up : {0u, 1u}) {
            EXPECT_EQ(adp_agg_linkscan_handle(intf, up, &changed), 0) << intf;
        }
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_EQ(table_bytes(), before);
    EXPECT_EQ(changed, kNotWritten);
}

TEST_F(LinkScanMembers, TheFirstGroupWithThePortDecides) {
    set_record(1, 1, {9});
    set_record(5, 1, {5, 4});
    set_record(8, 1, {4});
    EXPECT_EQ(adp_agg_linkscan_handle(1, 1, nullptr), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(calls(link_reads({4, 5}), trunk_set(kGroup, {4, 5}))));
    set_record(kGroup, 1, {5});
    EXPECT_EQ(adp_agg_linkscan_handle(1, 1, nullptr), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(calls(link_reads({5, 4}), trunk_set(5, {5, 4}))));
    set_record(5, 1, {});
    EXPECT_EQ(adp_agg_linkscan_handle(1, 1, nullptr), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(calls(link_reads({4}), trunk_set(8, {4}))));
}

// The record decides: the map of ports to groups is not read, and bytes after the count are not members.
TEST_F(LinkScanMembers, OnlyTheRecordsMembersCount) {
    intf_map_trunk[9] = ADP_AGG_INTF(kGroup);
    agg_info[0].ports[0] = 12;
    EXPECT_EQ(adp_agg_linkscan_handle(9, 1, nullptr), 0);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(LinkScanMembers, AllElevenMembersAreChecked) {
    const Ports ports = agg_test::first_ports(11);
    set_record(kGroup, 1, ports);
    EXPECT_EQ(adp_agg_linkscan_handle(11, 1, nullptr), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(calls(link_reads(ports), trunk_set(kGroup, ports))));
    set_links(ports);
    EXPECT_EQ(adp_agg_linkscan_handle(11, 0, nullptr), 0);
    const Ports kept = agg_test::first_ports(10);
    EXPECT_THAT(driver().take(), ElementsAreArray(calls(link_reads(kept), trunk_set(kGroup, kept))));
}

// The table is exported and anyone can write to it: a count above the record's size must not be followed.
TEST_F(LinkScanMembers, ACountAboveTheRecordsSizeStopsAtItsEnd) {
    set_record(kGroup, 1, agg_test::first_ports(ADP_AGG_MEMBER_BYTES));
    agg_info[kGroup - 1].count = ADP_AGG_MEMBER_BYTES + 1;
    EXPECT_EQ(adp_agg_linkscan_handle(20, 1, nullptr), 0);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(LinkScanMembers, DownOfAPortThatIsAMemberTwiceRemovesBothCopiesFromTheTrunk) {
    set_record(kGroup, 1, {4, 5, 4});
    set_links({4, 5});
    EXPECT_EQ(adp_agg_linkscan_handle(1, 0, nullptr), 0);
    EXPECT_THAT(driver().take(), ElementsAreArray(calls(link_reads({5}), trunk_set(kGroup, {5}))));
    EXPECT_EQ(record_ports(kGroup), (Ports{4, 5, 4}));
}

TEST_F(LinkScanMembers, WithoutAMapNothingIsFound) {
    library_test::drop_map();
    EXPECT_EQ(adp_agg_linkscan_handle(1, 1, nullptr), 0);
    EXPECT_EQ(adp_agg_linkscan_handle(0, 0, nullptr), 0);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

}  // namespace
