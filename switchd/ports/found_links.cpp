// Lists interfaces by netlink.
#include "switchd/ports/found_links.h"

#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <net/if.h>

#include <cerrno>

#include "switchd/kernel/message.h"
#include "switchd/kernel/netlink_socket.h"
#include "vdevice/io/error.h"

// <net/if.h> and <linux/if.h> cannot be included together, and only the latter names this flag.
#ifndef IFF_LOWER_UP
#define IFF_LOWER_UP 0x10000
#endif

namespace switchd {
namespace {

constexpr int kAnswerBytes = 1024 * 1024;
constexpr int kTries = 3;

FoundLink read_found(const ifinfomsg &info, netlink::Octets octets) {
    const netlink::Attributes attributes{octets};
    FoundLink link;
    link.index = info.ifi_index;
    link.name = attributes.text(IFLA_IFNAME);
    link.alias = attributes.text(IFLA_IFALIAS);
    link.kind = attributes.nested(IFLA_LINKINFO).text(IFLA_INFO_KIND);
    link.peer = attributes.has(IFLA_LINK_NETNSID) ? 0 : attributes.number<int>(IFLA_LINK).value_or(0);
    link.up = (info.ifi_flags & IFF_UP) != 0;
    link.carrier = (info.ifi_flags & IFF_LOWER_UP) != 0;
    return link;
}

enum class Answer : uint8_t { kGoesOn, kIsWhole, kFailed };

/** Interfaces may come and go while the kernel lists them: then the list is not of one moment. */
Answer take_answer(netlink::Octets datagram, std::vector<FoundLink> &links) {
    while (const auto message = netlink::take_message(datagram)) {
        netlink::Octets payload = message->payload;
        if ((message->header.nlmsg_flags & NLM_F_DUMP_INTR) != 0 || message->header.nlmsg_type == NLMSG_ERROR) {
            return Answer::kFailed;
        }
        if (message->header.nlmsg_type == NLMSG_DONE) {
            return netlink::error_of(*message) == 0 ? Answer::kIsWhole : Answer::kFailed;
        }
        if (const auto info = netlink::take<ifinfomsg>(payload)) {
            links.push_back(read_found(*info, payload));
        }
    }
    return Answer::kGoesOn;
}

bool list_links(std::vector<FoundLink> &links) {
    links.clear();
    netlink::Socket socket{kAnswerBytes};
    netlink::MessageWriter writer;
    writer.begin(RTM_GETLINK, NLM_F_REQUEST | NLM_F_DUMP, 1);
    writer.add(ifinfomsg{});
    Answer answer = socket.send(writer.octets()) == 0 ? Answer::kGoesOn : Answer::kFailed;
    while (answer == Answer::kGoesOn) {
        answer = socket.receive() == netlink::Socket::Received::kDatagram ? take_answer(socket.datagram(), links)
                                                                          : Answer::kFailed;
    }
    return answer == Answer::kIsWhole;
}

}  // namespace

std::vector<FoundLink> find_links() {
    std::vector<FoundLink> links;
    for (int tried = 0; tried < kTries; ++tried) {
        if (list_links(links)) {
            return links;
        }
    }
    throw vdevice::io::Error{"cannot list the network interfaces: the kernel gives no whole answer."};
}

}  // namespace switchd
