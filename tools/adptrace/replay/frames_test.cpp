// Frames that the library sends.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tools/adptrace/replay/testing/fakes.h"

namespace frames_test {

using namespace adptrace::replay;
using testing::HasSubstr;

/** A library that sends a frame as libadp does. */
struct SendingLibrary : FakeLibrary {
    int index = 0;
    int descriptor = -1;
    SendingLibrary() {
        functions["adp_transmit_frame"] = [this](const void *const *) -> int64_t {
            descriptor = socket(AF_PACKET, SOCK_RAW, 0x0800);
            ifreq request = {};
            index = ioctl(descriptor, SIOCGIFINDEX, &request) == 0 ? request.ifr_ifindex : -1;
            const char frame[64] = {};
            const sockaddr_ll address{};
            const ssize_t sent = sendto(descriptor, frame, sizeof frame, 0,
                                        reinterpret_cast<const sockaddr *>(&address), sizeof address);
            close(descriptor);
            return sent == sizeof frame ? 0 : -1;
        };
    }
};

constexpr char kFrameArguments[] = R"({"frame":"0180c2000001020304050607","length":12,"unused":0,"intf":1,"opcode":3})";

Text sending_recording(const std::string &result) {
    Text text;
    text.end(text.begin("adp_transmit_frame", kFrameArguments), result);
    return text;
}

TEST(ReplayFrames, FramesAreNotSentButAnsweredAsRecorded) {
    SendingLibrary library;
    EXPECT_EQ(replay(sending_recording("0").recording(), library, nullptr).said, "");
    EXPECT_GT(library.index, 0);
    EXPECT_EQ(fcntl(library.descriptor, F_GETFD), -1);
    EXPECT_EQ(replay(sending_recording("-1").recording(), library, nullptr).said, "");
    EXPECT_EQ(library.index, -1);
}

TEST(ReplayFrames, FramesAreSentIfWanted) {
    SendingLibrary library;
    const Played played = replay(sending_recording("0").recording(), library, nullptr, {.is_to_send_frames = true});
    EXPECT_EQ(library.index, -1);  // there is no interface without a name
    EXPECT_EQ(played.outcome.differences, 1U);
}

/** A frame that is sent within a call. */
std::string frame_line(uint64_t within, const std::string &octets) {
    return R"({"frame":"sent","within":)" + std::to_string(within) +
           R"(,"thread":1,"at":1,"interface":"eth0","octets":")" + octets + R"("})";
}

TEST(ReplayFrames, RecordedFramesAreCompared) {
    SendingLibrary library;
    const std::string zeros(2 * 64, '0');
    const auto recorded = [&](const std::vector<std::string> &frames) {
        Text text;
        const uint64_t number = text.begin("adp_transmit_frame", kFrameArguments);
        text.line(R"({"frame":"received","thread":1,"at":1,"interface":"eth0","octets":"00"})");
        for (const std::string &octets : frames) {
            text.line(frame_line(number, octets));
        }
        return replay(text.end(number).recording(), library, nullptr).said;
    };
    EXPECT_EQ(recorded({zeros}), "");
    EXPECT_THAT(recorded({"AB" + zeros}), HasSubstr("line 3: call 1, adp_transmit_frame: the frame of line 5 differs\n"
                                                    "  recorded: ab00"));
    EXPECT_THAT(recorded({}), HasSubstr("the number of frames differs\n  recorded: no frame\n  replayed: 0000"));
    EXPECT_THAT(recorded({zeros, "AB"}),
                HasSubstr("the frame of line 6 differs\n  recorded: AB\n  replayed: no frame"));
}

TEST(ReplayFrames, OtherDescriptorsOfTheProgramWorkAsEver) {
    const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
    ASSERT_GE(descriptor, 0);
    EXPECT_EQ(close(descriptor), 0);
    EXPECT_EQ(close(descriptor), -1);
}

}  // namespace frames_test
