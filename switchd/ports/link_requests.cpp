// Messages of rtnetlink, made and read.
#include "switchd/ports/link_requests.h"

#include <linux/if_link.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <linux/veth.h>
#include <net/if.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <span>
#include <utility>

#include "vdevice/io/error.h"
#include "vdevice/sockets/unique_fd.h"

// <net/if.h> and <linux/if.h> cannot be included together, and only the latter names this flag.
#ifndef IFF_LOWER_UP
#define IFF_LOWER_UP 0x10000
#endif

namespace switchd {
namespace {

using Octets = std::span<const char>;

constexpr size_t kAnswerBytes = 65536;
constexpr time_t kPatienceSeconds = 5;
constexpr int kTries = 3;
constexpr size_t kNetlinkAlignment = 4;

constexpr size_t padded(size_t length) {
    return (length + kNetlinkAlignment - 1) / kNetlinkAlignment * kNetlinkAlignment;
}

/** The octets behind the first @p length and their padding. */
Octets octets_behind(Octets octets, size_t length) {
    return octets.subspan(std::min(padded(length), octets.size()));
}

template <typename Header>
bool copy_header(Octets octets, Header &header) {
    if (octets.size() < sizeof(header)) {
        return false;
    }
    std::memcpy(&header, octets.data(), sizeof(header));
    return true;
}

/** A message that grows by attributes. */
class LinkRequest {
  public:
    LinkRequest(uint16_t type, unsigned flags, int index, unsigned interface_flags = 0, unsigned change = 0) {
        header_.nlmsg_type = type;
        header_.nlmsg_flags = static_cast<uint16_t>(NLM_F_REQUEST | flags);
        append(header_);
        ifinfomsg info{};
        info.ifi_index = index;
        info.ifi_flags = interface_flags;
        info.ifi_change = change;
        append(info);
    }

    template <typename Value>
    void append(const Value &value) {
        append_octets(&value, sizeof(value));
    }
    void add(uint16_t type, const void *octets, size_t length) {
        const size_t at = begin(type);
        append_octets(octets, length);
        end(at);
    }
    void add(uint16_t type, const std::string &text) { add(type, text.c_str(), text.size() + 1); }
    /** An attribute begins that has others in it. */
    size_t begin(uint16_t type) {
        const size_t at = octets_.size();
        append(rtattr{0, type});
        return at;
    }
    void end(size_t at) {
        const auto length = static_cast<uint16_t>(octets_.size() - at);
        std::memcpy(&octets_[at], &length, sizeof(length));
        octets_.resize(padded(octets_.size()));
    }
    Octets message() {
        header_.nlmsg_len = static_cast<uint32_t>(octets_.size());
        std::memcpy(octets_.data(), &header_, sizeof(header_));
        return octets_;
    }

  private:
    void append_octets(const void *from, size_t length) {
        const auto *first = static_cast<const char *>(from);
        octets_.insert(octets_.end(), first, first + length);
    }

    nlmsghdr header_{};
    std::vector<char> octets_;
};

using TakeAnswer = std::function<void(Octets payload)>;

/** How far the kernel's answer has come. */
struct Progress {
    bool is_done = false;
    bool was_interrupted = false; /**< interfaces came or went while the kernel listed them */
    int error = 0;
};

void take_answers(Octets answers, const TakeAnswer &take, Progress &progress) {
    nlmsghdr header{};
    while (copy_header(answers, header) && header.nlmsg_len >= sizeof(header) && header.nlmsg_len <= answers.size()) {
        const Octets payload = answers.first(header.nlmsg_len).subspan(sizeof(header));
        progress.was_interrupted |= (header.nlmsg_flags & NLM_F_DUMP_INTR) != 0;
        if (header.nlmsg_type == NLMSG_ERROR || header.nlmsg_type == NLMSG_DONE) {
            int result = 0;
            progress.error = copy_header(payload, result) ? -result : EPROTO;
            progress.is_done = true;
            return;
        }
        take(payload);
        answers = octets_behind(answers, header.nlmsg_len);
    }
}

int send_request(const vdevice::UniqueFd &socket, Octets message) {
    const timeval patience{kPatienceSeconds, 0};
    const bool is_sent = socket &&
                         setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof(patience)) == 0 &&
                         send(socket.get(), message.data(), message.size(), 0) == static_cast<ssize_t>(message.size());
    return is_sent ? 0 : errno;
}

/** Gives 0 or the kernel's refusal as errno has it; EAGAIN if the answer is not of one moment. */
int ask(
    LinkRequest request, const TakeAnswer &take = [](Octets) {}) {
    const vdevice::UniqueFd socket{::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE)};
    if (const int error = send_request(socket, request.message()); error != 0) {
        return error;
    }
    std::vector<char> buffer(kAnswerBytes);
    Progress progress;
    while (!progress.is_done) {
        const ssize_t length = recv(socket.get(), buffer.data(), buffer.size(), 0);
        if (length <= 0) {
            return length < 0 ? errno : EPROTO;
        }
        take_answers(Octets{buffer}.first(static_cast<size_t>(length)), take, progress);
    }
    return progress.error == 0 && progress.was_interrupted ? EAGAIN : progress.error;
}

