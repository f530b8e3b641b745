// Writes captures as files that Wireshark reads, pcapng: with the port, direction and fate of each frame.
//
// By hand, because libpcap writes only the older format, and the library behind Wireshark has no stable interface.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <chrono>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace vdevctl {

/** As seen from the device. */
enum class FrameDirection : uint8_t { kUnknown = 0, kInbound = 1, kOutbound = 2 };

struct CapturedFrame {
    uint32_t interface = 0;           /**< what add_interface() gave */
    std::chrono::nanoseconds time{0}; /**< since 1970, UTC */
    FrameDirection direction = FrameDirection::kUnknown;
    std::span<const uint8_t> octets; /**< what was kept of the frame */
    uint32_t length = 0;             /**< of the whole frame, on the wire */
    std::string_view comment;        /**< UTF-8; empty for none */
};

/** A sentence, and why the write failed: EPIPE if the reader of a pipe has gone away. */
class CaptureWriteError : public std::runtime_error {
  public:
    CaptureWriteError(const std::string &file, int reason);
    [[nodiscard]] int reason() const { return reason_; }

  private:
    int reason_;
};

/**
 * Writes one section to a file descriptor, which stays the caller's. What is added is kept until flush(), or until 64
 * KiB have gathered; each call may throw a CaptureWriteError.
 */
class PcapngWriter {
  public:
    /**
     * @param file         the descriptor's name, for messages
     * @param application  what wrote the capture, "vdevctl 0.1.0"
     */
    PcapngWriter(int descriptor, std::string file, std::string_view application);

    /** Adds an Ethernet interface, "port7"; the first is 0. */
    uint32_t add_interface(std::string_view name);
    /** Throws a std::invalid_argument for an interface that was not added. */
    void add_frame(const CapturedFrame &frame);
    void flush();

  private:
    void gathered();

    int descriptor_;
    std::string file_;
    uint32_t interfaces_ = 0;
    std::string gathered_;
};

}  // namespace vdevctl
