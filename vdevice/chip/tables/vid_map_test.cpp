// The tables of tags: what they hold, refuse and find.
#include "vdevice/chip/tables/vid_map.h"

#include <gtest/gtest.h>

#include "vdevice/chip/switch.h"
#include "vdevice/chip/tables/subnet_table.h"
#include "vdevice/chip/testing/packet_builder.h"

namespace vdevice::chip {
namespace vid_map_test {

constexpr uint32_t kKeep = TagChange::kKeepPriority;
constexpr uint32_t kMask24 = 0xFFFFFF00;
constexpr uint32_t kNet10 = 0x0A000000;

TEST(TagChange, ReplacesTheVlanAndThePriorityIfItHasOne) {
    EXPECT_EQ((TagChange{200, kKeep}.apply(0xB064)), 0xB0C8);
    EXPECT_EQ((TagChange{200, 2}.apply(0xB064)), 0x50C8) << "the drop eligible bit stays";
    EXPECT_EQ((TagChange{200, 0}.apply(0xE064)), 0x00C8);
    EXPECT_EQ((TagChange{200, 7}.check()), Status::kOk);
    EXPECT_EQ((TagChange{200, 8}.check()), Status::kBadArgument);
    EXPECT_EQ((TagChange{0, 1}.check()), Status::kVlanRange);
    EXPECT_EQ((TagChange{4095, kKeep}.check()), Status::kVlanRange);
}

class VidMapTest : public testing::Test {
  protected:
    VidMap table_{Switch::chip_ports()};
};

TEST_F(VidMapTest, HoldsWhatWasAddedUntilItIsRemoved) {
    ASSERT_EQ(table_.add(4, 100, {200, 3}), Status::kOk);
    TagChange change;
    EXPECT_EQ(table_.get(4, 100, change), Status::kOk);
    EXPECT_EQ(change.vid, 200U);
    EXPECT_EQ(change.priority, 3U);
    EXPECT_EQ(table_.find(5, 100), nullptr);
    EXPECT_EQ(table_.find(4, 101), nullptr);
    EXPECT_EQ(table_.add(4, 100, {300, 3}), Status::kTagEntryExists);
    EXPECT_EQ(table_.find(4, 100)->vid, 200U);
    EXPECT_EQ(table_.remove(5, 100), Status::kTagEntryMissing);
    EXPECT_EQ(table_.remove(4, 100), Status::kOk);
    EXPECT_EQ(table_.remove(4, 100), Status::kTagEntryMissing);
    EXPECT_EQ(table_.get(4, 100, change), Status::kTagEntryMissing);
}

TEST_F(VidMapTest, RefusesWhatCannotBe) {
    for (const int64_t port : {-1, 32, 256}) {
        EXPECT_EQ(table_.add(port, 100, {200, kKeep}), Status::kNoPort);
        EXPECT_EQ(table_.remove(port, 100), Status::kNoPort);
    }
    EXPECT_EQ(table_.add(Switch::kCpuPort, 100, {200, kKeep}), Status::kCpuPort);
    for (const uint32_t vid : {0U, 4095U, 0x10001U}) {
        EXPECT_EQ(table_.add(4, vid, {200, kKeep}), Status::kVlanRange);
        EXPECT_EQ(table_.add(4, 100, {vid, kKeep}), Status::kVlanRange);
        EXPECT_EQ(table_.remove(4, vid), Status::kVlanRange);
    }
    EXPECT_TRUE(table_.entries().empty());
}

TEST_F(VidMapTest, IsFullAtItsCapacity) {
    for (uint32_t vid = 1; vid <= VidMap::kCapacity; ++vid) {
        ASSERT_EQ(table_.add(4, vid, {200, kKeep}), Status::kOk);
    }
    EXPECT_EQ(table_.add(5, 1, {200, kKeep}), Status::kTagTableFull);
    EXPECT_EQ(table_.add(4, 1, {200, kKeep}), Status::kTagEntryExists);
    EXPECT_EQ(table_.remove(4, 77), Status::kOk);
    EXPECT_EQ(table_.add(5, 1, {200, kKeep}), Status::kOk);
    table_.clear();
    EXPECT_EQ(table_.add(4, 1, {200, kKeep}), Status::kOk);
}

class SubnetTableTest : public testing::Test {
  protected:
    uint32_t vid_of(int port, uint8_t host) const {
        const TagChange *change =
            table_.find(port, test::ipv4({.protocol = 17, .source = test::ipv4_address(host)}, {}));
        return change == nullptr ? 0 : change->vid;
    }

