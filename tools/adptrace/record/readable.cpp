// Asks the kernel, a page at a time.
#include "tools/adptrace/record/readable.h"

#include <stdint.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>

namespace adptrace {
namespace {

constexpr size_t kPage = 4096; /**< the smallest */
constexpr size_t kMaskSize = _NSIG / CHAR_BIT;

/** A set of signals is read before it is seen that nothing is to be done with it: the cheapest way to ask. */
bool is_readable(uintptr_t page) {
    constexpr int kNothing = -1;
    return syscall(SYS_rt_sigprocmask, kNothing, page, nullptr, kMaskSize) == 0 || errno != EFAULT;
}

}  // namespace

size_t readable_octets(const void *at, size_t octets) {
    const auto begin = reinterpret_cast<uintptr_t>(at);
    for (uintptr_t page = begin / kPage * kPage; page < begin + octets; page += kPage) {
        if (!is_readable(page)) {
            return page < begin ? 0 : page - begin;
        }
    }
    return octets;
}

}  // namespace adptrace
