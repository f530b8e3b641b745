// The C library's calls that send and receive, in front of its own.
#include <sys/socket.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <time.h>

#include <array>
#include <atomic>

#include "tools/adptrace/record/frames.h"
#include "tools/adptrace/record/loaded.h"

namespace adptrace::record {
namespace {

/** What a function of the C library is called here; its own name belongs to the system's headers. */
template <typename Function>
class Next {
  public:
    explicit constexpr Next(const char *name) : name_{name} {}

    template <typename... Argument>
    auto operator()(Argument... arguments) {
        Function function = function_.load(std::memory_order_relaxed);
        if (function == nullptr) {
            function = next_function<Function>(name_);
            function_.store(function, std::memory_order_relaxed);
        }
        return function(arguments...);
    }

  private:
    const char *name_;
    std::atomic<Function> function_{nullptr};
};

/** Whether what was received stays in the socket, or is something else than a frame. */
bool is_no_receipt(int flags) {
    return (flags & (MSG_PEEK | MSG_ERRQUEUE)) != 0;
}

ssize_t after_block(bool is_sent, int fd, const void *block, size_t size, const void *address, size_t address_size,
                    ssize_t result) {
    if (result > 0 && records_frames()) {
        // With MSG_TRUNC the result is the length of the frame, of which the block may have the beginning.
        const struct iovec part = {const_cast<void *>(block), size};
        record_frame({is_sent, fd, &part, 1, static_cast<size_t>(result), address, address_size});
    }
    return result;
}

ssize_t after_parts(bool is_sent, int fd, const struct iovec *parts, size_t count, ssize_t result) {
    if (result > 0 && records_frames()) {
        record_frame({is_sent, fd, parts, count, static_cast<size_t>(result), nullptr, 0});
    }
    return result;
}

ssize_t after_message(bool is_sent, int fd, const struct msghdr &message, ssize_t result) {
    if (result > 0 && records_frames()) {
        record_frame({is_sent, fd, message.msg_iov, message.msg_iovlen, static_cast<size_t>(result), message.msg_name,
                      message.msg_namelen});
    }
    return result;
}

int after_messages(bool is_sent, int fd, const struct mmsghdr *messages, int result) {
    for (int index = 0; index < result && records_frames(); ++index) {
        after_message(is_sent, fd, messages[index].msg_hdr, static_cast<ssize_t>(messages[index].msg_len));
    }
    return result;
}

}  // namespace
}  // namespace adptrace::record

using adptrace::record::after_block;
using adptrace::record::after_message;
using adptrace::record::after_messages;
using adptrace::record::after_parts;
using adptrace::record::is_no_receipt;
using adptrace::record::Next;

