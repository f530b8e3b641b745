// The lock is on the folder itself: no file needs to be left there, and the system's cleaners of /tmp leave a locked
// folder alone.
#include "vdevice/daemon/run_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>

#include "vdevice/daemon/private_folder.h"
#include "vdevice/io/error.h"

namespace vdevice {
namespace {

UniqueFd locked_folder(const std::string &path) {
    make_private_folder(path);
    UniqueFd folder{open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)};
    if (!folder) {
        throw io::error_from_errno("open the folder " + path);
    }
    if (flock(folder.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK) {
            throw io::Error{"cannot use " + path + ": another vdeviced is running there."};
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

RunFolder::RunFolder(const std::string &path) {
    do {
        folder_ = locked_folder(path);
    } while (!is_at(path, folder_));
}

}  // namespace vdevice