    SubnetTable table_{Switch::chip_ports()};
};

TEST_F(SubnetTableTest, TheSmallestSubnetDecides) {
    ASSERT_EQ(table_.add({4, kNet10, kMask24, {100, kKeep}}), Status::kOk);
    ASSERT_EQ(table_.add({4, 0, 0, {300, kKeep}}), Status::kOk);
    ASSERT_EQ(table_.add({4, kNet10 + 7, 0xFFFFFFFF, {200, kKeep}}), Status::kOk);
    EXPECT_EQ(vid_of(4, 6), 100U);
    EXPECT_EQ(vid_of(4, 7), 200U);
    EXPECT_EQ(vid_of(5, 7), 0U);
    EXPECT_EQ(table_.add({4, kNet10, kMask24, {101, kKeep}}), Status::kTagEntryExists);
    EXPECT_EQ(table_.remove({4, kNet10, kMask24, {}}), Status::kOk);
    EXPECT_EQ(table_.remove({4, kNet10, kMask24, {}}), Status::kTagEntryMissing);
    EXPECT_EQ(vid_of(4, 6), 300U);
}

TEST_F(SubnetTableTest, OnlyWholeIpv4PacketsMatch) {
    ASSERT_EQ(table_.add({4, 0, 0, {100, kKeep}}), Status::kOk);
    const test::Octets packet = test::ipv4({.protocol = 17}, {});
    EXPECT_NE(table_.find(4, packet), nullptr);
    for (size_t length = kTypeBytes; length < packet.size(); ++length) {
        EXPECT_EQ(table_.find(4, Bytes{packet}.first(length)), nullptr) << length;
    }
    EXPECT_EQ(table_.find(4, test::ipv6({17}, test::Octets(20, 0))), nullptr);
}

TEST_F(SubnetTableTest, RefusesWhatNoPacketWouldMatch) {
    EXPECT_EQ(table_.add({4, kNet10 + 1, kMask24, {100, kKeep}}), Status::kBadArgument);
    EXPECT_EQ(table_.add({4, kNet10, 0xFF00FF00, {100, kKeep}}), Status::kBadArgument);
    EXPECT_EQ(table_.add({4, kNet10, kMask24, {0, kKeep}}), Status::kVlanRange);
    EXPECT_EQ(table_.add({4, kNet10, kMask24, {100, 8}}), Status::kBadArgument);
    EXPECT_EQ(table_.add({32, kNet10, kMask24, {100, kKeep}}), Status::kNoPort);
    EXPECT_EQ(table_.add({Switch::kCpuPort, kNet10, kMask24, {100, kKeep}}), Status::kCpuPort);
    EXPECT_TRUE(table_.list().empty());
}

TEST_F(SubnetTableTest, IsFullAtItsCapacity) {
    for (uint32_t host = 0; host < SubnetTable::kCapacity; ++host) {
        ASSERT_EQ(table_.add({4, kNet10 + host, 0xFFFFFFFF, {100, kKeep}}), Status::kOk);
    }
    EXPECT_EQ(table_.add({4, 0, 0, {100, kKeep}}), Status::kTagTableFull);
    table_.clear();
    EXPECT_EQ(table_.add({4, 0, 0, {100, kKeep}}), Status::kOk);
}

}  // namespace vid_map_test
}  // namespace vdevice::chip
