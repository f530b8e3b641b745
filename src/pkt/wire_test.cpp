// get_nic_index() and adp_pkt_init().
#include <sys/socket.h>

#include <cerrno>

#include "tests/support/fake_system.h"
#include "tests/support/library_test.h"

namespace wire_test {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;
using ::testing::StartsWith;
using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStdout;

class Wire : public library_test::LibraryTest {
  protected:
    fake_system::System &system() { return session_.system(); }
    fake_system::Session session_;
};

const std::string kDatagramSocket = "socket(2, " + std::to_string(SOCK_DGRAM) + ", 0)";
const std::string kPacketSocket = "socket(17, " + std::to_string(SOCK_RAW) + ", 2048)";

TEST_F(Wire, NicIndexAsksTheSystemAndClosesItsSocket) {
    EXPECT_EQ(get_nic_index("eth0"), 7);
    EXPECT_THAT(system().trace(), ElementsAre(kDatagramSocket + " -> 1000", "ioctl(1000, SIOCGIFINDEX, \"eth0\") -> 0",
                                              "close(1000) -> 0"));
}

TEST_F(Wire, NicIndexReportsARefusedSocket) {
    system().fail("socket", EMFILE);
    CaptureStdout();
    EXPECT_EQ(get_nic_index("eth0"), -1);
    EXPECT_EQ(GetCapturedStdout(), " get_nic_index[eth0] failed\r\nToo many open files\r\n");
    EXPECT_THAT(system().trace(), Not(Contains(StartsWith("ioctl("))));
}

TEST_F(Wire, NicIndexReportsAnUnknownInterfaceAndClosesItsSocket) {
    CaptureStdout();
    EXPECT_EQ(get_nic_index("eth9"), -1);
    EXPECT_EQ(GetCapturedStdout(), " ioctl failed: \r\nNo such device\r\n\r\n");
    EXPECT_EQ(system().open_descriptors(), 0u);
}

TEST_F(Wire, NicIndexUsesSixteenCharactersOfTheName) {
    system().set_interface("abcdefghijklmnop", 12);
    EXPECT_EQ(get_nic_index("abcdefghijklmnop"), 12);
    EXPECT_EQ(get_nic_index("abcdefghijklmnopqrstuvwxyz"), 12);
}

TEST_F(Wire, PktInitOpensARawPacketSocketAndKeepsIt) {
    EXPECT_EQ(adp_pkt_init(), 1000);
    EXPECT_THAT(system().trace(), ElementsAre(kPacketSocket + " -> 1000"));
    EXPECT_EQ(system().open_descriptors(), 1u);
}

TEST_F(Wire, PktInitReturnsTheLengthOfItsMessageWhenRefused) {
    system().fail("socket", EPERM);
    CaptureStdout();
    const int32_t result = adp_pkt_init();
    const std::string printed = GetCapturedStdout();
    EXPECT_EQ(printed, "adp_pkt_init:443 init send packet socket error !~\n");
    EXPECT_EQ(result, static_cast<int32_t>(printed.size()));
}

}  // namespace wire_test
