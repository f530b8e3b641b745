// The calls on /dev/net/tun.
#include "switchd/ports/tap_interface.h"

#include <fcntl.h>
#include <linux/if_tun.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>

#include "switchd/kernel/requests.h"
#include "switchd/ports/interface_marks.h"
#include "vdevice/io/error.h"

// Newer than some C libraries' headers.
#ifndef IFF_NO_CARRIER
#define IFF_NO_CARRIER 0x0040
#endif

namespace switchd {
namespace {

using vdevice::UniqueFd;
using vdevice::io::Error;
using vdevice::io::error_from_errno;

constexpr int kWholeFrames = IFF_TAP | IFF_NO_PI | IFF_NO_CARRIER;
/** Read in one turn of the loop, so that the other interfaces have theirs. */
constexpr int kFramesAtOnce = 64;
/** More than the kernel lets wait in an interface. */
constexpr int kMostWaiting = 10'000;

/** Without a descriptor if the kernel refuses, as errno has it. */
UniqueFd open_tap(const std::string &name, int flags) {
    UniqueFd fd{open("/dev/net/tun", O_RDWR | O_NONBLOCK | O_CLOEXEC)};
    ifreq request{};
    name.copy(request.ifr_name, IFNAMSIZ - 1);
    request.ifr_flags = static_cast<short>(flags);
    if (fd && ioctl(fd.get(), TUNSETIFF, &request) != 0) {
        const int error = errno;
        fd.reset();
        errno = error;
    }
    return fd;
}

/** Empty if the interface is gone. In a namespace that it was moved to, that may be another one's name here. */
std::string name_of_tap(const UniqueFd &fd) {
    ifreq request{};
    return ioctl(fd.get(), TUNGETIFF, &request) == 0 ? request.ifr_name : "";
}

/** What waited while there was no daemon is stale. */
void discard_waiting(const UniqueFd &fd) {
    uint8_t octet = 0;
    for (int count = 0; count < kMostWaiting && ::read(fd.get(), &octet, sizeof(octet)) >= 0; ++count) {
    }
}

}  // namespace

bool TapInterface::is_possible() {
    return static_cast<bool>(open_tap("adp-try%d", kWholeFrames));
}

// Until all is set it would go with its descriptor: a daemon that is killed meanwhile leaves none without a mark.
std::unique_ptr<Interface> TapInterface::make(const PortName &port, const InterfaceSettings &settings) {
    const std::string name = name_of(port);
    UniqueFd fd = open_tap(name, kWholeFrames | IFF_TUN_EXCL);
    if (!fd) {
        throw error_from_errno("make interface " + name);
    }
    const auto index = static_cast<int>(if_nametoindex(name.c_str()));
    auto made = std::make_unique<TapInterface>(port, index, std::move(fd));
    made->set_carrier(false);
    check_done(KernelRequests{}.set_link(index, first_settings_of(port, settings)), "set up interface " + name);
    if (ioctl(made->fd(), TUNSETPERSIST, 1) != 0) {
        throw error_from_errno("keep interface " + name);
    }
    return made;
}

std::unique_ptr<Interface> TapInterface::adopt(const PortName &port, const FoundLink &own) {
    UniqueFd fd = open_tap(own.name, kWholeFrames);
    if (!fd && errno == EBUSY) {
        throw Error{"cannot take interface " + own.name +
                    ": another process holds it. Is another adp-switchd running?"};
    }
    if (!fd) {
        throw error_from_errno("take interface " + own.name);
    }
    return std::make_unique<TapInterface>(port, own.index, std::move(fd));
}

std::unique_ptr<Interface> TapInterface::take_over(const PortName &port, const std::vector<FoundLink> &links,
                                                   UniqueFd kept) {
    const std::string name = name_of_tap(kept);
    if (name.empty()) {
        return nullptr;
    }
    // A person may have put a text of his own in the mark's place.
    const FoundLink *own = find_marked(links, mark_of(port));
    const FoundLink *named = find_named(links, name);
    if (own == nullptr && named != nullptr && named->kind == "tun") {
        own = named;
    }
    discard_waiting(kept);
    return std::make_unique<TapInterface>(port, own == nullptr ? 0 : own->index, std::move(kept));
}

bool TapInterface::is_gone() const {
    return name_of_tap(fd_).empty();
}

void TapInterface::set_carrier(bool on) {
    int carrier = on ? 1 : 0;
    // A kernel that does not know this shows carrier all the time.
    ioctl(fd_.get(), TUNSETCARRIER, &carrier);
}

void TapInterface::read(ReadRoom &room, const Take &take) {
    for (int count = 0; count < kFramesAtOnce; ++count) {
        const ssize_t octets = ::read(fd_.get(), room.frame.data(), room.frame.size());
        if (octets <= 0) {
            return;
        }
        take(vdevice::chip::Bytes{room.frame}.first(static_cast<size_t>(octets)));
    }
}

bool TapInterface::write(const vdevice::chip::Frame &frame) {
    const auto piece = [](vdevice::chip::Bytes bytes) {
        return iovec{const_cast<uint8_t *>(bytes.data()), bytes.size()};
    };
    const iovec pieces[] = {piece(frame.head), piece(frame.body)};
    return writev(fd_.get(), pieces, 2) == static_cast<ssize_t>(frame.size());
}

void TapInterface::destroy() {
    ioctl(fd_.get(), TUNSETPERSIST, 0);
    fd_.reset();
}

}  // namespace switchd