// Named with the label: the headers have inline functions of these names.
extern "C" {

ssize_t adptrace_write(int fd, const void *block, size_t size) __asm__("write");
ssize_t adptrace_read(int fd, void *block, size_t size) __asm__("read");
ssize_t adptrace_read_chk(int fd, void *block, size_t size, size_t room) __asm__("__read_chk");
ssize_t adptrace_writev(int fd, const struct iovec *parts, int count) __asm__("writev");
ssize_t adptrace_readv(int fd, const struct iovec *parts, int count) __asm__("readv");
ssize_t adptrace_send(int fd, const void *block, size_t size, int flags) __asm__("send");
ssize_t adptrace_recv(int fd, void *block, size_t size, int flags) __asm__("recv");
ssize_t adptrace_recv_chk(int fd, void *block, size_t size, size_t room, int flags) __asm__("__recv_chk");
ssize_t adptrace_sendto(int fd, const void *block, size_t size, int flags, const void *address,
                        socklen_t address_size) __asm__("sendto");
ssize_t adptrace_recvfrom(int fd, void *block, size_t size, int flags, void *address,
                          socklen_t *address_size) __asm__("recvfrom");
ssize_t adptrace_recvfrom_chk(int fd, void *block, size_t size, size_t room, int flags, void *address,
                              socklen_t *address_size) __asm__("__recvfrom_chk");
ssize_t adptrace_sendmsg(int fd, const struct msghdr *message, int flags) __asm__("sendmsg");
ssize_t adptrace_recvmsg(int fd, struct msghdr *message, int flags) __asm__("recvmsg");
int adptrace_sendmmsg(int fd, struct mmsghdr *messages, unsigned count, int flags) __asm__("sendmmsg");
int adptrace_recvmmsg(int fd, struct mmsghdr *messages, unsigned count, int flags,
                      struct timespec *timeout) __asm__("recvmmsg");

ssize_t adptrace_write(int fd, const void *block, size_t size) {
    static Next<decltype(&adptrace_write)> next("write");
    return after_block(true, fd, block, size, nullptr, 0, next(fd, block, size));
}

ssize_t adptrace_read(int fd, void *block, size_t size) {
    static Next<decltype(&adptrace_read)> next("read");
    return after_block(false, fd, block, size, nullptr, 0, next(fd, block, size));
}

ssize_t adptrace_read_chk(int fd, void *block, size_t size, size_t room) {
    static Next<decltype(&adptrace_read_chk)> next("__read_chk");
    return after_block(false, fd, block, size, nullptr, 0, next(fd, block, size, room));
}

ssize_t adptrace_writev(int fd, const struct iovec *parts, int count) {
    static Next<decltype(&adptrace_writev)> next("writev");
    return after_parts(true, fd, parts, static_cast<size_t>(count), next(fd, parts, count));
}

ssize_t adptrace_readv(int fd, const struct iovec *parts, int count) {
    static Next<decltype(&adptrace_readv)> next("readv");
    return after_parts(false, fd, parts, static_cast<size_t>(count), next(fd, parts, count));
}

ssize_t adptrace_send(int fd, const void *block, size_t size, int flags) {
    static Next<decltype(&adptrace_send)> next("send");
    return after_block(true, fd, block, size, nullptr, 0, next(fd, block, size, flags));
}

ssize_t adptrace_recv(int fd, void *block, size_t size, int flags) {
    static Next<decltype(&adptrace_recv)> next("recv");
    const ssize_t result = next(fd, block, size, flags);
    return is_no_receipt(flags) ? result : after_block(false, fd, block, size, nullptr, 0, result);
}

ssize_t adptrace_recv_chk(int fd, void *block, size_t size, size_t room, int flags) {
    static Next<decltype(&adptrace_recv_chk)> next("__recv_chk");
    const ssize_t result = next(fd, block, size, room, flags);
    return is_no_receipt(flags) ? result : after_block(false, fd, block, size, nullptr, 0, result);
}

ssize_t adptrace_sendto(int fd, const void *block, size_t size, int flags, const void *address,
                        socklen_t address_size) {
    static Next<decltype(&adptrace_sendto)> next("sendto");
    return after_block(true, fd, block, size, address, address_size,
                       next(fd, block, size, flags, address, address_size));
}

ssize_t adptrace_recvfrom(int fd, void *block, size_t size, int flags, void *address, socklen_t *address_size) {
    static Next<decltype(&adptrace_recvfrom)> next("recvfrom");
    const ssize_t result = next(fd, block, size, flags, address, address_size);
    const size_t room = address == nullptr || address_size == nullptr ? 0 : *address_size;
    return is_no_receipt(flags) ? result : after_block(false, fd, block, size, address, room, result);
}

ssize_t adptrace_recvfrom_chk(int fd, void *block, size_t size, size_t room, int flags, void *address,
                              socklen_t *address_size) {
    static Next<decltype(&adptrace_recvfrom_chk)> next("__recvfrom_chk");
    const ssize_t result = next(fd, block, size, room, flags, address, address_size);
    const size_t length = address == nullptr || address_size == nullptr ? 0 : *address_size;
    return is_no_receipt(flags) ? result : after_block(false, fd, block, size, address, length, result);
}

ssize_t adptrace_sendmsg(int fd, const struct msghdr *message, int flags) {
    static Next<decltype(&adptrace_sendmsg)> next("sendmsg");
    return after_message(true, fd, *message, next(fd, message, flags));
}

ssize_t adptrace_recvmsg(int fd, struct msghdr *message, int flags) {
    static Next<decltype(&adptrace_recvmsg)> next("recvmsg");
    const ssize_t result = next(fd, message, flags);
    return is_no_receipt(flags) ? result : after_message(false, fd, *message, result);
}

int adptrace_sendmmsg(int fd, struct mmsghdr *messages, unsigned count, int flags) {
    static Next<decltype(&adptrace_sendmmsg)> next("sendmmsg");
    return after_messages(true, fd, messages, next(fd, messages, count, flags));
}

int adptrace_recvmmsg(int fd, struct mmsghdr *messages, unsigned count, int flags, struct timespec *timeout) {
    static Next<decltype(&adptrace_recvmmsg)> next("recvmmsg");
    const int result = next(fd, messages, count, flags, timeout);
    return is_no_receipt(flags) ? result : after_messages(false, fd, messages, result);
}

}  // extern "C"
