// The blocks of pcapng. Numbers are little-endian on every machine; the section header tells readers so.
#include "tools/vdevctl/pcapng.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <system_error>
#include <utility>

namespace vdevctl {
namespace {

constexpr size_t kGatherBytes = size_t{64} << 10;
constexpr size_t kAlignment = 4;
constexpr unsigned kWordBits = 32;
constexpr unsigned kByteBits = 8;

enum BlockType : uint32_t { kInterfaceBlock = 1, kPacketBlock = 6, kSectionBlock = 0x0A0D0D0A };
enum OptionCode : uint16_t {
    kEndOfOptions = 0,
    kComment = 1,
    kPacketFlags = 2,
    kInterfaceName = 2,
    kSystem = 3,
    kApplication = 4,
    kTimeResolution = 9,
};

constexpr uint32_t kByteOrderMagic = 0x1A2B3C4D;
constexpr uint16_t kEthernet = 1;
constexpr char kNanoseconds = 9;

class Block {
  public:
    explicit Block(BlockType type) {
        number(static_cast<uint32_t>(type));
        number(uint32_t{0});  // the length, when it is known
    }

    template <typename Number>
    void number(Number value) {
        for (size_t octet = 0; octet < sizeof(Number); ++octet) {
            octets_ += static_cast<char>(value >> (octet * kByteBits));
        }
    }

    void padded(std::string_view octets) {
        octets_ += octets;
        octets_.resize((octets_.size() + kAlignment - 1) / kAlignment * kAlignment);
    }

    /** A value that does not fit is cut. */
    void option(OptionCode code, std::string_view value) {
        const auto kept = value.substr(0, std::numeric_limits<uint16_t>::max());
        number(static_cast<uint16_t>(code));
        number(static_cast<uint16_t>(kept.size()));
        padded(kept);
    }

    std::string finished() {
        option(kEndOfOptions, "");
        const auto length = static_cast<uint32_t>(octets_.size() + sizeof(uint32_t));
        number(length);
        std::copy(octets_.end() - sizeof(length), octets_.end(), octets_.begin() + sizeof(uint32_t));
        return std::move(octets_);
    }

  private:
    std::string octets_;
};

std::string section(std::string_view application) {
    constexpr uint16_t kMajor = 1;
    constexpr uint16_t kMinor = 0;
    Block block{kSectionBlock};
    block.number(kByteOrderMagic);
    block.number(kMajor);
    block.number(kMinor);
    block.number(std::numeric_limits<uint64_t>::max());  // up to the end of the file
    block.option(kSystem, "Linux");
    block.option(kApplication, application);
    return block.finished();
}

}  // namespace

CaptureWriteError::CaptureWriteError(const std::string &file, int reason)
    : std::runtime_error{"cannot write " + file + ": " + std::generic_category().message(reason) + "."},
      reason_{reason} {}

PcapngWriter::PcapngWriter(int descriptor, std::string file, std::string_view application)
    : descriptor_{descriptor}, file_{std::move(file)}, gathered_{section(application)} {}

uint32_t PcapngWriter::add_interface(std::string_view name) {
    constexpr uint16_t kReserved = 0;
    constexpr uint32_t kWholeFrames = 0;
    Block block{kInterfaceBlock};
    block.number(kEthernet);
    block.number(kReserved);
    block.number(kWholeFrames);
    block.option(kInterfaceName, name);
    block.option(kTimeResolution, {&kNanoseconds, 1});
    gathered_ += block.finished();
    gathered();
    return interfaces_++;
}

void PcapngWriter::add_frame(const CapturedFrame &frame) {
    if (frame.interface >= interfaces_) {
        throw std::invalid_argument{"a captured frame is of interface " + std::to_string(frame.interface) +
                                    ", which was not added."};
    }
    const auto time = static_cast<uint64_t>(frame.time.count());
    Block block{kPacketBlock};
    block.number(frame.interface);
    block.number(static_cast<uint32_t>(time >> kWordBits));
    block.number(static_cast<uint32_t>(time));
    block.number(static_cast<uint32_t>(frame.octets.size()));
    block.number(frame.length);
    block.padded({reinterpret_cast<const char *>(frame.octets.data()), frame.octets.size()});
    if (frame.direction != FrameDirection::kUnknown) {
        const char flags[] = {static_cast<char>(frame.direction), 0, 0, 0};
        block.option(kPacketFlags, {flags, sizeof(flags)});
    }
    if (!frame.comment.empty()) {
        block.option(kComment, frame.comment);
    }
    gathered_ += block.finished();
    gathered();
}

void PcapngWriter::gathered() {
    if (gathered_.size() >= kGatherBytes) {
        flush();
    }
}

void PcapngWriter::flush() {
    std::string_view left = gathered_;
    while (!left.empty()) {
        const ssize_t written = write(descriptor_, left.data(), left.size());
        if (written >= 0) {
            left.remove_prefix(static_cast<size_t>(written));
        } else if (errno != EINTR) {
            throw CaptureWriteError{file_, errno};
        }
    }
    gathered_.clear();
}

}  // namespace vdevctl
