// Frames sent by the CPU.
#include <net/if.h>
#include <netpacket/packet.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "tests/differential/reference/destinations.h"

namespace reference {
namespace {

using Bytes = std::vector<uint8_t>;

void put_word(Bytes &bytes, uint32_t word) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<uint8_t>(word >> shift));
    }
}

Bytes tagged(const uint8_t *frame, uint32_t length, uint32_t word1, uint32_t word2) {
    Bytes bytes(frame, frame + 12);
    bytes.push_back(0x88);
    bytes.push_back(0x74);
    put_word(bytes, word1);
    put_word(bytes, word2);
    bytes.insert(bytes.end(), frame + 12, frame + length);
    return bytes;
}

/** At most four attempts; true when all bytes left. */
bool send_bytes(int socket, const Bytes &bytes) {
    sockaddr_ll address{};
    address.sll_family = 17;
    address.sll_ifindex = get_nic_index("eth0");
    address.sll_halen = 6;
    std::memcpy(address.sll_addr, &bytes[6], 6);
    ssize_t sent = -1;
    for (int attempt = 0; attempt < 4 && sent == -1; ++attempt) {
        sent = sendto(socket, bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr *>(&address), 20);
    }
    return sent == static_cast<ssize_t>(bytes.size());
}

/** The one buffer that a frame takes, given back at the end; null without memory. */
auto take_buffer() {
    return std::unique_ptr<void, decltype(&std::free)>(std::malloc(1), &std::free);
}

int open_raw() {
    return socket(17, 3, 0x0800);
}

}  // namespace

int32_t get_nic_index(const char *name) {
    const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
    if (descriptor < 0) {
        const int error = errno;
        printf(" get_nic_index[%s] failed\r\n", name);
        printf("%s\r\n", strerror(error));
        return -1;
    }
    ifreq request{};
    std::memcpy(request.ifr_name, name, strnlen(name, 16));
    request.ifr_addr.sa_family = 2;
    if (ioctl(descriptor, 0x8933, &request) < 0) {
        const int error = errno;
        printf("%s\r\n", " ioctl failed: ");
        printf("%s\r\n", strerror(error));
        printf("\r\n");
        close(descriptor);
        return -1;
    }
    close(descriptor);
    return request.ifr_ifindex;
}

int32_t adp_pkt_init() {
    tables.socket = open_raw();
    if (tables.socket >= 0) {
        return tables.socket;
    }
    return printf("%s:%d init send packet socket error !~\n", "adp_pkt_init", 443);
}

int32_t adp_dump_packet(const char *title, const uint8_t *data, int32_t length) {
    fprintf(stderr, "--------------------------------------\r\n");
    fprintf(stderr, "%s:%d(0x%X)\r\n    ", title, length, static_cast<uint32_t>(length));
    for (uint32_t n = 0; n < 16; ++n) {
        fprintf(stderr, n == 8 ? "  %02X " : "%02X ", n);
    }
    for (int32_t n = 0; n < length; ++n) {
        if (n % 16 == 0) {
            fprintf(stderr, "\r\n%03d ", n / 16);
        }
        fprintf(stderr, n % 16 == 7 ? "%02X   " : "%02X ", data[n]);
    }
    return fprintf(stderr, "\r\n");
}

adp_status_t adp_transmit_frame(const uint8_t *frame, uint32_t length, uint32_t /*unused*/, adp_intf_t intf,
                                uint32_t opcode) {
    length &= 0xFFFF;
    if (frame == nullptr || length < 12) {
        return -1;
    }
    const auto buffer = take_buffer();
    if (buffer == nullptr) {
        return -1;
    }
    if (is_agg(intf)) {
        intf = manager_of(intf);
        if (intf == 0) {
            printf("manage interface error. \n");
            return -1;
        }
    }
    const Bytes bytes = tagged(frame, length, with_port(opcode << 29, adp_intf_2_phy_id(intf)), 0);
    const int descriptor = open_raw();
    if (descriptor <= 0) {
        return -1;
    }
    const bool was_sent = send_bytes(descriptor, bytes);
    close(descriptor);
    return was_sent ? 0 : -1;
}

adp_status_t __adp_transmit_frame(const adp_tx_frame_t *desc, const adp_list_link_t *list, uint32_t vid,
                                  uint32_t mode) {
    mode &= 0xFFFF;
    if (desc->frame == nullptr || desc->length < 12 || mode >= 5) {
        return -1;
    }
    const std::optional<Destination> to = destination_of(desc->source, list, vid, mode);
    if (!to) {
        return -1;
    }
    const auto buffer = take_buffer();
    if (buffer == nullptr) {
        return -1;
    }
    return send_bytes(tables.socket, tagged(desc->frame, desc->length, to->word1, to->word2)) ? 0 : -1;
}

}  // namespace reference
