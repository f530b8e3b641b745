/*
 * Frames received on the CPU's interface, read with both receive calls of the library.
 */
#include "frame_reception.h"

#include <arpa/inet.h>
#include <errno.h>
#include <linux/if_packet.h>
#include <net/ethernet.h>
#include <poll.h>
#include <stdio.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include <adp/adp.h>

enum {
    kReceiveRoom = 2048,
    kReceiveTagBytes = 18, /* MAC addresses and receive tag, in front of the VLAN tag */
    kQuietMilliseconds = 1000
};

static int receive_socket = -1;

bool listen_on_cpu_port(void) {
    struct sockaddr_ll address = {.sll_family = AF_PACKET, .sll_protocol = htons(ETH_P_ALL)};

    address.sll_ifindex = get_nic_index("eth0");
    receive_socket = socket(AF_PACKET, SOCK_RAW, 0);
    if (address.sll_ifindex < 0 || receive_socket < 0 ||
        bind(receive_socket, (const struct sockaddr *)&address, sizeof address) != 0) {
        fprintf(stderr, "frame_path: cannot listen on eth0: %s. Run it as root on the device's CPU.\n",
                strerror(errno));
        return false;
    }
    printf("    listening on eth0\n");
    return true;
}

static unsigned read_u16(const uint8_t *bytes) {
    return (unsigned)bytes[0] << 8 | bytes[1];
}

static void print_received(const adp_rx_frame_t *frame, unsigned length) {
    printf("    from port %u (physical %d): VLAN %u, %s", (unsigned)frame->intf, (int)frame->phy,
           read_u16(frame->vlan_tag + 2) & 0xFFFu,
           frame->ipv4_header   ? "IPv4"
           : frame->ipv6_header ? "IPv6"
                                : "no IP");
    if (frame->udp_header)
        printf(", UDP %u > %u", read_u16(frame->udp_header), read_u16(frame->udp_header + 2));
    printf(", %u bytes\n", length);
}

/* Both receive calls remove the tag in place, so each gets a copy of the frame. */
static bool parse(uint8_t *bytes, uint32_t length) {
    uint8_t copy[kReceiveRoom];
    uint8_t *stripped = NULL;
    uint16_t stripped_length = 0;
    uint8_t flag = 0;
    adp_intf_t port = 0;
    adp_rx_frame_t frame = {.frame = bytes, .length = length, .vlan_tag = bytes + kReceiveTagBytes};

    memcpy(copy, bytes, length);
    if (adp_receive_frame(copy, &stripped, length, &stripped_length, &flag, &port) != ADP_OK ||
        __adp_receive_frame(&frame, 1) != ADP_OK) {
        fprintf(stderr, "frame_path: a frame of %u bytes was refused.\n", (unsigned)length);
        return false;
    }
    if (port != frame.intf)
        fprintf(stderr, "frame_path: the two receive calls disagree about the port.\n");
    print_received(&frame, stripped_length);
    return port == frame.intf;
}

bool receive_frames(void) {
    struct pollfd waiting = {.fd = receive_socket, .events = POLLIN};
    unsigned count = 0;

    while (poll(&waiting, 1, kQuietMilliseconds) > 0) {
        uint8_t bytes[kReceiveRoom] = {0};
        struct sockaddr_ll from = {0};
        socklen_t from_size = sizeof from;
        ssize_t length = recvfrom(receive_socket, bytes, sizeof bytes, 0, (struct sockaddr *)&from, &from_size);
        if (length < 0)
            return false;
        if (from.sll_pkttype == PACKET_OUTGOING) /* sent by the library */
            continue;
        if (!parse(bytes, (uint32_t)length))
            return false;
        count++;
    }
    printf("    %u frames received\n", count);
    return close(receive_socket) == 0;
}
