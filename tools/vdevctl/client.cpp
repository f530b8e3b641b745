// Connects to the control socket, with a deadline for every step.
#include "tools/vdevctl/client.h"

#include <sys/socket.h>
#include <sys/time.h>

#include <array>
#include <cerrno>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <system_error>

#include "vdevice/sockets/run_dir.h"
#include "vdevice/sockets/unique_fd.h"
#include "vdevice/sockets/unix_address.h"

namespace vdevice {
namespace {

constexpr timeval kDeadline{5, 0};

std::runtime_error failure(const std::string &action, const std::string &path) {
    const int reason = errno;
    const std::string start = "cannot " + action + " the device at " + path + ": ";
    if (reason == ENOENT || reason == ECONNREFUSED) {
        return std::runtime_error{start + "no vdeviced is running there. Start it, or name its folder with --run-dir " +
                                  "or in VDEVICE_DIR."};
    }
    return std::runtime_error{start + std::generic_category().message(reason) + "."};
}

UniqueFd connect_to(const std::string &path) {
    const auto address = unix_address(path);
    if (!address) {
        throw std::runtime_error{"cannot reach the device at " + path + ": the name is too long for a socket."};
    }
    UniqueFd fd{socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    setsockopt(fd.get(), SOL_SOCKET, SO_RCVTIMEO, &kDeadline, sizeof(kDeadline));
    setsockopt(fd.get(), SOL_SOCKET, SO_SNDTIMEO, &kDeadline, sizeof(kDeadline));
    if (connect(fd.get(), reinterpret_cast<const sockaddr *>(&*address), sizeof(*address)) != 0) {
        throw failure("reach", path);
    }
    return fd;
}

std::string exchange(int fd, const std::string &request, const std::string &path) {
    if (send(fd, request.data(), request.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(request.size())) {
        throw failure("ask", path);
    }
    std::string answer;
    std::array<char, 65536> buffer;
    while (answer.empty() || answer.back() != '\n') {
        const ssize_t length = recv(fd, buffer.data(), buffer.size(), 0);
        if (length < 0) {
            throw failure("hear from", path);
        }
        if (length == 0) {
            throw std::runtime_error{"the device at " + path + " closed the connection without an answer."};
        }
        answer.append(buffer.data(), static_cast<size_t>(length));
    }
    return answer;
}

}  // namespace

nlohmann::json ask_device(const std::string &run_dir, const nlohmann::json &request) {
    const std::string path = control_socket(run_dir);
    const UniqueFd fd = connect_to(path);
    nlohmann::json answer = nlohmann::json::parse(exchange(fd.get(), request.dump() + "\n", path), nullptr, false);
    if (!answer.is_object()) {
        throw std::runtime_error{"the device at " + path + " gave an answer that cannot be read."};
    }
    if (const auto error = answer.find("error"); error != answer.end()) {
        throw std::runtime_error{error->get<std::string>()};
    }
    return answer;
}

}  // namespace vdevice
