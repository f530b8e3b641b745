// __adp_receive_frame(): the check that the ingress interface is a member of the VLAN.
#include "pkt/testing/receive.h"
#include "pkt/testing/vlan_record.h"

namespace vlan_check_test {

using namespace receive_test;
using pkt_test::set_vlan_members;
using ::testing::ElementsAre;

class VlanCheck : public ParseTest {};

TEST_F(VlanCheck, PassesAMember) {
    set_vlan_members(1ull << 2);
    EXPECT_EQ(parse(received(5, {kVlan100, {0x88, 0x63}}), 1, 18), 0);
    EXPECT_THAT(driver().trace(), ElementsAre("get_vlan_info(vid=100)"));
    EXPECT_EQ(at(desc.vlan_tag), 12);
}

TEST_F(VlanCheck, RefusesANonMemberBeforeTheStrip) {
    set_vlan_members(1ull << 3);
    const Bytes frame = received(5, {kVlan100, {0x88, 0x63}});
    EXPECT_EQ(parse(frame, 1, 18), -1);
    EXPECT_EQ(bytes, frame);
    EXPECT_EQ(desc.length, frame.size());
    EXPECT_EQ(desc.ethernet_header, nullptr);
    EXPECT_EQ(desc.intf, 2u);
    EXPECT_EQ(desc.phy, 5);
}

TEST_F(VlanCheck, TestsTheGroupOfTheIngressPort) {
    intf_map_trunk[2] = ADP_AGG_INTF(1);
    set_vlan_members(1ull << 27);
    EXPECT_EQ(parse(received(5, {kVlan100, {0x88, 0x63}}), 1, 18), 0);
    set_vlan_members(1ull << 2);
    EXPECT_EQ(parse(received(5, {kVlan100, {0x88, 0x63}}), 1, 18), -1);
}

TEST_F(VlanCheck, NeedsATagPointer) {
    const Bytes frame = received(5, {kVlan100, {0x88, 0x63}});
    EXPECT_EQ(parse(frame, 1), -1);
    EXPECT_EQ(bytes, frame);
    EXPECT_EQ(driver().count(), 0u);
}

TEST_F(VlanCheck, ReportsAFailingService) {
    driver().fail_every("get_vlan_info", 3);
    EXPECT_EQ(parse(received(5, {kVlan100, {0x88, 0x63}}), 1, 18), -1);
}

TEST_F(VlanCheck, ActsOnlyOnExactlyOne) {
    for (const int32_t check : {0, 2, -1, 0x10001}) {
        EXPECT_EQ(parse(received(5, {kVlan100, {0x88, 0x63}}), check), 0) << check;
    }
    EXPECT_EQ(driver().count(), 0u);
}

TEST_F(VlanCheck, ReadsTheVidFromAnyBufferThatTheCallerNames) {
    set_vlan_members(1ull << 2);
    uint8_t tag[4] = {0x81, 0x00, 0xFF, 0xFE};
    bytes = received(5, {kVlan100, {0x88, 0x63}});
    desc.frame = bytes.data();
    desc.length = static_cast<uint32_t>(bytes.size());
    desc.vlan_tag = tag;
    EXPECT_EQ(__adp_receive_frame(&desc, 1), 0);
    EXPECT_THAT(driver().trace(), ElementsAre("get_vlan_info(vid=4094)"));
}

TEST_F(VlanCheck, ReadsTheVidOnEitherSideOfTheFrame) {
    set_vlan_members(1ull << 2);
    const Bytes frame = received(5, {kVlan100, {0x88, 0x63}});
    constexpr size_t kTagBytes = 4;
    bytes = {0x81, 0x00, 0x00, 0x07};
    bytes.insert(bytes.end(), frame.begin(), frame.end());
    bytes.insert(bytes.end(), {0x81, 0x00, 0x00, 0x08});
    desc.length = static_cast<uint32_t>(frame.size());
    for (uint8_t *tag : {bytes.data(), bytes.data() + kTagBytes + frame.size()}) {
        std::copy(frame.begin(), frame.end(), bytes.begin() + kTagBytes);
        desc.frame = bytes.data() + kTagBytes;
        desc.length = static_cast<uint32_t>(frame.size());
        desc.vlan_tag = tag;
        EXPECT_EQ(__adp_receive_frame(&desc, 1), 0);
    }
    EXPECT_THAT(driver().trace(), ElementsAre("get_vlan_info(vid=7)", "get_vlan_info(vid=8)"));
}

TEST_F(VlanCheck, RefusesATagThatTheFrameCutsOff) {
    set_vlan_members(~0ull);
    const Bytes frame = received(5, {kVlan100});
    for (size_t length = 19; length < 22; ++length) {
        EXPECT_EQ(parse(Bytes(frame.begin(), frame.begin() + static_cast<long>(length)), 1, 18), -1) << length;
        EXPECT_EQ(driver().count(), 0u);
    }
}

}  // namespace vlan_check_test
