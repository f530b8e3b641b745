// The chip's small parts: port sets, frame fields, the switch tag, the VLAN table, the refusals.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "vdevice/chip/frame/frame.h"
#include "vdevice/chip/frame/port_set.h"
#include "vdevice/chip/frame/switch_tag.h"
#include "vdevice/chip/tables/port.h"
#include "vdevice/chip/tables/vlan_table.h"
#include "vdevice/chip/testing/frame_builder.h"

namespace vdevice::chip {
namespace tables_test {

using namespace test;

std::vector<int> ports_of(const PortSet &set) {
    std::vector<int> ports;
    set.for_each([&](int port) { ports.push_back(port); });
    return ports;
}

TEST(PortSet, IgnoresNumbersOutsideItsWidth) {
    PortSet set;
    set.add(-1).add(256).add(1000).remove(-1).remove(256);
    EXPECT_TRUE(set.empty());
    EXPECT_FALSE(set.has(-1));
    EXPECT_FALSE(set.has(256));
}

TEST(PortSet, KeepsTheWordLayoutOfTheDriver) {
    const uint32_t in[8] = {0x80000001, 0x2, 0, 0, 0, 0, 0, 0x80000000};
    const PortSet set = PortSet::from_words(in);
    EXPECT_EQ(ports_of(set), (std::vector<int>{0, 31, 33, 255}));
    uint32_t out[8] = {};
    set.to_words(out);
    EXPECT_TRUE(std::equal(std::begin(in), std::end(in), std::begin(out)));
}

TEST(FrameHeader, TellsTaggedFromUntagged) {
    const Octets addresses = test::kBroadcast + test::station(1);
    const Octets untagged = addresses + test::kPayload;
    auto header = read_header(split_frame(untagged), kVlanTpid);
    ASSERT_TRUE(header);
    EXPECT_FALSE(header->tagged);
    EXPECT_EQ(header->payload.size(), test::kPayload.size());

    const Octets tagged = addresses + test::vlan_tag(0xB064) + test::kPayload;
    header = read_header(split_frame(tagged), kVlanTpid);
    ASSERT_TRUE(header);
    EXPECT_TRUE(header->tagged);
    EXPECT_EQ(header->vid(), 0x064);
    EXPECT_EQ(header->priority(), 0xB000);
    EXPECT_EQ(header->payload.size(), test::kPayload.size());
}

TEST(FrameHeader, RefusesEveryTruncation) {
    const Octets tagged = test::kBroadcast + test::station(1) + test::vlan_tag(100) + test::kPayload;
    for (size_t length = kAddressBytes; length < kHeaderBytes + kVlanTagBytes; ++length) {
        EXPECT_FALSE(read_header(split_frame(Bytes{tagged}.first(length)), kVlanTpid)) << length;
    }
    EXPECT_TRUE(read_header(split_frame(Bytes{tagged}.first(kHeaderBytes + kVlanTagBytes)), kVlanTpid));
}

TEST(TransmitTag, BitmapCoversPorts0To56) {
    for (int port = 0; port <= 56; ++port) {
        TransmitTag tag{Opcode::kPorts, 0, 0};
        if (port < 25) {
            tag.destination = 1U << port;
        } else {
            tag.word2 = 1U << (port - 25);
        }
        EXPECT_EQ(ports_of(tag.ports()), std::vector<int>{port});
    }
}

TEST(TransmitTag, RefusesOtherTypesAndTruncation) {
    const Octets untagged = test::kBroadcast + test::station(1) + test::kPayload;
    EXPECT_FALSE(read_transmit_tag(untagged));
    const Octets tagged = test::kBroadcast + test::station(1) + test::transmit_tag(1, 0) + test::kPayload;
    for (size_t length = 0; length < kHeaderBytes + kTransmitTagBytes; ++length) {
        EXPECT_FALSE(read_transmit_tag(Bytes{tagged}.first(length))) << length;
    }
}

class VlanTableTest : public testing::Test {
  protected:
    const PortSet existing_ = PortSet::range(0, 31);
    VlanTable table_{existing_, Vlan{existing_, existing_}};
};

TEST_F(VlanTableTest, RefusesVlansOutsideTheRange) {
    for (const uint32_t vid : {0U, 4095U, 4096U, 0x10005U, 0xFFFFFFFFU}) {
        EXPECT_EQ(table_.create({vid, vid}), Status::kVlanRange);
        EXPECT_EQ(table_.destroy({vid, vid}), Status::kVlanRange);
        EXPECT_EQ(table_.set_ports(vid, {}, {}), Status::kVlanRange);
        EXPECT_EQ(table_.set_default(vid), Status::kVlanRange);
        EXPECT_EQ(table_.find(vid), nullptr);
    }
    EXPECT_EQ(table_.create({4094, 4094}), Status::kOk);
    EXPECT_EQ(table_.create({20, 10}), Status::kVlanRange);
}

TEST_F(VlanTableTest, CreatesAWholeRangeOrNothing) {
    ASSERT_EQ(table_.create({15, 15}), Status::kOk);
    EXPECT_EQ(table_.create({10, 20}), Status::kVlanExists);
    EXPECT_EQ(table_.list(), (std::vector<Vid>{1, 15}));
    EXPECT_EQ(table_.create({10, 14}), Status::kOk);
    EXPECT_EQ(table_.list(), (std::vector<Vid>{1, 10, 11, 12, 13, 14, 15}));
}

TEST_F(VlanTableTest, TheDefaultVlanIsTheOneProtected) {
    ASSERT_EQ(table_.create({2, 2}), Status::kOk);
    EXPECT_EQ(table_.set_default(3), Status::kVlanMissing);
    EXPECT_EQ(table_.set_default(2), Status::kOk);
    EXPECT_EQ(table_.destroy({2, 2}), Status::kVlanIsDefault);
    EXPECT_EQ(table_.destroy({1, 2}), Status::kVlanIsDefault);
    EXPECT_EQ(table_.destroy({1, 1}), Status::kOk);
    EXPECT_EQ(table_.find(1), nullptr);
}

TEST_F(VlanTableTest, AddingAPortAgainChangesItsTag) {
    ASSERT_EQ(table_.create({10, 11}), Status::kOk);
    EXPECT_EQ(table_.add_ports({10, 11}, PortSet::range(4, 6), PortSet::of(5)), Status::kOk);
    EXPECT_EQ(table_.add_ports({10, 10}, PortSet::range(5, 7), PortSet::of(6)), Status::kOk);
    EXPECT_EQ(table_.find(10)->members, PortSet::range(4, 7));
    EXPECT_EQ(table_.find(10)->untagged, PortSet::of(6));
    EXPECT_EQ(table_.find(11)->members, PortSet::range(4, 6));
    EXPECT_EQ(table_.find(11)->untagged, PortSet::of(5));
}

TEST_F(VlanTableTest, RefusesUnknownPortsAndUntaggedStrangers) {
    ASSERT_EQ(table_.create({10, 10}), Status::kOk);
    ASSERT_EQ(table_.set_ports(10, PortSet::of(4), {}), Status::kOk);
    EXPECT_EQ(table_.set_ports(10, PortSet::of(32), {}), Status::kNoPort);
    EXPECT_EQ(table_.set_ports(10, PortSet::of(5), PortSet::of(255)), Status::kNoPort);
    EXPECT_EQ(table_.set_ports(10, PortSet::of(5), PortSet::of(4)), Status::kUntaggedNotMember);
    EXPECT_EQ(table_.add_ports({10, 10}, PortSet::of(5), PortSet::of(4)), Status::kUntaggedNotMember);
    EXPECT_EQ(table_.add_ports({10, 10}, PortSet::of(200), {}), Status::kNoPort);
    EXPECT_EQ(table_.remove_ports({10, 10}, PortSet::of(32)), Status::kNoPort);
    EXPECT_EQ(table_.set_ports(11, PortSet::of(5), {}), Status::kVlanMissing);
    EXPECT_EQ(table_.find(10)->members, PortSet::of(4));
    EXPECT_TRUE(table_.find(10)->untagged.empty());
}

TEST(DropReasons, EachHasANameOfItsOwn) {
    std::set<std::string> names;
    for (size_t reason = 0; reason < kDropReasons; ++reason) {
        names.insert(name(static_cast<Drop>(reason)));
    }
    EXPECT_EQ(names.size(), kDropReasons);
}

}  // namespace tables_test
}  // namespace vdevice::chip
