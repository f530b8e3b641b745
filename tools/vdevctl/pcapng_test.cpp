// The blocks octet by octet, and writes that fail. What Wireshark makes of them: test_pcapng.py.
#include "tools/vdevctl/pcapng.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <fstream>
#include <iterator>
#include <vector>

#include "tests/support/temporary_folder.h"
#include "vdevice/sockets/unique_fd.h"

namespace pcapng_test {

using testing::StrEq;
using vdevctl::CapturedFrame;
using vdevctl::CaptureWriteError;
using vdevctl::FrameDirection;
using vdevctl::PcapngWriter;
using Octets = std::vector<uint8_t>;

constexpr std::array<uint8_t, 5> kFrame{1, 2, 3, 4, 5};

CapturedFrame frame_with(FrameDirection direction, std::string_view comment) {
    return {.interface = 0,
            .time = std::chrono::nanoseconds{0x0102030405060708},
            .direction = direction,
            .octets = kFrame,
            .length = 9,
            .comment = comment};
}

class PcapngTest : public testing::Test {
  protected:
    PcapngTest() { writer_.flush(); }

    /** What was written since the last call. */
    Octets written() {
        writer_.flush();
        std::ifstream file(path_, std::ios::binary);
        Octets all{std::istreambuf_iterator<char>{file}, {}};
        Octets rest{all.begin() + seen_, all.end()};
        seen_ = static_cast<ptrdiff_t>(all.size());
        return rest;
    }

    TemporaryFolder folder_;
    std::string path_ = folder_.path() + "/capture";
    vdevice::UniqueFd file_{open(path_.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600)};
    PcapngWriter writer_{file_.get(), "the capture", "test"};
    ptrdiff_t seen_ = 0;
};

TEST_F(PcapngTest, StartsWithASection) {
    const Octets section = written();
    const Octets head{0x0A, 0x0D, 0x0D, 0x0A, section.at(4), 0, 0, 0, 0x4D, 0x3C, 0x2B, 0x1A, 1, 0, 0, 0};
    EXPECT_EQ(Octets(section.begin(), section.begin() + 16), head);
    const Octets application{4, 0, 4, 0, 't', 'e', 's', 't', 0, 0, 0, 0, section.at(4), 0, 0, 0};
    EXPECT_EQ(Octets(section.end() - 16, section.end()), application);
    EXPECT_EQ(section.at(4), section.size());
}

TEST_F(PcapngTest, DescribesAnInterface) {
    written();
    EXPECT_EQ(writer_.add_interface("port7"), 0U);
    const Octets block{
        1, 0, 0, 0, 44,  0,   0,   0,   1,   0, 0, 0, 0,  0, 0, 0,  // Ethernet, whole frames
        2, 0, 5, 0, 'p', 'o', 'r', 't', '7', 0, 0, 0,               // its name
        9, 0, 1, 0, 9,   0,   0,   0,   0,   0, 0, 0, 44, 0, 0, 0,  // nanoseconds
    };
    EXPECT_EQ(written(), block);
    EXPECT_EQ(writer_.add_interface("cpu"), 1U);
}

TEST_F(PcapngTest, WritesAFrameWithAllOfItsOptions) {
    writer_.add_interface("port7");
    written();
    writer_.add_frame(frame_with(FrameDirection::kOutbound, "vlan"));
    const Octets block{
        6, 0, 0, 0, 60,  0,   0,   0,   0, 0, 0, 0,               // of the first interface
        4, 3, 2, 1, 8,   7,   6,   5,   5, 0, 0, 0, 9,  0, 0, 0,  // time, lengths
        1, 2, 3, 4, 5,   0,   0,   0,                             // the frame
        2, 0, 4, 0, 2,   0,   0,   0,                             // outbound
        1, 0, 4, 0, 'v', 'l', 'a', 'n', 0, 0, 0, 0, 60, 0, 0, 0,
    };
    EXPECT_EQ(written(), block);
}

TEST_F(PcapngTest, LeavesOutWhatIsNotKnown) {
    writer_.add_interface("port7");
    written();
    writer_.add_frame(frame_with(FrameDirection::kUnknown, ""));
    const Octets block = written();
    EXPECT_EQ(block.size(), 44U);
    EXPECT_EQ(Octets(block.end() - 8, block.end()), (Octets{0, 0, 0, 0, 44, 0, 0, 0}));
}

TEST_F(PcapngTest, CutsACommentThatIsTooLong) {
    writer_.add_interface("port7");
    written();
    writer_.add_frame(frame_with(FrameDirection::kUnknown, std::string(70000, 'x')));
    const Octets block = written();
    EXPECT_EQ(Octets(block.begin() + 36, block.begin() + 40), (Octets{1, 0, 0xFF, 0xFF}));
    EXPECT_EQ(block.size(), 44U + 4 + 65536);
}

TEST_F(PcapngTest, RefusesAFrameOfAnUnknownInterface) {
    EXPECT_THROW(writer_.add_frame(frame_with(FrameDirection::kInbound, "")), std::invalid_argument);
}

TEST_F(PcapngTest, WritesByItselfWhenMuchHasGathered) {
    writer_.add_interface("port7");
    for (int i = 0; i < 2000; ++i) {
        writer_.add_frame(frame_with(FrameDirection::kInbound, ""));
    }
    EXPECT_GT(lseek(file_.get(), 0, SEEK_END), 64 << 10);
}

void expect_failure(int descriptor, int reason, const char *sentence) {
    PcapngWriter writer{descriptor, "the capture", "test"};
    try {
        writer.flush();
        FAIL() << "nothing was said";
    } catch (const CaptureWriteError &error) {
        EXPECT_EQ(error.reason(), reason);
        EXPECT_THAT(error.what(), StrEq(sentence));
    }
}

TEST(Pcapng, TellsThatTheDiskIsFull) {
    const vdevice::UniqueFd full{open("/dev/full", O_WRONLY | O_CLOEXEC)};
    expect_failure(full.get(), ENOSPC, "cannot write the capture: No space left on device.");
}

TEST(Pcapng, TellsThatTheReaderHasGone) {
    ASSERT_NE(signal(SIGPIPE, SIG_IGN), SIG_ERR);
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    const vdevice::UniqueFd writing{ends[1]};
    close(ends[0]);
    expect_failure(writing.get(), EPIPE, "cannot write the capture: Broken pipe.");
}

}  // namespace pcapng_test
