// Frames as users give them, and the sentence for each thing that is none.
#include "tools/vdevctl/frame_input.h"

#include <fcntl.h>
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <memory>

#include "tests/support/temporary_folder.h"
#include "tools/vdevctl/pcapng.h"
#include "vdevice/sockets/unique_fd.h"

namespace frame_input_test {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StrEq;
using vdevctl::Octets;

std::string little(uint32_t number) {
    std::string octets;
    for (int i = 0; i < 4; ++i, number >>= 8) {
        octets += static_cast<char>(number);
    }
    return octets;
}

constexpr uint32_t kEthernet = 1;
constexpr uint32_t kRaw = 101;

std::string pcap_head(uint32_t link_type = kEthernet) {
    return little(0xA1B2C3D4) + little(0x00040002) + little(0) + little(0) + little(262144) + little(link_type);
}

std::string packet(const std::string &frame, size_t length) {
    return little(0) + little(0) + little(static_cast<uint32_t>(frame.size())) + little(static_cast<uint32_t>(length)) +
           frame;
}

std::string packet(const std::string &frame) {
    return packet(frame, frame.size());
}

Octets octets_of(const std::string &text) {
    return {text.begin(), text.end()};
}

/** What read_frame says of a word and what is on the input. */
Octets read(const std::string &word, std::string input = "") {
    const std::unique_ptr<FILE, int (*)(FILE *)> file{fmemopen(input.data(), input.size(), "rb"), fclose};
    return vdevctl::read_frame(word, file.get());
}

std::string refusal(const std::string &word, const std::string &input = "") {
    try {
        return "a frame of " + std::to_string(read(word, input).size()) + " octets";
    } catch (const std::runtime_error &error) {
        return error.what();
    }
}

TEST(HexFrame, HasOctetsWithSpacesColonsOrNothingBetween) {
    EXPECT_THAT(read("ff:00:1a"), ElementsAre(0xFF, 0, 0x1A));
    EXPECT_THAT(read("FF001a"), ElementsAre(0xFF, 0, 0x1A));
    EXPECT_THAT(read("ff00 1a"), ElementsAre(0xFF, 0, 0x1A));
    EXPECT_THAT(read("-", "\n ff\t00:\r\n1a\n"), ElementsAre(0xFF, 0, 0x1A));
}

TEST(HexFrame, NamesThePlaceOfWhatIsNone) {
    const std::string forms = ". A frame is given as ff:ff:ff:..., FILE.pcap[:K], FILE.pcapng[:K] or -.";
    EXPECT_THAT(refusal("ff:0x1"),
                StrEq("the frame cannot be read at character 5: 'x' is not a hexadecimal digit" + forms));
    EXPECT_THAT(refusal("ff:f:ff"),
                StrEq("the frame cannot be read at character 4: an octet has two hexadecimal digits, and this one has "
                      "one" +
                      forms));
    EXPECT_THAT(refusal("fff"), HasSubstr("at character 3: an octet has two"));
    EXPECT_THAT(refusal("ff::ff"), HasSubstr("at character 4: an octet is missing in front of the colon"));
    EXPECT_THAT(refusal(":ff"), HasSubstr("at character 1: an octet is missing in front of the colon"));
    EXPECT_THAT(refusal("ff:"), HasSubstr("at character 4: an octet is missing after the last colon"));
    EXPECT_THAT(refusal("-", "ff ff\nff f-"), HasSubstr("standard input cannot be read at line 2, character 5: '-'"));
    EXPECT_THAT(refusal("-", std::string{"ff\0", 3}), HasSubstr("character 3: an octet of value 0 is not"));
    EXPECT_THAT(refusal("capture.pcap.gz"), HasSubstr("at character 3: 'p'"));
}

TEST(HexFrame, HasFrom1To65535Octets) {
    EXPECT_THAT(refusal(""), StrEq("the frame has no octets."));
    EXPECT_THAT(refusal("-", " \n"), StrEq("standard input has no octets."));
    EXPECT_THAT(read("-", std::string(2 * 65535, 'a')), SizeIs(65535));
    EXPECT_THAT(refusal("-", std::string(2 * 65536, 'a')), StrEq("standard input has more than 65535 octets."));
    EXPECT_THAT(refusal("-:2", "ff"), StrEq("standard input has 1 frame, given as digits, and none is number 2."));
}

TEST(CaptureInput, IsSeenByItsFirstOctets) {
    EXPECT_THAT(read("-", pcap_head() + packet("ab") + packet("cde")), ElementsAre('a', 'b'));
    EXPECT_THAT(read("-:2", pcap_head() + packet("ab") + packet("cde")), ElementsAre('c', 'd', 'e'));
}

class CaptureFile : public testing::Test {
  protected:
    /** The word for a file with this content. */
    std::string file(const std::string &content, const std::string &name = "a.pcap") {
        std::ofstream{path(name), std::ios::binary} << content;
        return path(name);
    }
    [[nodiscard]] std::string path(const std::string &name) const { return folder_.path() + "/" + name; }

