// Asks the kernel, a page at a time.
#include "tools/adptrace/record/readable.h"

#include <stdint.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>

#include "calls/form.h"

namespace adptrace::record {
namespace {

constexpr size_t kMostOctets = size_t{1} << 16; /**< that are read of a text, or of what a number counts */
constexpr size_t kPage = 4096;                  /**< the smallest */
constexpr size_t kMaskSize = _NSIG / CHAR_BIT;

/** A set of signals is read before it is seen that nothing is to be done with it: the cheapest way to ask. */
bool is_readable(uintptr_t page) {
    constexpr int kNothing = -1;
    return page != 0 && (syscall(SYS_rt_sigprocmask, kNothing, page, nullptr, kMaskSize) == 0 || errno != EFAULT);
}

/** Whether a text ends within memory. */
bool is_readable_text(const char *text) {
    for (size_t octets = 0; octets < kMostOctets;) {
        const size_t rest = kPage - reinterpret_cast<uintptr_t>(text + octets) % kPage;
        if (readable_octets(text + octets, 1) == 0) {
            return false;
        }
        if (std::memchr(text + octets, '\0', rest) != nullptr) {
            return true;
        }
        octets += rest;
    }
    return false;
}

bool is_readable_frame(const calls::Param &param, const void *record) {
    const size_t octets = calls::frame_octets(param, record);
    return octets == 0 || readable_octets(calls::frame_of(*param.element.layout, record), octets) == octets;
}

bool is_readable_block(const calls::Param &param, const calls::Block &block) {
    const size_t size = param.shape == calls::Shape::kPortsWord ? sizeof(uint32_t) : param.element.size;
    return readable_octets(block.at, block.count * size) == block.count * size &&
           (param.shape != calls::Shape::kFrameRecord || is_readable_frame(param, block.at));
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

void limit_to_readable(std::span<const calls::Param> params, const void *const *arguments, calls::Blocks &blocks) {
    for (size_t index = 0; index < params.size(); ++index) {
        const calls::Param &param = params[index];
        calls::Block &block = blocks[index];
        if (block.at == nullptr || block.at == arguments[index]) {
            continue;  // nothing, or a value
        }
        if (param.counted_by != calls::kNotCounted) {
            const size_t octets = std::min(block.count, kMostOctets / param.element.size) * param.element.size;
            block.count = readable_octets(block.at, octets) / param.element.size;
        } else if (param.is_text() ? !is_readable_text(static_cast<const char *>(block.at))
                                   : !is_readable_block(param, block)) {
            block.at = nullptr;
        }
    }
}

}  // namespace adptrace::record