void for_each_attribute(Octets attributes, const std::function<void(uint16_t type, Octets value)> &take) {
    rtattr attribute{};
    while (copy_header(attributes, attribute) && attribute.rta_len >= sizeof(attribute) &&
           attribute.rta_len <= attributes.size()) {
        take(attribute.rta_type, attributes.first(attribute.rta_len).subspan(sizeof(attribute)));
        attributes = octets_behind(attributes, attribute.rta_len);
    }
}

std::string text_of(Octets value) {
    return {value.begin(), std::find(value.begin(), value.end(), '\0')};
}

std::string kind_of(Octets link_info) {
    std::string kind;
    for_each_attribute(link_info, [&kind](uint16_t type, Octets value) {
        if (type == IFLA_INFO_KIND) {
            kind = text_of(value);
        }
    });
    return kind;
}

std::optional<FoundLink> read_link(Octets payload) {
    ifinfomsg info{};
    if (!copy_header(payload, info)) {
        return std::nullopt;
    }
    FoundLink link;
    link.index = info.ifi_index;
    link.up = (info.ifi_flags & IFF_UP) != 0;
    link.carrier = (info.ifi_flags & IFF_LOWER_UP) != 0;
    bool is_peer_elsewhere = false;
    for_each_attribute(octets_behind(payload, sizeof(info)), [&](uint16_t type, Octets value) {
        switch (type) {
            case IFLA_IFNAME:
                link.name = text_of(value);
                break;
            case IFLA_IFALIAS:
                link.alias = text_of(value);
                break;
            case IFLA_LINKINFO:
                link.kind = kind_of(value);
                break;
            case IFLA_LINK:
                copy_header(value, link.peer);
                break;
            case IFLA_LINK_NETNSID:
                is_peer_elsewhere = true;
                break;
            default:
                break;
        }
    });
    if (is_peer_elsewhere) {
        link.peer = 0;
    }
    return link;
}

}  // namespace

std::vector<FoundLink> find_links() {
    std::vector<FoundLink> links;
    int error = EAGAIN;
    for (int tried = 0; tried < kTries && error == EAGAIN; ++tried) {
        links.clear();
        error = ask(LinkRequest{RTM_GETLINK, NLM_F_DUMP, 0}, [&links](Octets payload) {
            if (const auto link = read_link(payload)) {
                links.push_back(*link);
            }
        });
    }
    if (error != 0 && error != EAGAIN) {
        errno = error;
        throw vdevice::io::error_from_errno("list the network interfaces");
    }
    return links;
}

int change_link(int index, const LinkChanges &changes) {
    const unsigned up = changes.up.value_or(false) ? unsigned{IFF_UP} : 0U;
    LinkRequest request{RTM_NEWLINK, NLM_F_ACK, index, up, changes.up ? unsigned{IFF_UP} : 0U};
    if (changes.mac) {
        request.add(IFLA_ADDRESS, changes.mac->data(), changes.mac->size());
    }
    if (changes.mtu) {
        request.add(IFLA_MTU, &*changes.mtu, sizeof(*changes.mtu));
    }
    if (!changes.alias.empty()) {
        request.add(IFLA_IFALIAS, changes.alias);
    }
    return ask(std::move(request));
}

int make_veth_pair(const std::string &name, const std::string &peer_name) {
    LinkRequest request{RTM_NEWLINK, NLM_F_ACK | NLM_F_CREATE | NLM_F_EXCL, 0};
    request.add(IFLA_IFNAME, name);
    const size_t info = request.begin(IFLA_LINKINFO);
    request.add(IFLA_INFO_KIND, "veth");
    const size_t data = request.begin(IFLA_INFO_DATA);
    const size_t peer = request.begin(VETH_INFO_PEER);
    request.append(ifinfomsg{});
    request.add(IFLA_IFNAME, peer_name);
    request.end(peer);
    request.end(data);
    request.end(info);
    return ask(std::move(request));
}

int remove_link(int index) {
    return ask(LinkRequest{RTM_DELLINK, NLM_F_ACK, index});
}

}  // namespace switchd
