// Writes lines to the recording. Nothing here is a point at which a thread can be cancelled.
#include "tools/adptrace/record/sink.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "tools/adptrace/record/whole_line.h"

namespace adptrace::record {
namespace {

constexpr int kHighest = 1000; /**< of descriptors: select(2) has 1024 */

/**
 * A descriptor remembers a signal for its events (F_SETSIG), which are never asked for here. To ask for it is the
 * cheapest way to know a descriptor again: asking for the file costs more than twice as much.
 */
int mark(int fd) {
    const int signal = SIGRTMAX - 2;
    return fcntl(fd, F_SETSIG, signal) == 0 && fcntl(fd, F_GETSIG) == signal ? signal : 0;
}

/** Under a high number, where programs do not expect to find one. */
int raised(int fd) {
    for (int number = kHighest; number > fd; number /= 2) {
        if (const int high = fcntl(fd, F_DUPFD_CLOEXEC, number); high >= 0) {
            syscall(SYS_close, fd);
            return high;
        }
    }
    return fd;
}

bool is_file(int fd, uint64_t device, uint64_t inode) {
    struct stat status = {};
    return fstat(fd, &status) == 0 && status.st_dev == device && status.st_ino == inode;
}

}  // namespace

bool Sink::open(const char *path, uint64_t device, uint64_t inode) {
    path_ = path;
    device_ = device;
    inode_ = inode;
    struct stat errors = {};
    if (fstat(STDERR_FILENO, &errors) == 0) {
        errors_device_ = errors.st_dev;
        errors_inode_ = errors.st_ino;
    }
    read_limit();
    is_stopped_ = open_again() < 0;
    return !is_stopped_;
}

void Sink::read_limit() {
    struct rlimit limit = {};
    const bool is_limited = getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY;
    limit_ = is_limited ? static_cast<size_t>(std::min<uint64_t>(limit.rlim_cur, SIZE_MAX - 1)) : SIZE_MAX;
}

bool Sink::is_recording(int fd) const {
    if (fd < 0) {
        return false;
    }
    return mark_ != 0 ? fcntl(fd, F_GETSIG) == mark_ : is_file(fd, device_, inode_);
}

int Sink::open_again() {
    int fd = static_cast<int>(
        syscall(SYS_openat, AT_FDCWD, path_.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC | O_LARGEFILE | O_NOCTTY));
    if (fd >= 0 && !is_file(fd, device_, inode_)) {
        syscall(SYS_close, fd);
        fd = -1;
        errno = ESTALE;
    }
    if (fd >= 0) {
        fd = raised(fd);
        mark_ = mark(fd);
        fd_ = fd;
    }
    return fd;
}

/** A file that has reached the process's limit must not be written to: the signal would end the program. */
bool Sink::has_room(int fd, size_t size) const {
    const size_t limit = limit_.load(std::memory_order_relaxed);
    struct stat status = {};
    return limit == SIZE_MAX || (fstat(fd, &status) == 0 && static_cast<uint64_t>(status.st_size) + size <= limit);
}

void Sink::write_line(const char *text, size_t size) {
    if (is_stopped()) {
        return;
    }
    int fd = fd_;
    if (!is_recording(fd)) {
        fd = open_again();
        if (fd < 0) {
            return stop(errno);
        }
    }
    if (!has_room(fd, size)) {
        return stop(EFBIG);
    }
    if (const int error = append_whole(fd, text, size); error != 0) {
        stop(error);
    }
}

void Sink::stop(int error) {
    if (is_stopped_.exchange(true)) {
        return;
    }
    if (!is_file(STDERR_FILENO, errors_device_, errors_inode_)) {
        return;  // the program has made something else of it
    }
    const std::string sentence =
        "adptrace: the recording stops, and the program goes on: " + path_ + ": " + std::strerror(error) + ".\n";
    [[maybe_unused]] const auto result = syscall(SYS_write, STDERR_FILENO, sentence.data(), sentence.size());
}

}  // namespace adptrace::record