    TemporaryFolder folder_;
};

TEST_F(CaptureFile, GivesItsKthFrame) {
    const std::string word = file(pcap_head() + packet("ab") + packet("cde"));
    EXPECT_THAT(read(word), ElementsAre('a', 'b'));
    EXPECT_THAT(read(word + ":1"), ElementsAre('a', 'b'));
    EXPECT_THAT(read(word + ":2"), ElementsAre('c', 'd', 'e'));
}

TEST_F(CaptureFile, IsAlsoPcapng) {
    const vdevice::UniqueFd written{open(path("a:1.pcapng").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600)};
    vdevctl::PcapngWriter writer{written.get(), "a:1.pcapng", "test"};
    const uint32_t first = writer.add_interface("port1");
    const uint32_t second = writer.add_interface("port2");
    for (const auto &[interface, text] : {std::pair{first, "abc"}, std::pair{second, "defgh"}}) {
        const Octets frame = octets_of(text);
        const auto length = static_cast<uint32_t>(frame.size());
        writer.add_frame({.interface = interface, .octets = frame, .length = length, .comment = "why"});
    }
    writer.flush();
    EXPECT_THAT(read(path("a:1.pcapng")), ElementsAre('a', 'b', 'c'));
    EXPECT_THAT(read(path("a:1.pcapng") + ":2"), ElementsAre('d', 'e', 'f', 'g', 'h'));
}

TEST_F(CaptureFile, IsThere) {
    EXPECT_THAT(refusal(path("no.pcap")), StrEq("cannot read " + path("no.pcap") + ": No such file or directory."));
}

TEST_F(CaptureFile, HasTheFrame) {
    const std::string word = file(pcap_head() + packet("ab"));
    EXPECT_THAT(refusal(word + ":2"), StrEq(word + " has 1 frame, and none is number 2."));
    EXPECT_THAT(refusal(file(pcap_head(), "none.pcap")), HasSubstr("none.pcap has 0 frames, and none is number 1."));
    EXPECT_THAT(refusal(word + ":0"), StrEq("frames of a file have the numbers 1, 2, 3, ..., not '0'."));
    EXPECT_THAT(refusal(word + ":1x"), HasSubstr("not '1x'"));
    EXPECT_THAT(refusal(word + ":99999999999999999999"), HasSubstr("not '99999999999999999999'"));
}

TEST_F(CaptureFile, IsACaptureFile) {
    const std::string word = file("these are words, enough of them for the head of a file");
    EXPECT_THAT(refusal(word), StrEq(word + " cannot be read as a capture file: unknown file format."));
    EXPECT_THAT(refusal(file("", "b.pcap")), HasSubstr("b.pcap cannot be read as a capture file: "));
}

TEST_F(CaptureFile, IsOfEthernet) {
    EXPECT_THAT(refusal(file(pcap_head(kRaw) + packet("ab"))),
                HasSubstr("a.pcap has frames of the link type RAW, not of Ethernet."));
}

TEST_F(CaptureFile, IsWhole) {
    const std::string cut = pcap_head() + packet("ab") + packet("cd").substr(0, 17);
    const std::string word = file(cut);
    EXPECT_THAT(read(word), ElementsAre('a', 'b'));
    EXPECT_THAT(refusal(word + ":2"), HasSubstr("frame 2 of " + word + " cannot be read: truncated dump file"));
    EXPECT_THAT(refusal(file(pcap_head().substr(0, 20), "b.pcap")), HasSubstr("as a capture file: truncated"));
}

TEST_F(CaptureFile, HasWholeFramesFrom1To65535Octets) {
    const std::string word = file(pcap_head() + packet("") + packet(std::string(65536, 'a')) + packet("ab", 64));
    EXPECT_THAT(refusal(word + ":1"), StrEq("frame 1 of " + word + " has no octets."));
    EXPECT_THAT(refusal(word + ":2"), StrEq("frame 2 of " + word + " has more than 65535 octets."));
    EXPECT_THAT(refusal(word + ":3"), StrEq("frame 3 of " + word + " is not whole: the file has 2 of its 64 octets."));
}

TEST_F(CaptureFile, IsNoFolder) {
    std::filesystem::create_directory(path("folder.pcap"));
    EXPECT_THAT(refusal(path("folder.pcap")), HasSubstr("Is a directory"));
}

}  // namespace frame_input_test
