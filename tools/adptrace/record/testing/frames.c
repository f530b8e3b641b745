// Frames of the program that the tests record, on the interface "lo".
#include <adp/adp.h>
#include <arpa/inet.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tools/adptrace/record/testing/program.h"

enum { kType = 0x88b5, kOctets = 60 };

static int open_socket(void) {
    struct sockaddr_ll address = {.sll_family = AF_PACKET, .sll_protocol = htons(kType)};
    address.sll_ifindex = (int)if_nametoindex("lo");
    const int fd = socket(AF_PACKET, SOCK_RAW, htons(kType));
    return fd >= 0 && bind(fd, (struct sockaddr *)&address, sizeof address) == 0 ? fd : -1;
}

/* Sends a frame through the library, to "eth0". */
int transmit_frame(void) {
    static const unsigned char frame[kOctets] = {2, 0, 0, 0, 0, 1, 2, 0, 0, 0, 0, 2};
    return set_up() != 0 ? 1 : adp_transmit_frame(frame, sizeof frame, 0, 1, 0);
}

/* Sends a frame in each way and receives what comes back. */
int transfer_frames(void) {
    unsigned char frame[kOctets] = {0};
    frame[ETH_ALEN * 2] = kType >> 8;
    frame[ETH_ALEN * 2 + 1] = (unsigned char)kType;
    unsigned char received[kOctets];
    const int fd = open_socket();
    if (fd < 0)
        return 1;
    frame[kOctets - 1] = 1;
    int failed = send(fd, frame, sizeof frame, 0) != kOctets || recv(fd, received, sizeof received, 0) != kOctets;
    frame[kOctets - 1] = 2;
    failed |= write(fd, frame, sizeof frame) != kOctets || read(fd, received, sizeof received) != kOctets;
    frame[kOctets - 1] = 3;
    struct iovec parts[] = {{frame, ETH_HLEN}, {frame + ETH_HLEN, kOctets - ETH_HLEN}};
    struct iovec room = {received, sizeof received};
    const struct msghdr sent = {.msg_iov = parts, .msg_iovlen = 2};
    struct msghdr message = {.msg_iov = &room, .msg_iovlen = 1};
    failed |= sendmsg(fd, &sent, 0) != kOctets || recvmsg(fd, &message, MSG_PEEK) != kOctets;
    failed |= recvmsg(fd, &message, 0) != kOctets;
    failed |= memcmp(received, frame, kOctets) != 0;
    int pair[2];
    failed |= socketpair(AF_UNIX, SOCK_DGRAM, 0, pair) != 0 || send(pair[0], frame, kOctets, 0) != kOctets;
    return failed ? 2 : 0;
}
