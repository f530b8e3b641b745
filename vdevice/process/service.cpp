// Messages to systemd, as sd_notify(3) defines them: a datagram each. They are few enough for the target, where there
// is no library for them.
#include "vdevice/process/service.h"

#include <stddef.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdlib>

#include "text/printable.h"
#include "vdevice/sockets/unique_fd.h"
#include "vdevice/sockets/unix_address.h"

namespace vdevice::service {
namespace {

/** A name that begins with '@' is one without a file, whose first octet is 0. */
constexpr char kAbstract = '@';

void tell(const std::string &message) {
    const char *path = std::getenv("NOTIFY_SOCKET");
    auto address = unix_address(path == nullptr ? "" : path);
    if (!address || (address->sun_path[0] != '/' && address->sun_path[0] != kAbstract)) {
        return;
    }
    const size_t size = offsetof(sockaddr_un, sun_path) + std::string{path}.size();
    if (address->sun_path[0] == kAbstract) {
        address->sun_path[0] = '\0';
    }
    const UniqueFd manager{socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
    sendto(manager.get(), message.data(), message.size(), MSG_NOSIGNAL | MSG_DONTWAIT,
           reinterpret_cast<const sockaddr *>(&*address), static_cast<socklen_t>(size));
}

}  // namespace

void tell_ready() {
    tell("READY=1");
}

void tell_reloading() {
    using std::chrono::duration_cast, std::chrono::microseconds, std::chrono::steady_clock;
    const auto now = duration_cast<microseconds>(steady_clock::now().time_since_epoch());
    tell("RELOADING=1\nMONOTONIC_USEC=" + std::to_string(now.count()));
}

void tell_stopping() {
    tell("STOPPING=1");
}

void tell_alive() {
    tell("WATCHDOG=1");
}

void tell_status(const std::string &line) {
    tell("STATUS=" + text::on_one_line(line));
}

bool is_logging_to_journal() {
    // The variable names the stream by device and inode; standard error may have been redirected since.
    const char *named = std::getenv("JOURNAL_STREAM");
    struct stat found {};
    return named != nullptr && fstat(STDERR_FILENO, &found) == 0 &&
           named == std::to_string(found.st_dev) + ":" + std::to_string(found.st_ino);
}

}  // namespace vdevice::service
