// __adp_transmit_frame(): an example of a frame as it is sent, its length, and groups in a flood.
#include "pkt/testing/transmit.h"
#include "pkt/testing/vlan_record.h"

namespace transmit_test {

using namespace transmit_test;

class Transmit : public TransmitModeTest {};

TEST_F(Transmit, TaggedFrameIsTenBytesLongerAndGoesToEth0) {
    EXPECT_EQ(send(ADP_TX_SWITCH, nullptr), 0);
    expect_sent(0x38000000);
    const fake_system::SentFrame &sent = system().sent().back();
    EXPECT_EQ(sent.bytes.size(), 70u);
    EXPECT_EQ(sent.bytes[12], 0x88);
    EXPECT_EQ(sent.bytes[13], 0x74);
    EXPECT_EQ(sent.flags, 0);
    EXPECT_EQ(sent.address_length, 20u);
    EXPECT_EQ(sent.family, 17);
    EXPECT_EQ(sent.protocol, 0);
    EXPECT_EQ(sent.interface_index, 7);
    EXPECT_EQ(sent.hardware_length, 6);
    EXPECT_EQ(Bytes(sent.hardware_address.begin(), sent.hardware_address.begin() + 6),
              Bytes(frame.begin() + 6, frame.begin() + 12));
    EXPECT_EQ(driver().count(), 0u);
}

TEST_F(Transmit, LengthThatOverflowsIsRefused) {
    const adp_tx_frame_t desc = {frame.data(), 0xFFFFFFFA, 0};
    EXPECT_EQ(__adp_transmit_frame(&desc, nullptr, ADP_NO_VLAN, ADP_TX_SWITCH), -1);
    expect_nothing_sent();
}

// Groups 1, 3 and 8 are members of the VLAN; group 3 has no management interface.
TEST_F(Transmit, AFloodInAVlanAddsGroupsThatAreMembers) {
    agg_manage_intf[0] = 3;
    agg_manage_intf[1] = 4;
    agg_manage_intf[7] = 26;
    pkt_test::set_vlan_members(bit(27) | bit(29) | bit(34));
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr, 9), 0);
    expect_sent(0x98000000 | 1u << 6, 1u << 4);
    EXPECT_EQ(send(ADP_TX_PORTS, nullptr, 9, ADP_AGG_INTF(8)), 0);
    expect_sent(0x98000000 | 1u << 6);
}

}  // namespace transmit_test
