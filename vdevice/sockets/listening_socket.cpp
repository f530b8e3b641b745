// Makes the socket and its file, and removes that file only.
#include "vdevice/sockets/listening_socket.h"

#include <sys/socket.h>
#include <sys/stat.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "vdevice/sockets/unix_address.h"

namespace vdevice {
namespace {

/** Clients that may wait to be accepted; the system's limit may be lower. */
constexpr int kBacklog = 128;

std::runtime_error failure(const std::string &path, const std::string &reason) {
    return std::runtime_error{"cannot listen on " + path + ": " + reason + "."};
}

std::runtime_error failure_from_errno(const std::string &path) {
    return failure(path, std::generic_category().message(errno));
}

sockaddr_un address_of(const std::string &path) {
    const auto address = unix_address(path);
    if (!address) {
        throw failure(path, "the path is too long for a socket");
    }
    return *address;
}

void remove_stale(const std::string &path) {
    struct stat found {};
    if (lstat(path.c_str(), &found) != 0) {
        return;  // bind() will say what is wrong, if anything is
    }
    if (!S_ISSOCK(found.st_mode)) {
        throw failure(path, "a file of that name is there, and it is no socket. Move it away");
    }
    unlink(path.c_str());
}

}  // namespace

ListeningSocket::ListeningSocket(std::string path)
    : path_{std::move(path)}, fd_{socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)} {
    const sockaddr_un address = address_of(path_);
    remove_stale(path_);
    struct stat own {};
    if (!fd_ || bind(fd_.get(), reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0 ||
        listen(fd_.get(), kBacklog) != 0 || lstat(path_.c_str(), &own) != 0) {
        throw failure_from_errno(path_);
    }
    device_ = own.st_dev;
    inode_ = own.st_ino;
}

ListeningSocket::~ListeningSocket() {
    if (is_in_place()) {
        unlink(path_.c_str());
    }
}

bool ListeningSocket::is_in_place() const {
    struct stat found {};
    return lstat(path_.c_str(), &found) == 0 && found.st_dev == device_ && found.st_ino == inode_;
}

UniqueFd ListeningSocket::accept() {
    UniqueFd client{accept4(fd(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC)};
    exhausted_ = !client && (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM);
    return client;
}

}  // namespace vdevice
