// The system calls of a frame.
#include "bench/frames_out/bare.h"

#include <arpa/inet.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <poll.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

enum { kIpv4Protocol = 0x0800, kPatience = 1000 };

static const char kCpuInterface[] = "eth0";

static int index_of(const char *name) {
    struct ifreq request = {0};
    const int handle = socket(AF_INET, SOCK_DGRAM, 0);
    if (handle < 0)
        return -1;
    memcpy(request.ifr_name, name, strlen(name));
    const int index = ioctl(handle, SIOCGIFINDEX, &request) < 0 ? -1 : request.ifr_ifindex;
    close(handle);
    return index;
}

int open_packet_socket(void) {
    return socket(AF_PACKET, SOCK_RAW, kIpv4Protocol);
}

int listen_on(const char *interface) {
    const int ears = socket(AF_PACKET, SOCK_RAW, 0);
    struct sockaddr_ll address = {0};
    address.sll_family = AF_PACKET;
    address.sll_protocol = htons(ETH_P_ALL);
    address.sll_ifindex = index_of(interface);
    return ears >= 0 && bind(ears, (const struct sockaddr *)&address, sizeof address) == 0 ? ears : -1;
}

bool take_frame(int ears, struct tagged_frame *frame) {
    struct pollfd wait = {.fd = ears, .events = POLLIN};
    if (poll(&wait, 1, kPatience) != 1)
        return false;
    const ssize_t length = recv(ears, frame->bytes, sizeof frame->bytes, 0);
    frame->length = length > 0 ? (size_t)length : 0;
    return length > 0;
}

bool send_bare(int socket, const struct tagged_frame *frame) {
    struct sockaddr_ll address = {0};
    address.sll_family = AF_PACKET;
    address.sll_ifindex = index_of(kCpuInterface);
    address.sll_halen = ETH_ALEN;
    memcpy(address.sll_addr, frame->bytes + ETH_ALEN, ETH_ALEN);
    const ssize_t sent =
        sendto(socket, frame->bytes, frame->length, 0, (const struct sockaddr *)&address, sizeof address);
    return sent >= 0 && (size_t)sent == frame->length;
}

bool send_bare_on_own_socket(const struct tagged_frame *frame) {
    const int socket = open_packet_socket();
    if (socket < 0)
        return false;
    const bool sent = send_bare(socket, frame);
    close(socket);
    return sent;
}
