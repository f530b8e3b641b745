// Reads hexadecimal digits itself and capture files with libpcap. Files are anybody's: none does more than fail.
#include "tools/vdevctl/frame_input.h"

#include <pcap/pcap.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

namespace vdevctl {
namespace {

constexpr size_t kMaxFrame = 65535;
constexpr size_t kMaxInput = size_t{64} << 20;
constexpr const char *kForms = "A frame is given as ff:ff:ff:..., FILE.pcap[:K], FILE.pcapng[:K] or -";

struct CloseFile {
    void operator()(FILE *file) const { fclose(file); }
};
struct CloseCapture {
    void operator()(pcap_t *capture) const { pcap_close(capture); }
};
using File = std::unique_ptr<FILE, CloseFile>;
using Capture = std::unique_ptr<pcap_t, CloseCapture>;

[[noreturn]] void refuse(const std::string &sentence) {
    throw std::runtime_error{sentence + "."};
}

std::string reason_of(int error) {
    return std::generic_category().message(error);
}

/** The frame, if its length is one that a frame can have. */
Octets checked(Octets frame, const std::string &name) {
    if (frame.empty()) {
        refuse(name + " has no octets");
    }
    if (frame.size() > kMaxFrame) {
        refuse(name + " has more than " + std::to_string(kMaxFrame) + " octets");
    }
    return frame;
}

/** Octets of two digits each, with white space or single colons between them. */
class HexReader {
  public:
    HexReader(std::string_view text, const std::string &name) : text_{text}, name_{name} {}

    Octets read() {
        for (; at_ < text_.size() && frame_.size() <= kMaxFrame; ++at_) {
            if (text_[at_] == ':') {
                take_colon();
            } else if (!is_blank(text_[at_])) {
                take_octet();
            }
        }
        if (wants_octet_) {
            refuse_place("an octet is missing after the last colon");
        }
        return checked(std::move(frame_), name_);
    }

  private:
    /** What is no visible character would end or disturb a message. */
    static std::string shown(char c) {
        const auto octet = static_cast<uint8_t>(c);
        return octet > ' ' && octet <= '~' ? std::string{"'"} + c + "'" : "an octet of value " + std::to_string(octet);
    }

    static bool is_blank(char c) { return std::string_view{" \t\r\n"}.find(c) != std::string_view::npos; }

    void take_colon() {
        if (frame_.empty() || wants_octet_) {
            refuse_place("an octet is missing in front of the colon");
        }
        wants_octet_ = true;
    }

    void take_octet() {
        const uint8_t high = digit();
        ++at_;
        if (at_ == text_.size() || text_[at_] == ':' || is_blank(text_[at_])) {
            --at_;
            refuse_place("an octet has two hexadecimal digits, and this one has one");
        }
        frame_.push_back(static_cast<uint8_t>(high << 4 | digit()));
        wants_octet_ = false;
    }

    uint8_t digit() const {
        uint8_t value = 0;
        const char *const start = text_.data() + at_;
        if (std::from_chars(start, start + 1, value, 16).ec != std::errc{}) {
            refuse_place(shown(*start) + " is not a hexadecimal digit");
        }
        return value;
    }

    [[noreturn]] void refuse_place(const std::string &problem) const {
        const std::string_view before = text_.substr(0, at_);
        const auto line = std::count(before.begin(), before.end(), '\n') + 1;
        const size_t column = before.size() - (line == 1 ? 0 : before.rfind('\n') + 1) + 1;
        refuse(name_ + " cannot be read at " + (line == 1 ? "" : "line " + std::to_string(line) + ", ") + "character " +
               std::to_string(column) + ": " + problem + ". " + kForms);
    }

