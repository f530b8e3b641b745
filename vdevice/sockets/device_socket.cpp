// Connects, and makes sure that no other user is at the other end.
#include "vdevice/sockets/device_socket.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "vdevice/sockets/private_folder.h"
#include "vdevice/sockets/unix_address.h"

namespace vdevice {
namespace {

constexpr int kRetryMilliseconds = 10;

/** The other end is the user that the process was when it began to listen. */
int check_peer(int socket) {
    ucred peer{};
    socklen_t size = sizeof(peer);
    if (getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) {
        return errno;
    }
    return peer.uid == geteuid() || peer.uid == 0 ? 0 : EPERM;
}

}  // namespace

UniqueFd unix_socket() {
    UniqueFd opened{socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)};
    // What the program prints on a closed standard output would go to the device.
    if (opened && opened.get() <= STDERR_FILENO) {
        opened = UniqueFd{fcntl(opened.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1)};
    }
    return opened;
}

int connect_to_device(UniqueFd &socket, const std::string &path, std::chrono::steady_clock::time_point end) {
    const auto address = unix_address(path);
    if (!address) {
        return ENAMETOOLONG;
    }
    if (const int error = check_private_folder(std::filesystem::path(path).parent_path()); error != 0) {
        return error;
    }
    socket = unix_socket();
    if (!socket) {
        return errno;
    }
    // A device that is too busy to accept gives EAGAIN at once instead of letting the caller wait.
    while (connect(socket.get(), reinterpret_cast<const sockaddr *>(&*address), sizeof(*address)) != 0) {
        if (errno != EINTR && (errno != EAGAIN || std::chrono::steady_clock::now() >= end)) {
            return errno;
        }
        poll(nullptr, 0, kRetryMilliseconds);
    }
    return check_peer(socket.get());
}

std::string connect_problem(int error) {
    switch (error) {
        case ENOENT:
        case ECONNREFUSED:
            return "no vdeviced is running there. Start it, or name its folder in VDEVICE_DIR";
        case EPERM:
            return "it is another user's, or others may write to its folder";
        case ENAMETOOLONG:
            return "the name is too long for a socket";
        default:
            return std::generic_category().message(error);
    }
}

}  // namespace vdevice
