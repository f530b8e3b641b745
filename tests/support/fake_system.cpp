// The fake system's answers. fake_system_wrap.cpp has the functions to which the linker redirects the calls.
#include "tests/support/fake_system.h"

#include <linux/sockios.h>
#include <net/if.h>
#include <netpacket/packet.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "tests/support/trace_file.h"

namespace fake_system {
namespace {

constexpr uint64_t kMicrosecondsPerSecond = 1000000;

SentFrame describe_frame(int descriptor, const void *data, size_t size, int flags, const void *address,
                         uint32_t length) {
    SentFrame frame;
    const auto *bytes = static_cast<const uint8_t *>(data);
    frame.descriptor = descriptor;
    frame.bytes.assign(bytes, bytes + size);
    frame.flags = flags;
    frame.address_length = length;
    if (address == nullptr) {
        return frame;
    }
    sockaddr_ll link{};
    std::memcpy(&link, address, std::min<size_t>(length, sizeof link));
    frame.family = link.sll_family;
    frame.protocol = link.sll_protocol;
    frame.interface_index = link.sll_ifindex;
    frame.hardware_type = link.sll_hatype;
    frame.packet_type = link.sll_pkttype;
    frame.hardware_length = link.sll_halen;
    frame.hardware_address.assign(std::begin(link.sll_addr), std::end(link.sll_addr));
    return frame;
}

/** The bytes that are sent, for the trace file. */
std::string frame_text(const SentFrame &frame) {
    std::string text = "frame to interface " + std::to_string(frame.interface_index) + ":";
    char pair[sizeof " ff"];
    for (const uint8_t byte : frame.bytes) {
        std::snprintf(pair, sizeof pair, " %02x", byte);
        text += pair;
    }
    return text;
}

}  // namespace

void System::fail_call(const std::string &name, size_t k, int error) {
    failing_calls_[name][counts_[name] + k] = error;
}

int System::error_of(const std::string &name) {
    const size_t number = counts_[name]++;
    const auto &calls = failing_calls_[name];
    if (const auto found = calls.find(number); found != calls.end()) {
        return found->second;
    }
    const auto found = failing_.find(name);
    return found == failing_.end() ? 0 : found->second;
}

void System::add(const std::string &line) {
    if (!recording_) {
        return;
    }
    trace_.push_back(line);
    if (trace_file::is_enabled()) {
        trace_file::write(line);
    }
    if (listener_) {
        listener_(line);
    }
}

long System::finish(const std::string &line, long result, int error) {
    const long given = error != 0 ? -1 : result;
    add(line + " -> " + std::to_string(given));
    if (error != 0) {
        errno = error;
    }
    return given;
}

int System::make_descriptor() {
    open_.insert(next_descriptor_);
    return next_descriptor_++;
}

int System::socket(int domain, int type, int protocol) {
    const int error = error_of("socket");
    const int descriptor = error != 0 ? -1 : make_descriptor();
    return static_cast<int>(
        finish("socket(" + std::to_string(domain) + ", " + std::to_string(type) + ", " + std::to_string(protocol) + ")",
               descriptor, error));
}

int System::ioctl(int descriptor, unsigned long request, void *argument) {
    int error = error_of("ioctl");
    std::string line = "ioctl(" + std::to_string(descriptor) + ", ";
    if (request == SIOCGIFINDEX) {
        auto *interface = static_cast<ifreq *>(argument);
        const std::string name(interface->ifr_name, strnlen(interface->ifr_name, sizeof interface->ifr_name));
        line += "SIOCGIFINDEX, \"" + name + "\")";
        const auto found = interfaces_.find(name);
        if (error == 0 && found != interfaces_.end()) {
            interface->ifr_ifindex = found->second;
        } else if (error == 0) {
            error = ENODEV;
        }
    } else {
        line += std::to_string(request) + ")";
        error = error != 0 ? error : ENOTTY;
    }
    if (error == 0 && open_.count(descriptor) == 0) {
        error = EBADF;
    }
    return static_cast<int>(finish(line, 0, error));
}

long System::sendto(int descriptor, const void *data, size_t size, int flags, const void *address, uint32_t length) {
    int error = error_of("sendto");
    if (recording_) {
        sent_.push_back(describe_frame(descriptor, data, size, flags, address, length));
        if (trace_file::is_enabled()) {
            trace_file::write(frame_text(sent_.back()));
        }
    }
    if (error == 0 && open_.count(descriptor) == 0) {
        error = EBADF;
    }
    const size_t sent = std::exchange(short_send_, std::nullopt).value_or(size);
    return finish("sendto(" + std::to_string(descriptor) + ", " + std::to_string(size) + " bytes)",
                  static_cast<long>(sent), error);
}

int System::close(int descriptor) {
    int error = error_of("close");
    if (open_.erase(descriptor) == 0) {
        error = EBADF;
    }
    return static_cast<int>(finish("close(" + std::to_string(descriptor) + ")", 0, error));
}

void *System::allocated(void *memory) {
    if (memory != nullptr) {
        allocated_.insert(memory);
    }
    return memory;
}

bool System::fails_allocation() {
    const size_t number = allocations_++;
    return failing_allocation_ && *failing_allocation_ == number;
}

void System::freed(void *memory) {
    if (allocated_.erase(memory) != 0 && free_listener_) {
        free_listener_(memory);
    }
}

int System::usleep(uint32_t microseconds) {
    slept_ += microseconds;
    add("usleep(" + std::to_string(microseconds) + ")");
    return 0;
}

time_t System::time() const {
    return time_ + static_cast<time_t>(slept_ / kMicrosecondsPerSecond);
}

System *active = nullptr;

Session::Session() {
    if (active != nullptr) {
        throw std::logic_error("a fake system is already switched on");
    }
    active = &system_;
}

Session::~Session() {
    active = nullptr;
}

}  // namespace fake_system
