// Reads lines until a limit is reached.
#include "tools/vdevctl/watch.h"

#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string_view>

#include "tools/vdevctl/answer_text.h"
#include "tools/vdevctl/client.h"
#include "tools/vdevctl/output.h"
#include "vdevice/sockets/device_socket.h"
#include "vdevice/sockets/run_dir.h"
#include "vdevice/sockets/unique_fd.h"

namespace vdevctl {
namespace {

using nlohmann::json;
using Clock = std::chrono::steady_clock;

/** Far more than any line of a device. */
constexpr size_t kMaxLine = 1 << 20;
constexpr std::chrono::seconds kDeadline{5};

std::runtime_error failure(const std::string &action) {
    return std::runtime_error{"cannot " + action + " the device: " + vdevice::connect_problem(errno) + "."};
}

class Lines {
  public:
    Lines(const std::string &run_dir, const json &request) {
        const std::string path = vdevice::control_socket(run_dir);
        const std::string line = request.dump() + "\n";
        errno = vdevice::connect_to_device(fd_, path, Clock::now() + kDeadline);
        if (errno != 0 ||
            send(fd_.get(), line.data(), line.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(line.size())) {
            throw failure("ask");
        }
    }

    /** The next line, or nothing at the end of the time. */
    std::optional<json> next(const std::optional<Clock::time_point> &end) {
        size_t length = 0;
        while ((length = received_.find('\n')) == std::string::npos) {
            if (!receive(end)) {
                return std::nullopt;
            }
        }
        json line = json::parse(std::string_view{received_}.substr(0, length), nullptr, false);
        received_.erase(0, length + 1);
        if (!line.is_object()) {
            throw std::runtime_error{"the device sent a line that cannot be read."};
        }
        if (const auto error = line.find("error"); error != line.end() && error->is_string()) {
            throw std::runtime_error{error->get<std::string>()};
        }
        return line;
    }

  private:
    bool receive(const std::optional<Clock::time_point> &end) {
        constexpr int64_t kForEver = -1;
        const int64_t left = end ? std::chrono::ceil<std::chrono::milliseconds>(*end - Clock::now()).count() : kForEver;
        pollfd waiting{fd_.get(), POLLIN, 0};
        if ((end && left <= 0) || poll(&waiting, 1, static_cast<int>(left)) == 0) {
            return false;
        }
        std::array<char, 65536> buffer;
        const ssize_t length = recv(fd_.get(), buffer.data(), buffer.size(), 0);
        if (length < 0 && errno != EINTR && errno != EAGAIN) {
            throw failure("hear from");
        }
        if (length == 0 || received_.size() > kMaxLine) {
            throw std::runtime_error{"the device has ended."};
        }
        received_.append(buffer.data(), length < 0 ? 0 : static_cast<size_t>(length));
        return true;
    }

    vdevice::UniqueFd fd_;
    std::string received_;
};

}  // namespace

void watch(const std::string &run_dir, const json &request, const WatchLimits &limits) {
    vdevice::ask_device(run_dir, {{"command", "version"}});  // it says it best if there is none
    Lines lines{run_dir, request};
    if (!lines.next(Clock::now() + kDeadline)) {
        throw std::runtime_error{"the device gave no answer in time."};
    }
    const auto end = limits.time ? std::optional{Clock::now() + *limits.time} : std::nullopt;
    for (uint64_t count = 0; !limits.count || count < *limits.count; ++count) {
        const auto line = lines.next(end);
        if (!line) {
            return;
        }
        print(request.at("form") == "text" ? text_of(*line) : compact_json_text(*line));
    }
}

}  // namespace vdevctl
