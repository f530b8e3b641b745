// adp_receive_frame(): ingress interface and strip.
#include "pkt/testing/receive.h"

namespace {

using receive_test::Bytes;
using receive_test::received;
using receive_test::stripped;

struct Outputs {
    uint8_t *frame = nullptr;
    uint16_t length = 0xAAAA;
    uint8_t flag = 0xAA;
    uint32_t intf = 0xAAAAAAAA;
};

class ReceiveFrame : public library_test::LibraryTest {
  protected:
    adp_status_t receive(Bytes &bytes, uint32_t length) {
        return adp_receive_frame(bytes.data(), &out.frame, length, &out.length, &out.flag, &out.intf);
    }
    adp_status_t receive(Bytes &bytes) { return receive(bytes, static_cast<uint32_t>(bytes.size())); }

    void expect_untouched(const Bytes &bytes, const Bytes &before) const {
        EXPECT_EQ(bytes, before);
        EXPECT_EQ(out.frame, nullptr);
        EXPECT_EQ(out.length, 0xAAAA);
        EXPECT_EQ(out.flag, 0xAA);
        EXPECT_EQ(out.intf, 0xAAAAAAAA);
    }

    Outputs out;
};

TEST_F(ReceiveFrame, StripsTheTagAndNamesTheIngressInterface) {
    Bytes bytes = received(29, {{0x81, 0x00, 0x00, 0x64, 0x08, 0x00, 1, 2, 3, 4}});
    const Bytes expected = stripped(bytes);
    EXPECT_EQ(receive(bytes), 0);
    EXPECT_EQ(out.frame, bytes.data());
    EXPECT_EQ(out.length, expected.size());
    EXPECT_EQ(out.flag, 0);
    EXPECT_EQ(out.intf, 26u);
    EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + out.length), expected);
    EXPECT_EQ(driver().count(), 0u);
}

TEST_F(ReceiveFrame, EveryMappedPortIsFound) {
    for (uint8_t port = 4; port <= 29; ++port) {
        Bytes bytes = received(port, {{0, 0}});
        EXPECT_EQ(receive(bytes), 0);
        EXPECT_EQ(out.intf, port - 3u);
    }
}

TEST_F(ReceiveFrame, CpuRowCountsAndAnUnmappedPortIsAllOnes) {
    Bytes from_cpu = received(0, {});
    EXPECT_EQ(receive(from_cpu), 0);
    EXPECT_EQ(out.intf, 0u);
    Bytes unmapped = received(63, {});
    EXPECT_EQ(receive(unmapped), 0);
    EXPECT_EQ(out.intf, 0xFFFFFFFFu);
}

TEST_F(ReceiveFrame, DoesNotLookUpTheGroup) {
    intf_map_trunk[1] = ADP_AGG_INTF(3);
    Bytes bytes = received(4, {});
    EXPECT_EQ(receive(bytes), 0);
    EXPECT_EQ(out.intf, 1u);
}

TEST_F(ReceiveFrame, LengthKeepsItsLow16Bits) {
    Bytes bytes = received(4, {{9, 8, 7}});
    EXPECT_EQ(receive(bytes, 0x70000 | 21), 0);
    EXPECT_EQ(out.length, 15);
    EXPECT_EQ(bytes[12], 9);
    EXPECT_EQ(bytes[14], 7);
}

TEST_F(ReceiveFrame, ATagAloneIsTheShortestFrame) {
    Bytes bytes = received(4, {});
    EXPECT_EQ(receive(bytes), 0);
    EXPECT_EQ(out.length, 12);
}

TEST_F(ReceiveFrame, ShorterFramesAreRefusedUntouched) {
    const Bytes before = received(4, {});
    for (const uint32_t length : {0u, 1u, 12u, 17u, 0x10000u, 0x10011u}) {
        Bytes bytes = before;
        EXPECT_EQ(receive(bytes, length), -1) << length;
        expect_untouched(bytes, before);
    }
}

TEST_F(ReceiveFrame, NullFrameIsRefused) {
    EXPECT_EQ(adp_receive_frame(nullptr, &out.frame, 64, &out.length, &out.flag, &out.intf), -1);
    expect_untouched({}, {});
}

}  // namespace
