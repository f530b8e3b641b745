#include "vdevice/daemon/run_dir.h"

#include <sys/stat.h>

#include <cerrno>

#include "vdevice/io/error.h"

namespace vdevice {
namespace {

constexpr mode_t kOwnerOnly = 0700;
constexpr mode_t kOthersWrite = S_IWGRP | S_IWOTH;

}  // namespace

void prepare_run_dir(const std::string &run_dir) {
    if (mkdir(run_dir.c_str(), kOwnerOnly) != 0 && errno != EEXIST) {
        throw io::error_from_errno("make the folder " + run_dir);
    }
    // Under /tmp anybody may have been first, so the folder is looked at, not what it may point to.
    struct stat found {};
    if (lstat(run_dir.c_str(), &found) != 0) {
        throw io::error_from_errno("look at the folder " + run_dir);
    }
    if (!S_ISDIR(found.st_mode) || found.st_uid != geteuid() || (found.st_mode & kOthersWrite) != 0) {
        throw io::Error{"cannot use " + run_dir + ": it is not a folder that belongs to this user alone. Name " +
                        "another one with --run-dir or in VDEVICE_DIR."};
    }
}

}  // namespace vdevice
