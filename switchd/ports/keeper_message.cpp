// Messages of one size over a Unix socket, some with a descriptor (unix(7), SCM_RIGHTS).
#include "switchd/ports/keeper_message.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace switchd {
namespace {

constexpr size_t kNameBytes = 31;
constexpr time_t kSecondsToWait = 2;

struct WireMessage {
    KeeperVerb verb;
    std::array<char, kNameBytes> name; /**< ends with a zero */
};
static_assert(sizeof(WireMessage) == 1 + kNameBytes);

union Rights {
    cmsghdr header;
    uint8_t bytes[CMSG_SPACE(sizeof(int))];
};

vdevice::UniqueFd descriptor_of(msghdr &message) {
    for (cmsghdr *part = CMSG_FIRSTHDR(&message); part != nullptr; part = CMSG_NXTHDR(&message, part)) {
        if (part->cmsg_level == SOL_SOCKET && part->cmsg_type == SCM_RIGHTS) {
            int fd = -1;
            std::memcpy(&fd, CMSG_DATA(part), sizeof(fd));
            return vdevice::UniqueFd{fd};
        }
    }
    return {};
}

void add_descriptor(msghdr &message, Rights &rights, int fd) {
    message.msg_control = &rights;
    message.msg_controllen = sizeof(rights);
    rights.header.cmsg_level = SOL_SOCKET;
    rights.header.cmsg_type = SCM_RIGHTS;
    rights.header.cmsg_len = CMSG_LEN(sizeof(fd));
    std::memcpy(CMSG_DATA(&rights.header), &fd, sizeof(fd));
}

}  // namespace

void wait_on(int socket) {
    fcntl(socket, F_SETFL, fcntl(socket, F_GETFL) & ~O_NONBLOCK);
    const timeval patience{kSecondsToWait, 0};
    setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof(patience));
    setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof(patience));
}

bool send_message(int socket, KeeperVerb verb, const std::string &name, int fd) {
    WireMessage octets{verb, {}};
    name.copy(octets.name.data(), octets.name.size() - 1);
    iovec piece{&octets, sizeof(octets)};
    Rights rights{};
    msghdr message{};
    message.msg_iov = &piece;
    message.msg_iovlen = 1;
    if (fd >= 0) {
        add_descriptor(message, rights, fd);
    }
    return sendmsg(socket, &message, MSG_NOSIGNAL) == sizeof(octets);
}

std::optional<KeeperMessage> receive_message(int socket) {
    WireMessage octets{};
    iovec piece{&octets, sizeof(octets)};
    Rights rights{};
    msghdr message{};
    message.msg_iov = &piece;
    message.msg_iovlen = 1;
    message.msg_control = &rights;
    message.msg_controllen = sizeof(rights);
    if (recvmsg(socket, &message, MSG_CMSG_CLOEXEC | MSG_WAITALL) != sizeof(octets)) {
        return std::nullopt;
    }
    const auto end = std::find(octets.name.begin(), octets.name.end(), '\0');
    return KeeperMessage{octets.verb, std::string(octets.name.begin(), end), descriptor_of(message)};
}

}  // namespace switchd
