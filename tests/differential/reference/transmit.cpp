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
#include <optional>

#include "platform/device_services.h"
#include "tests/differential/reference/tables.h"

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

/** The one buffer that a frame takes, given back at the end. */
class Buffer {
  public:
    Buffer() : memory_(std::malloc(1)) {}
    ~Buffer() {
        if (memory_ != nullptr) {
            std::free(memory_);
        }
    }
    Buffer(const Buffer &) = delete;
    Buffer &operator=(const Buffer &) = delete;
    [[nodiscard]] bool is_there() const { return memory_ != nullptr; }

  private:
    void *memory_;
};

int open_raw() {
    return socket(17, 3, 0x0800);
}

uint32_t with_port(uint32_t word1, int32_t port) {
    return (word1 & 0xFE000000) | (static_cast<uint32_t>(port) & 0x01FFFFFF);
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
    const Buffer buffer;
    if (!buffer.is_there()) {
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

namespace {

/** A VLAN's members, or nothing when the record cannot be fetched. */
std::optional<uint64_t> members_of(uint32_t vid) {
    uint8_t record[64] = {};
    if (get_vlan_info(vid, record) != 0) {
        return std::nullopt;
    }
    uint32_t words[2];
    std::memcpy(words, record + 8, sizeof words);
    return uint64_t{words[0]} << 32 | words[1];
}

bool has_bit(uint64_t members, uint32_t bit) {
    return bit < 64 && (members >> bit & 1) != 0;
}

std::vector<uint32_t> nodes_of(const adp_list_link_t *list) {
    std::vector<uint32_t> nodes;
    for (const adp_list_link_t *link = list->next; link != list; link = link->next) {
        nodes.push_back(reinterpret_cast<const adp_tx_dest_t *>(link)->intf);
    }
    return nodes;
}

/** What a frame is sent with: word 1 and word 2, or nothing when the frame is refused. */
struct Destination {
    uint32_t word1 = 0;
    uint32_t word2 = 0;
    bool has_port = false;

    void add(int32_t port) {
        if (port >= 0 && port <= 56) {
            (port < 25 ? word1 : word2) |= 1u << (port < 25 ? port : port - 25);
            has_port = true;
        }
    }
};
using Answer = std::optional<Destination>;

/** Modes 2, 3 and 4: the last node decides. */
Answer one_port(uint32_t mode, uint32_t source, const adp_list_link_t *list, uint32_t vid) {
    Destination to;
    to.word1 = mode == 3 ? 0xDA000000 : 0x78000000;
    if (list == nullptr) {
        return std::nullopt;
    }
    const bool checks = mode != 3 || vid != 0xFFFFFFFF;
    uint64_t members = 0;
    if (checks) {
        const auto fetched = members_of(vid);
        if (!fetched) {
            return std::nullopt;
        }
        members = *fetched;
    }
    for (const uint32_t intf : nodes_of(list)) {
        const bool passes_source = mode == 4 && intf == source;
        if (passes_source || index_of(intf) == 0) {
            if (!passes_source && type_of(intf) > 1) {
                return std::nullopt;
            }
            continue;
        }
        if (type_of(intf) > 1 || (checks && !has_bit(members, is_agg(intf) ? 26 + index_of(intf) : intf))) {
            return std::nullopt;
        }
        const uint32_t port_intf = is_agg(intf) ? manager_of(intf) : intf;
        if (port_intf != 0) {
            to.word1 = with_port(to.word1, adp_intf_2_phy_id(port_intf));
        }
    }
    return to;
}

Answer listed_ports(uint32_t source, const adp_list_link_t *list, uint32_t vid) {
    Destination to;
    to.word1 = 0x98000000;
    uint64_t members = ~uint64_t{0};
    const bool checks = vid != 0xFFFFFFFF;
    if (checks) {
        const auto fetched = members_of(vid);
        if (!fetched) {
            return std::nullopt;
        }
        members = *fetched;
    }
    for (const uint32_t intf : nodes_of(list)) {
        if (intf == source || index_of(intf) == 0 || type_of(intf) > 1) {
            continue;
        }
        if (checks && !has_bit(members, is_agg(intf) ? 26 + index_of(intf) : intf)) {
            continue;
        }
        const uint32_t port_intf = is_agg(intf) ? manager_of(intf) : intf;
        if (port_intf != 0) {
            to.add(adp_intf_2_phy_id(port_intf));
        }
    }
    return to.has_port ? Answer(to) : std::nullopt;
}

Answer flooded_ports(uint32_t source, uint32_t vid) {
    Destination to;
    const bool checks = vid != 0xFFFFFFFF;
    to.word1 = checks ? 0x98000000 : 0xF8000000;
    uint64_t members = ~uint64_t{0};
    if (checks) {
        const auto fetched = members_of(vid);
        if (!fetched) {
            return std::nullopt;
        }
        members = *fetched;
    }
    for (uint32_t n = 1; n <= 26; ++n) {
        if (n != source && has_bit(members, n)) {
            to.add(adp_intf_2_phy_id(n));
        }
    }
    for (uint32_t g = 1; checks && g <= 8; ++g) {
        const uint32_t agg = 0x10000000u + g;
        if (agg != source && has_bit(members, 26 + g) && manager_of(agg) != 0) {
            to.add(adp_intf_2_phy_id(manager_of(agg)));
        }
    }
    return to.has_port ? Answer(to) : std::nullopt;
}

Answer destination_of(uint32_t source, const adp_list_link_t *list, uint32_t vid, uint32_t mode) {
    if (mode == 1) {
        return Destination{0x38000000, 0, true};
    }
    if (mode != 0) {
        return one_port(mode, source, list, vid);
    }
    return list != nullptr ? listed_ports(source, list, vid) : flooded_ports(source, vid);
}

}  // namespace

adp_status_t __adp_transmit_frame(const adp_tx_frame_t *desc, const adp_list_link_t *list, uint32_t vid,
                                  uint32_t mode) {
    mode &= 0xFFFF;
    if (desc->frame == nullptr || desc->length < 12 || mode >= 5) {
        return -1;
    }
    const Answer to = destination_of(desc->source, list, vid, mode);
    if (!to) {
        return -1;
    }
    const Buffer buffer;
    if (!buffer.is_there()) {
        return -1;
    }
    return send_bytes(tables.socket, tagged(desc->frame, desc->length, to->word1, to->word2)) ? 0 : -1;
}

void adp_bcmtag_dest_port_intf_2_phy(uint8_t *tag) {
    const auto word_at = [&](uint32_t at) {
        return uint32_t{tag[at]} << 24 | uint32_t{tag[at + 1]} << 16 | uint32_t{tag[at + 2]} << 8 | tag[at + 3];
    };
    const auto put = [&](uint32_t at, uint32_t word) {
        for (uint32_t n = 0; n < 4; ++n) {
            tag[at + n] = static_cast<uint8_t>(word >> (24 - 8 * n));
        }
    };
    const uint32_t opcode = tag[0] >> 5;
    const uint32_t word1 = word_at(0);
    const uint32_t word2 = word_at(4);
    if (opcode == 3 || opcode == 5 || opcode == 6) {
        put(0, with_port(word1, adp_intf_2_phy_id(word1 & 0x01FFFFFF)));
    }
    if (opcode != 4) {
        return;
    }
    Destination to;
    for (uint32_t i = 0; i < 25; ++i) {
        if ((word1 >> i & 1) != 0) {
            to.add(adp_intf_2_phy_id(i));
        }
    }
    for (uint32_t j = 0; j < 32; ++j) {
        const int32_t port = adp_intf_2_phy_id(25 + j);
        if ((word2 >> j & 1) != 0 && port >= 25) {
            to.add(port);
        }
    }
    put(0, (word1 & 0xFE000000) | to.word1);
    put(4, to.word2);
}

adp_status_t check_port_vlan_ability(adp_intf_t intf, int32_t vid) {
    const auto members = members_of(static_cast<uint32_t>(vid));
    if (!members || type_of(intf) > 1) {
        return -1;
    }
    return has_bit(*members, is_agg(intf) ? 26 + index_of(intf) : intf) ? 0 : -1;
}

}  // namespace reference
