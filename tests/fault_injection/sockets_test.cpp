// Every call that sends, with each system call failing in each way, and with a send that falls short.
#include <algorithm>
#include <cerrno>
#include <cstring>

#include "tests/fault_injection/senders.h"

namespace sockets_test {

using fault_injection::frame;
using fault_injection::Sender;
using fault_injection::senders;
using fault_injection::SendingTest;
using ::testing::Combine;
using ::testing::ValuesIn;

constexpr size_t kAttempts = 4;
constexpr int kErrors[] = {ENOBUFS, ENETDOWN, EPERM, EINTR};

/** A way to send and an error. */
class SystemCallFails : public SendingTest, public testing::WithParamInterface<std::tuple<Sender, int>> {
  protected:
    static const Sender &sender() { return std::get<0>(GetParam()); }
    static int error() { return std::get<1>(GetParam()); }
};

std::string name_of(const testing::TestParamInfo<std::tuple<Sender, int>> &info) {
    return std::get<0>(info.param).name + strerrorname_np(std::get<1>(info.param));
}

TEST_P(SystemCallFails, AFirstSocketIsMissedByWhoNeedsItOnly) {
    const size_t sockets_before = count("socket");
    system().fail_call("socket", 0, error());
    // A socket of its own is needed for the frame, the other one only for the interface's index.
    EXPECT_EQ(sender().send(), sender().has_own_socket ? ADP_FAIL : ADP_OK);
    EXPECT_EQ(count("socket") - sockets_before, 1U);
    EXPECT_EQ(system().sent().size(), sender().has_own_socket ? 0U : 1U);
    if (!sender().has_own_socket) {
        EXPECT_EQ(system().sent()[0].interface_index, -1);
    }
    expect_as_before();
}

TEST_P(SystemCallFails, WithoutTheInterfacesIndexAFrameStillLeaves) {
    system().fail("ioctl", error());
    EXPECT_EQ(sender().send(), ADP_OK);
    ASSERT_EQ(system().sent().size(), 1U);
    EXPECT_EQ(system().sent()[0].interface_index, -1);
    EXPECT_EQ(count("ioctl"), 1U);
    expect_as_before();
}

TEST_P(SystemCallFails, ASendIsTriedFourTimesWhateverTheError) {
    for (size_t failures = 1; failures <= kAttempts; ++failures) {
        const size_t before = system().sent().size();
        for (size_t attempt = 0; attempt < failures; ++attempt) {
            system().fail_call("sendto", attempt, error());
        }
        EXPECT_EQ(sender().send(), failures < kAttempts ? ADP_OK : ADP_FAIL) << failures;
        EXPECT_EQ(system().sent().size() - before, std::min(failures + 1, kAttempts)) << failures;
        expect_as_before();
    }
}

INSTANTIATE_TEST_SUITE_P(FaultInjection, SystemCallFails, Combine(ValuesIn(senders()), ValuesIn(kErrors)), name_of);

/** A way to send. */
class Send : public SendingTest, public testing::WithParamInterface<Sender> {};

TEST_P(Send, ThatFallsShortIsAFailureAndNotRepeated) {
    for (const size_t bytes : {size_t{0}, size_t{1}, frame().size(), frame().size() + 9}) {
        const size_t before = system().sent().size();
        system().send_only(bytes);
        EXPECT_EQ(GetParam().send(), ADP_FAIL) << bytes;
        EXPECT_EQ(system().sent().size() - before, 1U) << bytes;
        expect_as_before();
    }
}

TEST_P(Send, WithoutMemoryAsksNothingOfTheSystem) {
    const size_t calls = system().trace().size();
    system().fail_allocation(0);
    EXPECT_EQ(GetParam().send(), ADP_FAIL);
    EXPECT_EQ(system().trace().size(), calls);
    expect_as_before();
}

INSTANTIATE_TEST_SUITE_P(FaultInjection, Send, ValuesIn(senders()),
                         [](const auto &sender) { return sender.param.name; });

class SocketCall : public SendingTest, public testing::WithParamInterface<int> {};

TEST_P(SocketCall, TheInterfacesIndexIsNotFound) {
    system().fail("socket", GetParam());
    EXPECT_EQ(get_nic_index("eth0"), -1);
    system().fail("socket", 0);
    system().fail("ioctl", GetParam());
    EXPECT_EQ(get_nic_index("eth0"), -1);
    expect_as_before();
}

// Without the common socket a frame is handed to the system all the same, which refuses it.
TEST_P(SocketCall, TheCommonSocketCannotBeMade) {
    system().fail("socket", GetParam());
    EXPECT_EQ(adp_pkt_init(), 50);  // the length of what it prints
    system().fail("socket", 0);
    EXPECT_EQ(fault_injection::transmit(nullptr, ADP_NO_VLAN, 1), ADP_FAIL);
    ASSERT_EQ(system().sent().size(), kAttempts);
    EXPECT_EQ(system().sent()[0].descriptor, -1);
    expect_as_before();
}

INSTANTIATE_TEST_SUITE_P(FaultInjection, SocketCall, ValuesIn(kErrors),
                         [](const auto &error) { return std::string(strerrorname_np(error.param)); });

}  // namespace sockets_test
