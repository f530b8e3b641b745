// The fake system: off it has no effect, on it records, answers and fails calls.
#include "tests/support/fake_system.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/if_ether.h>
#include <net/if.h>
#include <netpacket/packet.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

using fake_system::Session;
using testing::ElementsAre;
using testing::IsEmpty;

namespace fake_system_test {

// The compiler may remove an unused allocation.
void *volatile kept = nullptr;

void *allocate(size_t size) {
    kept = std::malloc(size);
    return kept;
}

TEST(FakeSystem, ForwardsToTheSystemWhileItIsOff) {
    const int descriptor = socket(AF_UNIX, SOCK_DGRAM, 0);
    ASSERT_GE(descriptor, 0);
    EXPECT_LT(descriptor, fake_system::System::kFirstDescriptor);
    EXPECT_EQ(close(descriptor), 0);
    EXPECT_EQ(close(-1), -1);
    EXPECT_EQ(errno, EBADF);
    EXPECT_GT(time(nullptr), 0);
    EXPECT_EQ(usleep(1), 0);
    void *memory = allocate(16);
    EXPECT_NE(memory, nullptr);
    std::free(memory);
}

TEST(FakeSystem, RecordsASocketsLife) {
    Session session;
    const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
    EXPECT_EQ(descriptor, fake_system::System::kFirstDescriptor);
    EXPECT_EQ(session.system().open_descriptors(), 1u);
    ifreq request{};
    std::strcpy(request.ifr_name, "eth0");
    EXPECT_EQ(ioctl(descriptor, SIOCGIFINDEX, &request), 0);
    EXPECT_EQ(request.ifr_ifindex, 7);
    EXPECT_EQ(close(descriptor), 0);
    EXPECT_EQ(session.system().open_descriptors(), 0u);
    EXPECT_THAT(session.system().trace(), ElementsAre("socket(2, " + std::to_string(SOCK_DGRAM) + ", 0) -> 1000",
                                                      "ioctl(1000, SIOCGIFINDEX, \"eth0\") -> 0", "close(1000) -> 0"));
}

TEST(FakeSystem, KnowsOnlyTheInterfacesItWasGiven) {
    Session session;
    session.system().set_interface("eth1", 9);
    session.system().remove_interface("eth0");
    const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
    ifreq request{};
    std::strcpy(request.ifr_name, "eth0");
    EXPECT_EQ(ioctl(descriptor, SIOCGIFINDEX, &request), -1);
    EXPECT_EQ(errno, ENODEV);
    std::strcpy(request.ifr_name, "eth1");
    EXPECT_EQ(ioctl(descriptor, SIOCGIFINDEX, &request), 0);
    EXPECT_EQ(request.ifr_ifindex, 9);
    EXPECT_EQ(ioctl(descriptor, SIOCGIFFLAGS, &request), -1);
}

TEST(FakeSystem, KeepsSentFramesWithTheirAddress) {
    Session session;
    const int descriptor = socket(AF_PACKET, SOCK_RAW, ETH_P_IP);
    sockaddr_ll address{};
    address.sll_family = AF_PACKET;
    address.sll_ifindex = 7;
    address.sll_halen = 6;
    address.sll_addr[5] = 0xAB;
    const uint8_t frame[] = {1, 2, 3};
    EXPECT_EQ(sendto(descriptor, frame, sizeof frame, 0, reinterpret_cast<const sockaddr *>(&address), sizeof address),
              3);
    ASSERT_EQ(session.system().sent().size(), 1u);
    const auto &sent = session.system().sent()[0];
    EXPECT_THAT(sent.bytes, ElementsAre(1, 2, 3));
    EXPECT_EQ(sent.descriptor, descriptor);
    EXPECT_EQ(sent.family, AF_PACKET);
    EXPECT_EQ(sent.interface_index, 7);
    EXPECT_EQ(sent.hardware_length, 6);
    EXPECT_EQ(sent.hardware_address[5], 0xAB);
    EXPECT_EQ(sent.address_length, sizeof address);
}

TEST(FakeSystem, CountsAndAnswersWithoutATraceWhenNotRecording) {
    Session session;
    session.system().record(false);
    const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
    EXPECT_EQ(sendto(descriptor, "x", 1, 0, nullptr, 0), 1);
    EXPECT_EQ(session.system().open_descriptors(), 1u);
    EXPECT_TRUE(session.system().trace().empty());
    EXPECT_TRUE(session.system().sent().empty());
}

TEST(FakeSystem, FailsCallsAsTold) {
    Session session;
    session.system().fail_call("socket", 1, EMFILE);
    const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
    EXPECT_GE(descriptor, 0);
    EXPECT_EQ(socket(AF_INET, SOCK_DGRAM, 0), -1);
    EXPECT_EQ(errno, EMFILE);
    EXPECT_GE(socket(AF_INET, SOCK_DGRAM, 0), 0);
    session.system().fail("sendto", EPERM);
    EXPECT_EQ(sendto(descriptor, "x", 1, 0, nullptr, 0), -1);
    EXPECT_EQ(errno, EPERM);
}

TEST(FakeSystem, ReportsAShortSendOnce) {
    Session session;
    const int descriptor = socket(AF_PACKET, SOCK_RAW, 0);
    session.system().send_only(2);
    EXPECT_EQ(sendto(descriptor, "abc", 3, 0, nullptr, 0), 2);
    EXPECT_EQ(sendto(descriptor, "abc", 3, 0, nullptr, 0), 3);
}

TEST(FakeSystem, RefusesDescriptorsThatAreNotOpen) {
    Session session;
    EXPECT_EQ(sendto(3, "x", 1, 0, nullptr, 0), -1);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(close(3), -1);
    EXPECT_EQ(errno, EBADF);
}

TEST(FakeSystem, CountsAndRefusesAllocations) {
    Session session;
    session.system().fail_allocation(1);
    void *first = allocate(16);
    void *second = allocate(16);
    kept = std::calloc(2, 8);
    void *third = kept;
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(second, nullptr);
    EXPECT_NE(third, nullptr);
    EXPECT_EQ(session.system().allocations(), 3u);
    EXPECT_EQ(session.system().outstanding_allocations(), 2u);
    std::free(first);
    std::free(third);
    std::free(nullptr);
    EXPECT_EQ(session.system().outstanding_allocations(), 0u);
}

TEST(FakeSystem, ShowsWhatIsFreedWhileItIsStillReadable) {
    void *before = allocate(1);
    std::string seen;
    Session session;
    session.system().on_free([&](const void *memory) { seen += *static_cast<const char *>(memory); });
    for (const char letter : {'a', 'b'}) {
        void *memory = allocate(1);
        *static_cast<volatile char *>(memory) = letter;
        std::free(memory);
    }
    std::free(before);  // allocated before the fake was on
    std::free(nullptr);
    EXPECT_EQ(seen, "ab");
}

TEST(FakeSystem, LetsItsOwnTimePassWhileSleeping) {
    constexpr time_t kNow = 1000;
    Session session;
    session.system().set_time(kNow);
    time_t out = 0;
    EXPECT_EQ(time(&out), kNow);
    EXPECT_EQ(out, kNow);
    EXPECT_EQ(usleep(500000), 0);
    EXPECT_EQ(usleep(500000), 0);
    EXPECT_EQ(time(nullptr), kNow + 1);
    EXPECT_EQ(session.system().slept(), 1000000u);
    EXPECT_THAT(session.system().trace(), ElementsAre("usleep(500000)", "usleep(500000)"));
}

TEST(FakeSystem, TellsAListenerOfEachCall) {
    std::vector<std::string> lines;
    Session session;
    session.system().on_call([&](const std::string &line) { lines.push_back(line); });
    EXPECT_EQ(usleep(5), 0);
    EXPECT_THAT(lines, ElementsAre("usleep(5)"));
}

TEST(FakeSystem, IsOneAtATimeAndStartsAnew) {
    {
        Session session;
        EXPECT_THROW(Session(), std::logic_error);
        EXPECT_EQ(usleep(5), 0);
    }
    Session session;
    EXPECT_THAT(session.system().trace(), IsEmpty());
}

}  // namespace fake_system_test
