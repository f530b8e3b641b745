// Descriptors and heap after very many frames, some of which fail: as before.
#include <malloc.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "tests/fault_injection/senders.h"

namespace steady_test {

using fault_injection::Sender;
using fault_injection::senders;

constexpr uint32_t kFrames = 100000;
/** A socket for each frame is slow by nature. */
constexpr uint32_t kFramesWithOwnSocket = 1000;

/** Bytes that the whole process has allocated; the sanitizers' allocator gives 0, and looks for leaks itself. */
size_t heap_in_use() {
    return mallinfo2().uordblks;
}

/** Many frames; nothing that the stand-ins see is kept meanwhile. */
class ManyFrames : public fault_injection::SendingTest {
  protected:
    void SetUp() override {
        SendingTest::SetUp();
        system().record(false);
        driver().record(false);
    }

    /** Runs @p one for each number below @p frames, once more beforehand so that everybody has what he keeps. */
    template <typename One>
    void expect_steady(uint32_t frames, One one) {
        constexpr uint32_t kWarmUp = 100;
        for (uint32_t number = 0; number < kWarmUp; ++number) {
            one(number);
        }
        const size_t before = heap_in_use();
        for (uint32_t number = 0; number < frames; ++number) {
            one(number);
        }
        EXPECT_EQ(heap_in_use(), before);
        expect_as_before();
    }

    /** What goes wrong with this frame: often nothing, else all sends, the index, the memory. */
    void disturb(uint32_t number) {
        constexpr uint32_t kSendsFailEvery = 5;
        constexpr uint32_t kIndexFailsEvery = 7;
        constexpr uint32_t kMemoryFailsEvery = 11;
        system().fail("sendto", number % kSendsFailEvery == 0 ? ENOBUFS : 0);
        system().fail("ioctl", number % kIndexFailsEvery == 0 ? ENETDOWN : 0);
        if (number % kMemoryFailsEvery == 0) {
            system().fail_allocation(0);
        }
    }

    void send_many(uint32_t frames, bool own_socket) {
        std::vector<const Sender *> chosen;
        for (const Sender &sender : senders()) {
            if (sender.has_own_socket == own_socket) {
                chosen.push_back(&sender);
            }
        }
        uint32_t sent = 0;
        testing::internal::CaptureStdout();
        expect_steady(frames, [&](uint32_t number) {
            disturb(number);
            sent += chosen[number % chosen.size()]->send() == ADP_OK ? 1U : 0U;
        });
        testing::internal::GetCapturedStdout();
        EXPECT_GT(sent, frames / 2);
        EXPECT_LT(sent, frames);
    }
};

TEST_F(ManyFrames, ThroughTheCommonSocketHoldNothing) {
    send_many(kFrames, false);
}

TEST_F(ManyFrames, ThroughSocketsOfTheirOwnHoldNothing) {
    send_many(kFramesWithOwnSocket, true);
}

TEST_F(ManyFrames, ReceivedHoldNothing) {
    constexpr size_t kReceived = 64;
    // Port 5 in the tag, then an IPv4 packet in VLAN 100; every other frame has no VLAN and is refused.
    constexpr std::array<uint8_t, 10> kTagged = {0x88, 0x74, 0, 0, 0, 5, 0x81, 0, 0, 100};
    uint32_t parsed = 0;
    expect_steady(kFrames, [&](uint32_t number) {
        std::array<uint8_t, kReceived> bytes = {};
        std::copy(kTagged.begin(), kTagged.end() - (number % 2 == 0 ? 0 : 4), bytes.begin() + 12);
        adp_rx_frame_t desc = {};
        desc.frame = bytes.data();
        desc.length = kReceived;
        parsed += __adp_receive_frame(&desc, 0) == ADP_OK ? 1U : 0U;
        uint8_t *out = nullptr;
        uint16_t length = 0;
        uint8_t flag = 0;
        adp_intf_t intf = 0;
        EXPECT_EQ(adp_receive_frame(bytes.data(), &out, kReceived, &length, &flag, &intf), ADP_OK);
    });
    EXPECT_GE(parsed, kFrames / 2);
    EXPECT_LT(parsed, kFrames);
}

}  // namespace steady_test
