// Reads from the control socket, line by line.
#include "tools/vdevctl/lines.h"

#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <string_view>

#include "tools/vdevctl/client.h"
#include "vdevice/sockets/device_socket.h"
#include "vdevice/sockets/run_dir.h"

namespace vdevctl {
namespace {

using nlohmann::json;

/** Far more than any line of a device. */
constexpr size_t kMaxLine = 1 << 20;
constexpr std::chrono::seconds kDeadline{5};

std::runtime_error failure(const std::string &action) {
    return std::runtime_error{"cannot " + action + " the device: " + vdevice::connect_problem(errno) + "."};
}

}  // namespace

Lines::Lines(const std::string &run_dir, const json &request) {
    vdevice::ask_device(run_dir, {{"command", "version"}});  // it says it best if there is none
    const std::string path = vdevice::control_socket(run_dir);
    const std::string line = request.dump() + "\n";
    errno = vdevice::connect_to_device(fd_, path, Clock::now() + kDeadline);
    if (errno != 0 || send(fd_.get(), line.data(), line.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(line.size())) {
        throw failure("ask");
    }
    const auto first = next(Clock::now() + kDeadline);
    if (!first) {
        throw std::runtime_error{"the device gave no answer in time."};
    }
    first_ = *first;
}

std::optional<json> Lines::next(const std::optional<Clock::time_point> &end, int ending) {
    while (!has_next()) {
        if (!receive(end, ending)) {
            return std::nullopt;
        }
    }
    const size_t length = received_.find('\n');
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

bool Lines::receive(const std::optional<Clock::time_point> &end, int ending) {
    constexpr int64_t kForEver = -1;
    const int64_t left = end ? std::chrono::ceil<std::chrono::milliseconds>(*end - Clock::now()).count() : kForEver;
    std::array<pollfd, 2> waiting = {{{fd_.get(), POLLIN, 0}, {ending, POLLIN, 0}}};
    if ((end && left <= 0) || poll(waiting.data(), waiting.size(), static_cast<int>(left)) == 0 ||
        (waiting[1].revents & POLLIN) != 0) {
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

}  // namespace vdevctl
