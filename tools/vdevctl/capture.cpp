// Frames from the device into a capture file.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "tools/vdevctl/frame_input.h"
#include "tools/vdevctl/lines.h"
#include "tools/vdevctl/pcapng.h"
#include "tools/vdevctl/stream.h"
#include "vdevice/sockets/unique_fd.h"

namespace vdevctl {
namespace {

using nlohmann::json;

constexpr const char *kStandardOutput = "-";

/** The file, empty; a file descriptor for standard output, too. */
vdevice::UniqueFd open_file(const std::string &file) {
    constexpr mode_t kMode = 0666;
    vdevice::UniqueFd fd{file == kStandardOutput ? dup(STDOUT_FILENO)
                                                 : open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kMode)};
    if (!fd) {
        throw CaptureWriteError{file, errno};
    }
    return fd;
}

/** Becomes readable when the program is to end. */
vdevice::UniqueFd interrupts() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return vdevice::UniqueFd{signalfd(-1, &signals, SFD_CLOEXEC)};
}

class CaptureFile {
  public:
    CaptureFile(int descriptor, const std::string &file, const json &first)
        : writer_{descriptor, file, std::string{"vdevctl "} + VDEVCTL_VERSION},
          start_{first.at("start").get<int64_t>()} {
        for (const json &port : first.at("ports")) {
            interfaces_[port.at("port").get<int>()] = writer_.add_interface(port.at("name").get<std::string>());
        }
        writer_.flush();
    }

    void take(const json &line) {
        if (line.contains("missed")) {
            missed_ += line.at("missed").get<uint64_t>();
            return;
        }
        const auto &digits = line.at("frame").get_ref<const std::string &>();
        const Octets octets =
            frame_in({reinterpret_cast<const uint8_t *>(digits.data()), digits.size()}, 1, "the frame");
        const std::string comment = line.value("comment", "");
        writer_.add_frame({interfaces_.at(line.at("port").get<int>()),
                           start_ + std::chrono::nanoseconds{line.at("time")},
                           line.at("direction") == "in" ? FrameDirection::kInbound : FrameDirection::kOutbound, octets,
                           static_cast<uint32_t>(octets.size()), comment});
        ++frames_;
    }
    void flush() { writer_.flush(); }
    uint64_t frames() const { return frames_; }
    uint64_t missed() const { return missed_; }

  private:
    PcapngWriter writer_;
    std::chrono::nanoseconds start_;
    std::map<int, uint32_t> interfaces_;
    uint64_t frames_ = 0;
    uint64_t missed_ = 0;
};

bool is_readable(int descriptor) {
    pollfd waiting{descriptor, POLLIN, 0};
    return poll(&waiting, 1, 0) > 0;
}

void take_frames(Lines &lines, CaptureFile &file, const StreamLimits &limits, int ending) {
    constexpr std::chrono::milliseconds kRest{200};
    auto end = limits.time ? std::optional{Lines::Clock::now() + *limits.time} : std::nullopt;
    while (!limits.count || file.frames() < *limits.count) {
        const auto line = lines.next(end, ending);
        if (!line && is_readable(ending)) {  // what the device has told until now still belongs to the capture
            end = Lines::Clock::now() + kRest;
            ending = -1;
            continue;
        }
        if (!line) {
            return;
        }
        file.take(*line);
        if (!lines.has_next()) {
            file.flush();  // so that a reader behind a pipe sees the frames as they come
        }
    }
}

}  // namespace

void capture(const std::string &run_dir, const json &request, const StreamLimits &limits, const std::string &file) {
    const vdevice::UniqueFd ending = interrupts();
    Lines lines{run_dir, request};
    const vdevice::UniqueFd descriptor = open_file(file);
    try {
        CaptureFile captured{descriptor.get(), file == kStandardOutput ? "standard output" : file, lines.first()};
        take_frames(lines, captured, limits, ending.get());
        captured.flush();
        std::fprintf(stderr, "%llu frames captured, %llu missed.\n", static_cast<unsigned long long>(captured.frames()),
                     static_cast<unsigned long long>(captured.missed()));
    } catch (const json::exception &) {
        throw std::runtime_error{"the device sent a line that cannot be read."};
    } catch (const CaptureWriteError &error) {
        if (error.reason() == EPIPE) {
            _exit(EXIT_FAILURE);  // who read it has gone away, and knows
        }
        throw;
    }
}

}  // namespace vdevctl
