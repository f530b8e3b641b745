// The lock is on the folder itself: no file needs to be left there, and the system's cleaners of /tmp leave a locked
// folder alone.
#include "vdevice/process/run_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <functional>
#include <thread>

#include "vdevice/io/error.h"
#include "vdevice/sockets/private_folder.h"

namespace vdevice {
namespace {

/** Long enough for the processes that a killed daemon has started: they end by themselves, and hold the lock so long.
 */
constexpr std::chrono::seconds kPatience{1};
constexpr std::chrono::milliseconds kPause{10};

bool lock(const UniqueFd &folder) {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (flock(folder.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK || std::chrono::steady_clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(kPause);
    }
    return true;
}

void make_folder(const std::string &path, const std::string &variable) {
    errno = make_private_folder(path);
    if (errno == EPERM) {
        throw io::Error{"cannot use " + path +
                        ": it is not a folder that belongs to this user alone. Name another one " +
                        "with --run-dir or in " + variable + "."};
    }
    if (errno != 0) {
        throw io::error_from_errno("make the folder " + path);
    }
}

UniqueFd locked_folder(const std::string &path, const std::string &program) {
    // Processes that this one starts inherit the descriptor, so that nobody else makes interfaces at the same time.
    UniqueFd folder{open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW)};
    if (!folder) {
        throw io::error_from_errno("open the folder " + path);
    }
    if (!lock(folder)) {
        if (errno == EWOULDBLOCK) {
            throw io::Error{"cannot use " + path + ": another " + program + " is running there."};
        }
        throw io::error_from_errno("lock the folder " + path);
    }
    return folder;
}

/** Whether it is what stands at the path now: another process may have removed it and made another one. */
bool is_at(const std::string &path, const UniqueFd &folder) {
    struct stat own {};
    struct stat found {};
    return fstat(folder.get(), &own) == 0 && lstat(path.c_str(), &found) == 0 && own.st_dev == found.st_dev &&
           own.st_ino == found.st_ino;
}

}  // namespace

RunFolder::RunFolder(const std::string &path, const char *program, const char *variable) {
    do {
        make_folder(path, variable);
        folder_ = locked_folder(path, program);
    } while (!is_at(path, folder_));
}

// From the inode, which no other folder has while this one is open. Groups of interfaces are numbers from 1 to 2^31
// - 1.
uint32_t RunFolder::mark() const {
    constexpr uint32_t kLargest = 0x7FFFFFFF;
    struct stat own {};
    fstat(folder_.get(), &own);
    const std::string identity = std::to_string(own.st_dev) + ":" + std::to_string(own.st_ino);
    return static_cast<uint32_t>(std::hash<std::string>{}(identity)) % kLargest + 1;
}

}  // namespace vdevice
