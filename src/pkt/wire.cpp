// Sockets and the send itself.
#include "pkt/wire.h"

#include <adp/pkt.h>
#include <errno.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <stdio.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "core/messages.h"

namespace adp {
namespace {

// Contract: in host byte order, which is network byte order on the target.
constexpr int kIpv4Protocol = 0x0800;
constexpr int kSendAttempts = 4;
constexpr char kCpuInterface[] = "eth0";
constexpr Message kNoSocket{{"adp_pkt_init", 443}, "%s:%d init send packet socket error !~\n"};

int packet_socket = -1;

void report_errno() {
    printf("%s\r\n", strerror(errno));
}

}  // namespace

int open_packet_socket() {
    return socket(AF_PACKET, SOCK_RAW, kIpv4Protocol);
}

int send_socket() {
    return packet_socket;
}

void write_tagged(uint8_t *out, const uint8_t *frame, uint32_t length, const TxTag &tag) {
    memcpy(out, frame, kMacAddressesLength);
    uint8_t *type = out + kMacAddressesLength;
    write_be16(type, kTxTagType);
    tag.write_to(type + 2);
    memcpy(type + kTxTagLength, frame + kMacAddressesLength, length - kMacAddressesLength);
}

bool send_tagged(int socket, const uint8_t *tagged, uint32_t n) {
    sockaddr_ll address = {};
    static_assert(sizeof address == 20);
    address.sll_family = AF_PACKET;
    address.sll_ifindex = get_nic_index(kCpuInterface);
    address.sll_halen = kMacAddressesLength - kSourceMacOffset;
    memcpy(address.sll_addr, tagged + kSourceMacOffset, address.sll_halen);
    ssize_t sent = -1;
    for (int attempt = 0; attempt < kSendAttempts && sent == -1; ++attempt) {
        sent = sendto(socket, tagged, n, 0, reinterpret_cast<const sockaddr *>(&address), sizeof address);
    }
    return sent >= 0 && static_cast<size_t>(sent) == n;
}

}  // namespace adp

using namespace adp;

int32_t get_nic_index(const char *name) {
    const int handle = socket(AF_INET, SOCK_DGRAM, 0);
    if (handle < 0) {
        printf(" get_nic_index[%s] failed\r\n", name);
        report_errno();
        return -1;
    }
    ifreq request = {};
    static_assert(IFNAMSIZ == 16);
    // The name field takes 16 characters and needs no terminator when all are used.
    memcpy(request.ifr_name, name, strnlen(name, IFNAMSIZ));
    request.ifr_addr.sa_family = AF_INET;
    int32_t index = -1;
    if (ioctl(handle, SIOCGIFINDEX, &request) < 0) {
        const int error = errno;
        printf("%s\r\n", " ioctl failed: ");
        errno = error;
        report_errno();
        puts("\r");
    } else {
        index = request.ifr_ifindex;
    }
    close(handle);
    return index;
}

int32_t adp_pkt_init(void) {
    packet_socket = open_packet_socket();
    if (packet_socket < 0) {
        return print(kNoSocket);
    }
    return packet_socket;
}
