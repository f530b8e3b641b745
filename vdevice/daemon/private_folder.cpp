// Makes the folder and checks its owner.
#include "vdevice/daemon/private_folder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "vdevice/io/error.h"

namespace vdevice {
namespace {

constexpr mode_t kOwnerOnly = 0700;
constexpr mode_t kOthersWrite = S_IWGRP | S_IWOTH;

}  // namespace

void make_private_folder(const std::string &path) {
    if (mkdir(path.c_str(), kOwnerOnly) != 0 && errno != EEXIST) {
        throw io::error_from_errno("make the folder " + path);
    }
    // Under /tmp another user may have been first. lstat, since a link could point to any folder.
    struct stat found {};
    if (lstat(path.c_str(), &found) != 0) {
        throw io::error_from_errno("look at the folder " + path);
    }
    if (!S_ISDIR(found.st_mode) || found.st_uid != geteuid() || (found.st_mode & kOthersWrite) != 0) {
        throw io::Error{"cannot use " + path + ": it is not a folder that belongs to this user alone. Name " +
                        "another one with --run-dir or in VDEVICE_DIR."};
    }
}

}  // namespace vdevice
