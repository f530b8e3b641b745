// Requests to the kernel, many in one send where there are many.
#include "switchd/kernel/requests.h"

#include <linux/neighbour.h>
#include <linux/rtnetlink.h>
#include <linux/veth.h>
#include <net/if.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

namespace switchd {
namespace {

using netlink::MessageWriter;

constexpr int kResultsOctets = 1024 * 1024;
/** The answers of so many fit into the socket's buffer where the system limits that, too. */
constexpr size_t kAddressesAtOnce = 128;
/** More than the kernel sends in answer to these; a socket that is never silent does not keep the daemon. */
constexpr size_t kMostAnswers = 4 * kAddressesAtOnce;

ifinfomsg link_header(int interface) {
    ifinfomsg info{};
    info.ifi_family = AF_UNSPEC;
    info.ifi_index = interface;
    return info;
}

void write_address(MessageWriter &writer, const AddressChange &address) {
    ndmsg header{};
    header.ndm_family = AF_BRIDGE;
    header.ndm_ifindex = address.interface;
    header.ndm_flags = NTF_MASTER | NTF_EXT_LEARNED;
    header.ndm_state = NUD_REACHABLE;
    writer.add(header);
    writer.put(NDA_LLADDR, address.mac);
    if (address.vid != 0) {
        writer.put_number(NDA_VLAN, address.vid);
    }
}

}  // namespace

KernelRequests::KernelRequests() : socket_{kResultsOctets} {}

template <typename OnAnswer>
bool KernelRequests::await_answers(const OnAnswer &on_answer) {
    for (size_t count = 0; count < kMostAnswers; ++count) {
        if (socket_.receive() != netlink::Socket::Received::kDatagram) {
            return false;
        }
        netlink::Octets rest = socket_.datagram();
        while (const auto message = netlink::take_message(rest)) {
            if (message->header.nlmsg_type != NLMSG_ERROR) {
                continue;
            }
            on_answer(message->header.nlmsg_seq, netlink::error_of(*message));
            if (message->header.nlmsg_seq == sequence_) {
                return true;
            }
        }
    }
    return false;
}

int KernelRequests::exchange() {
    int result = socket_.send(writer_.octets());
    writer_.clear();
    if (result != 0) {
        return result;
    }
    const bool is_answered =
        await_answers([&](uint32_t sequence, int error) { result = sequence == sequence_ ? error : result; });
    return is_answered ? result : ETIMEDOUT;
}

int KernelRequests::set_link(int interface, const LinkSettings &settings) {
    begin(RTM_NEWLINK, NLM_F_REQUEST | NLM_F_ACK);
    ifinfomsg info = link_header(interface);
    if (settings.up) {
        info.ifi_change = IFF_UP;
        info.ifi_flags = *settings.up ? IFF_UP : 0;
    }
    writer_.add(info);
    if (settings.name) {
        writer_.put_text(IFLA_IFNAME, *settings.name);
    }
    if (settings.alias) {
        writer_.put(IFLA_IFALIAS,
                    netlink::Octets{reinterpret_cast<const uint8_t *>(settings.alias->data()), settings.alias->size()});
    }
    if (settings.mtu) {
        writer_.put_number(IFLA_MTU, *settings.mtu);
    }
    if (settings.mac) {
        writer_.put(IFLA_ADDRESS, *settings.mac);
    }
    if (settings.carrier) {
        writer_.put_number(IFLA_CARRIER, static_cast<uint8_t>(*settings.carrier ? 1 : 0));
    }
    return exchange();
}

int KernelRequests::remove_link(int interface) {
    begin(RTM_DELLINK, NLM_F_REQUEST | NLM_F_ACK);
    writer_.add(link_header(interface));
    return exchange();
}

int KernelRequests::make_veth_pair(const std::string &name, const std::string &peer) {
    begin(RTM_NEWLINK, NLM_F_REQUEST | NLM_F_ACK | NLM_F_CREATE | NLM_F_EXCL);
    writer_.add(link_header(0));
    writer_.put_text(IFLA_IFNAME, name);
    {
        const MessageWriter::Nested info{writer_, IFLA_LINKINFO};
        writer_.put_text(IFLA_INFO_KIND, "veth");
        const MessageWriter::Nested data{writer_, IFLA_INFO_DATA};
        const MessageWriter::Nested other{writer_, VETH_INFO_PEER};
        writer_.add(link_header(0));
        writer_.put_text(IFLA_IFNAME, peer);
    }
    return exchange();
}

std::vector<int> KernelRequests::change_some(std::span<const AddressChange> addresses) {
    const uint32_t before = sequence_;
    for (const AddressChange &address : addresses) {
        // A refusal is reported in any case, so that one acknowledgement is enough.
        const bool is_last = sequence_ - before + 1 == addresses.size();
        const int flags =
            NLM_F_REQUEST | (is_last ? NLM_F_ACK : 0) | (address.learned ? NLM_F_CREATE | NLM_F_REPLACE : 0);
        begin(address.learned ? RTM_NEWNEIGH : RTM_DELNEIGH, static_cast<uint16_t>(flags));
        write_address(writer_, address);
    }
    std::vector<int> results(addresses.size());
    const int failure = socket_.send(writer_.octets());
    writer_.clear();
    const bool is_answered = failure == 0 && await_answers([&](uint32_t sequence, int error) {
                                 if (const size_t index = sequence - before - 1; index < results.size()) {
                                     results[index] = error;
                                 }
                             });
    if (!is_answered) {
        std::fill(results.begin(), results.end(), failure != 0 ? failure : ETIMEDOUT);
    }
    return results;
}

std::vector<KernelRequests::Refusal> KernelRequests::change_addresses(std::span<const AddressChange> addresses) {
    std::vector<Refusal> refused;
    for (size_t begun = 0; begun < addresses.size(); begun += kAddressesAtOnce) {
        const auto some = addresses.subspan(begun, std::min(kAddressesAtOnce, addresses.size() - begun));
        const std::vector<int> results = change_some(some);
        for (size_t index = 0; index < some.size(); ++index) {
            const bool is_gone_already = !some[index].learned && results[index] == ENOENT;
            if (results[index] != 0 && !is_gone_already) {
                refused.push_back({begun + index, results[index]});
            }
        }
    }
    return refused;
}

}  // namespace switchd