    std::string_view text_;
    const std::string &name_;
    size_t at_ = 0;
    bool wants_octet_ = false;
    Octets frame_;
};

Capture open_capture(File file, const std::string &name) {
    std::array<char, PCAP_ERRBUF_SIZE> problem{};
    Capture capture{pcap_fopen_offline(file.get(), problem.data())};
    if (!capture) {
        refuse(name + " cannot be read as a capture file: " + problem.data());
    }
    static_cast<void>(file.release());  // libpcap closes it
    const int type = pcap_datalink(capture.get());
    if (type != DLT_EN10MB) {
        const char *known = pcap_datalink_val_to_name(type);
        refuse(name + " has frames of the link type " + (known != nullptr ? known : std::to_string(type)) +
               ", not of Ethernet");
    }
    return capture;
}

Octets frame_of(File file, uint64_t number, const std::string &name) {
    const Capture capture = open_capture(std::move(file), name);
    pcap_pkthdr *header = nullptr;
    const u_char *octets = nullptr;
    for (uint64_t at = 1; at <= number; ++at) {
        const int result = pcap_next_ex(capture.get(), &header, &octets);
        if (result == PCAP_ERROR_BREAK) {
            refuse(name + " has " + std::to_string(at - 1) + (at == 2 ? " frame" : " frames") +
                   ", and none is number " + std::to_string(number));
        }
        if (result != 1) {
            refuse("frame " + std::to_string(at) + " of " + name + " cannot be read: " + pcap_geterr(capture.get()));
        }
    }
    const std::string frame = "frame " + std::to_string(number) + " of " + name;
    if (header->caplen < header->len) {
        refuse(frame + " is not whole: the file has " + std::to_string(header->caplen) + " of its " +
               std::to_string(header->len) + " octets");
    }
    return checked({octets, octets + header->caplen}, frame);
}

bool is_capture(std::span<const uint8_t> content) {
    using Magic = std::array<uint8_t, 4>;
    // pcap with microseconds and nanoseconds, in either byte order, and pcapng.
    constexpr Magic kMagics[] = {{0xA1, 0xB2, 0xC3, 0xD4},
                                 {0xD4, 0xC3, 0xB2, 0xA1},
                                 {0xA1, 0xB2, 0x3C, 0x4D},
                                 {0x4D, 0x3C, 0xB2, 0xA1},
                                 {0x0A, 0x0D, 0x0D, 0x0A}};
    return std::any_of(std::begin(kMagics), std::end(kMagics), [content](const Magic &magic) {
        return content.size() >= magic.size() && std::equal(magic.begin(), magic.end(), content.begin());
    });
}

Octets content_of(FILE *input) {
    Octets content;
    std::array<uint8_t, 65536> piece;
    while (const size_t length = fread(piece.data(), 1, piece.size(), input)) {
        content.insert(content.end(), piece.begin(), piece.begin() + static_cast<ptrdiff_t>(length));
        if (content.size() > kMaxInput) {
            refuse("standard input has more than " + std::to_string(kMaxInput >> 20) + " MiB");
        }
    }
    if (ferror(input) != 0) {
        refuse("cannot read standard input: " + reason_of(errno));
    }
    return content;
}

bool is_file(std::string_view name) {
    return name == "-" || name.ends_with(".pcap") || name.ends_with(".pcapng");
}

uint64_t frame_number(std::string_view text) {
    uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size() || number == 0) {
        refuse("frames of a file have the numbers 1, 2, 3, ..., not '" + std::string{text} + "'");
    }
    return number;
}

Octets frame_from(const std::string &name, uint64_t number, FILE *input) {
    if (name == "-") {
        return frame_in(content_of(input), number, "standard input");
    }
    File file{fopen(name.c_str(), "rbe")};
    if (!file) {
        refuse("cannot read " + name + ": " + reason_of(errno));
    }
    return frame_of(std::move(file), number, name);
}

}  // namespace

Octets frame_in(std::span<const uint8_t> content, uint64_t number, const std::string &name) {
    if (!is_capture(content)) {
        if (number != 1) {
            refuse(name + " has 1 frame, given as digits, and none is number " + std::to_string(number));
        }
        return HexReader{{reinterpret_cast<const char *>(content.data()), content.size()}, name}.read();
    }
    Octets copy{content.begin(), content.end()};
    File file{fmemopen(copy.data(), copy.size(), "rb")};
    if (!file) {
        refuse("cannot read " + name + ": " + reason_of(errno));
    }
    return frame_of(std::move(file), number, name);
}

Octets read_frame(const std::string &word, FILE *input) {
    if (is_file(word)) {
        return frame_from(word, 1, input);
    }
    const size_t colon = word.rfind(':');
    if (colon != std::string::npos && is_file(word.substr(0, colon))) {
        return frame_from(word.substr(0, colon), frame_number(std::string_view{word}.substr(colon + 1)), input);
    }
    return HexReader{word, "the frame"}.read();
}

}  // namespace vdevctl
