// The C library's calls that libadp sends frames with. While a call of libadp is made they are answered here, so that
// no frame leaves by an interface of this machine; for everything else they do what they always do.
#include <dlfcn.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>

#include "tools/adptrace/replay/boundary.h"

namespace adptrace::replay {

namespace {

constexpr int kDescriptor = 0x40000000;  // which no process has
constexpr int kInterfaceIndex = 1;

/** Whether the call is libadp's, and if so whether it is to succeed. */
std::optional<bool> answer_to_library() {
    const Boundary *const boundary = boundary_of_thread();
    return boundary == nullptr ? std::nullopt : boundary->frames_succeed();
}

template <typename Function>
Function *real(const char *name) {
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

int fail(int error) {
    errno = error;
    return -1;
}

}  // namespace
}  // namespace adptrace::replay

using namespace adptrace::replay;

extern "C" {

int socket(int domain, int type, int protocol) noexcept {
    static auto *const function = real<decltype(::socket)>("socket");
    return answer_to_library() ? kDescriptor : function(domain, type, protocol);
}

int close(int descriptor) {
    static auto *const function = real<decltype(::close)>("close");
    return descriptor == kDescriptor ? 0 : function(descriptor);
}

int ioctl(int descriptor, unsigned long request, ...) noexcept {
    static auto *const function = real<decltype(::ioctl)>("ioctl");
    va_list values;
    va_start(values, request);
    void *const argument = va_arg(values, void *);
    va_end(values);
    const auto answer = answer_to_library();
    if (!answer) {
        return function(descriptor, request, argument);
    }
    if (!*answer || request != SIOCGIFINDEX) {
        return fail(ENODEV);
    }
    static_cast<ifreq *>(argument)->ifr_ifindex = kInterfaceIndex;
    return 0;
}

ssize_t sendto(int descriptor, const void *data, size_t size, int flags, const sockaddr *address, socklen_t length) {
    static auto *const function = real<decltype(::sendto)>("sendto");
    if (Boundary *const boundary = boundary_of_thread(); boundary != nullptr) {
        boundary->sends({static_cast<const uint8_t *>(data), size});
    }
    const auto answer = answer_to_library();
    if (!answer) {
        return function(descriptor, data, size, flags, address, length);
    }
    return *answer ? static_cast<ssize_t>(size) : fail(ENETDOWN);
}

}  // extern "C"
