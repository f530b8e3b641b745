// Looks at the folder's owner and mode.
#include "vdevice/sockets/private_folder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace vdevice {
namespace {

constexpr mode_t kOwnerOnly = 0700;
constexpr mode_t kOthersWrite = S_IWGRP | S_IWOTH;

}  // namespace

int check_private_folder(const std::string &path) {
    // Under /tmp another user may have been first. lstat, since a link could point to any folder.
    struct stat found {};
    if (lstat(path.c_str(), &found) != 0) {
        return errno;
    }
    const bool is_trusted = found.st_uid == geteuid() || found.st_uid == 0;
    return S_ISDIR(found.st_mode) && is_trusted && (found.st_mode & kOthersWrite) == 0 ? 0 : EPERM;
}

int make_private_folder(const std::string &path) {
    if (mkdir(path.c_str(), kOwnerOnly) != 0 && errno != EEXIST) {
        return errno;
    }
    return check_private_folder(path);
}

}  // namespace vdevice
