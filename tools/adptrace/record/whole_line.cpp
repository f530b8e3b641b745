// Writes a line. It is no point at which a thread can be cancelled.
#include "tools/adptrace/record/whole_line.h"

#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>

namespace adptrace::record {

int append_whole(int fd, const char *text, size_t size) {
    const auto written = syscall(SYS_write, fd, text, size);
    if (written < 0) {
        return errno;
    }
    if (static_cast<size_t>(written) == size) {
        return 0;
    }
    const off_t end = lseek(fd, 0, SEEK_CUR);
    struct stat status = {};
    if (fstat(fd, &status) == 0 && status.st_size == end) {
        [[maybe_unused]] const int result = ftruncate(fd, end - static_cast<off_t>(written));
    }
    return ENOSPC;
}

}  // namespace adptrace::record
