// What passes through interfaces of both kinds.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include "switchd/ports/testing/interface_fixture.h"

namespace switchd {
namespace interface_frames_test {

using namespace test;

constexpr PortName kOne{1, 0};
constexpr PortName kTwo{2, 0};

using InterfaceFramesTest = InterfaceTest;

TEST_P(InterfaceFramesTest, FramesPassBothWaysUnchanged) {
    want({kOne, kTwo});
    for (const char *name : {"swp1", "swp2"}) {
        ip("link set " + std::string{name} + " up mtu 9000");
    }
    interfaces_->set_carrier(1, true);
    interfaces_->set_carrier(2, true);
    Program program{"swp1"};
    for (const size_t length : {14U, 60U, 61U, 1514U, 9014U}) {
        const Octets sent = frame(1, length);
        EXPECT_TRUE(run_until([&] {
            program.send(sent);
            return has_received(kOne, sent);
        })) << length;
        const Octets answer = frame(2, length);
        EXPECT_TRUE(at(kOne).write(vdevice::chip::split_frame(answer)));
        at(kOne).flush();
        EXPECT_TRUE(program.receives(answer)) << length;
    }
    for (const auto &[port, octets] : received_) {
        EXPECT_TRUE(port == kOne || octets[12] != 0x88) << "only what was sent on an interface comes from it";
    }
}

/** The sum of 16-bit words (RFC 1071); all ones for a packet whose checksum is right. */
uint32_t sum_of(vdevice::chip::Bytes octets, uint32_t sum) {
    for (size_t at = 0; at + 1 < octets.size(); at += 2) {
        sum += vdevice::chip::read16(octets, at);
    }
    sum = (sum & 0xFFFF) + (sum >> 16);
    return (sum & 0xFFFF) + (sum >> 16);
}

TEST_P(InterfaceFramesTest, TheKernelsPacketsHaveTheirChecksums) {
    constexpr size_t kText = 1000;
    constexpr size_t kUdpAt = 14 + 20;
    constexpr uint32_t kUdp = 17;
    want({kOne});
    interfaces_->set_carrier(1, true);
    ip("addr add 192.0.2.1/24 dev swp1");
    ip("link set swp1 up");
    ip("neigh add 192.0.2.2 lladdr 02:00:00:00:09:01 dev swp1");
    const vdevice::UniqueFd socket{::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(7);
    to.sin_addr.s_addr = htonl(0xC0000202);
    const std::string text(kText, 'x');
    const auto is_packet = [](const std::pair<PortName, Octets> &received) {
        return received.second.size() == kUdpAt + 8 + kText && received.second[23] == kUdp;
    };
    auto packet = received_.end();
    EXPECT_TRUE(run_until([&] {
        sendto(socket.get(), text.data(), text.size(), 0, reinterpret_cast<const sockaddr *>(&to), sizeof(to));
        packet = std::find_if(received_.begin(), received_.end(), is_packet);
        return packet != received_.end();
    }));
    ASSERT_NE(packet, received_.end());
    const vdevice::chip::Bytes octets = packet->second;
    const uint32_t addresses = sum_of(octets.subspan(26, 8), kUdp + 8 + kText);
    EXPECT_EQ(sum_of(octets.subspan(kUdpAt), addresses), 0xFFFFU);
}

TEST_P(InterfaceFramesTest, AnInterfaceThatIsDownTakesNothing) {
    want({kOne});
    interfaces_->set_carrier(1, true);
    if (GetParam() == InterfaceKind::kTap) {
        EXPECT_FALSE(at(kOne).write(vdevice::chip::split_frame(frame(6))));
    }
    ip("link set swp1 up");
    EXPECT_TRUE(comes_true([&] { return at(kOne).write(vdevice::chip::split_frame(frame(6))); }));
}

TEST_P(InterfaceFramesTest, OneReadLeavesTimeForOthers) {
    constexpr size_t kSent = 300;
    want({kOne});
    interfaces_->set_carrier(1, true);
    ip("link set swp1 up");
    Program program{"swp1"};
    EXPECT_TRUE(run_until([&] {
        program.send(frame(7));
        return has_received(kOne, frame(7));
    }));
    while (loop_.run_once(50)) {
    }
    received_.clear();
    for (size_t i = 0; i < kSent; ++i) {
        program.send(frame(8));
    }
    loop_.run_once(1000);
    EXPECT_GT(received_.size(), 0U);
    EXPECT_LE(received_.size(), 128U);
    const auto is_sent = [](const auto &received) { return received.second == frame(8); };
    EXPECT_TRUE(run_until(
        [&] { return static_cast<size_t>(std::count_if(received_.begin(), received_.end(), is_sent)) == kSent; }));
}

INSTANTIATE_TEST_SUITE_P(Kinds, InterfaceFramesTest, testing::Values(InterfaceKind::kTap, InterfaceKind::kVeth),
                         kind_name);

}  // namespace interface_frames_test
}  // namespace switchd
