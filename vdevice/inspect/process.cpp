// Reads /proc and the limits.
#include "vdevice/inspect/process.h"

#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace vdevice::inspect {
namespace {

double seconds_of(const timeval &time) {
    constexpr double kMicrosecond = 1e-6;
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * kMicrosecond;
}

}  // namespace

Process read_process() {
    Process process{};
    const auto page = static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
    uint64_t virtual_pages = 0;
    uint64_t resident_pages = 0;
    if (std::ifstream("/proc/self/statm") >> virtual_pages >> resident_pages) {
        process.virtual_bytes = virtual_pages * page;
        process.resident_bytes = resident_pages * page;
    }
    std::error_code error;
    for (std::filesystem::directory_iterator it("/proc/self/fd", error); !error && it != end(it); it.increment(error)) {
        ++process.open_fds;
    }
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        process.max_fds = limit.rlim_cur;
    }
    rusage usage{};
    if (getrusage(RUSAGE_SELF, &usage) == 0) {
        process.cpu_seconds = seconds_of(usage.ru_utime) + seconds_of(usage.ru_stime);
    }
    return process;
}

}  // namespace vdevice::inspect
