// Writes the lines of frames.
#include "tools/adptrace/record/frames.h"

#include <linux/if_packet.h>
#include <net/if.h>

#include <algorithm>
#include <array>
#include <exception>
#include <string>

#include "calls/json_text.h"
#include "tools/adptrace/record/errno_guard.h"
#include "tools/adptrace/record/process.h"
#include "tools/adptrace/record/thread.h"

namespace adptrace::record {
namespace {

constexpr size_t kMostFrameOctets = size_t{1} << 16;

int option_of(int fd, int option) {
    int value = -1;
    socklen_t size = sizeof value;
    return getsockopt(fd, SOL_SOCKET, option, &value, &size) == 0 ? value : -1;
}

/** Asked each time: a descriptor may have become another one, in ways that are not seen here. */
bool carries_frames(int fd) {
    return option_of(fd, SO_DOMAIN) == AF_PACKET && option_of(fd, SO_TYPE) == SOCK_RAW;
}

std::string interface_of(const Transfer &transfer) {
    struct sockaddr_ll address = {};
    if (transfer.address != nullptr && transfer.address_size >= sizeof address) {
        address = *static_cast<const struct sockaddr_ll *>(transfer.address);
    }
    if (socklen_t size = sizeof address; address.sll_ifindex == 0) {
        getsockname(transfer.fd, reinterpret_cast<struct sockaddr *>(&address), &size);
    }
    std::array<char, IF_NAMESIZE> name{};
    if_indextoname(static_cast<unsigned>(address.sll_ifindex), name.data());
    return name.data();
}

void append_octets(std::string &line, const Transfer &transfer) {
    static constexpr char kHexDigits[] = "0123456789ABCDEF";
    constexpr unsigned kNibble = 4;
    constexpr unsigned kMask = 0xF;
    size_t left = std::min(transfer.octets, kMostFrameOctets);
    for (size_t part = 0; part < transfer.part_count && left > 0; ++part) {
        const auto *octets = static_cast<const unsigned char *>(transfer.parts[part].iov_base);
        const size_t count = std::min(left, transfer.parts[part].iov_len);
        for (size_t index = 0; index < count; ++index) {
            line += kHexDigits[octets[index] >> kNibble];
            line += kHexDigits[octets[index] & kMask];
        }
        left -= count;
    }
}

void write_frame(Process &process, const Thread &thread, const Transfer &transfer) {
    const std::string interface = interface_of(transfer);
    std::string &line = thread.buffers->line;
    line = transfer.is_sent ? R"({"frame":"sent",)" : R"({"frame":"received",)";
    line += process.of;
    append_place(process, thread, line);
    line += R"(,"interface":)";
    calls::append_text(line, interface.c_str());
    line += R"(,"octets":")";
    append_octets(line, transfer);
    line += "\"}\n";
    process.sink.write_line(line.data(), line.size());
}

}  // namespace

bool records_frames() noexcept {
    // The run-time library of a sanitizer reads files before the C library has an environment.
    Process *process = process_so_far();
    return process != nullptr && process->session.frames != 0 && is_recording(*process);
}

void record_frame(const Transfer &transfer) noexcept try {
    const ErrnoGuard guard;
    if (!carries_frames(transfer.fd)) {
        return;
    }
    const Span here{};
    const Writing writing(here);
    if (writing) {
        enter(writing.thread(), here);
        write_frame(process(), writing.thread(), transfer);
    }
} catch (const std::exception &) {
    return;  // no memory for the line
}

}  // namespace adptrace::record
