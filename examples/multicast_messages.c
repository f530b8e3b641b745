/*
 * Messages of multicast listeners. They come from the wire: each byte is read only after its place was compared with
 * the end of what was received.
 */
#include "multicast_messages.h"

#include <net/ethernet.h>
#include <string.h>
#include <sys/socket.h>

enum {
    kReceiveTagBytes = 6,
    kVidMask = 0xFFF,
    kProtocolIgmp = 2,
    kProtocolIcmpv6 = 58,
    kIpv4Header = 20,
    kIpv4FragmentBits = 0x3FFF,
    kIpv6Header = 40,
    kIpv6HopByHop = 0,
    kIpv6AddressesAt = 8,
    kIpv6AddressesBytes = 32,
    kMessageHead = 8,
    kRecordHead = 4,
    kRightSum = 0xFFFF
};

/* Types of the records in a report about many groups, the same in both protocols. One that blocks sources says nothing
 * about the rest of its group. */
enum { kModeIsInclude = 1, kModeIsExclude = 2, kToInclude = 3, kToExclude = 4, kAllowSources = 5 };

/* Where the protocols differ. */
struct protocol {
    int family;
    size_t address_bytes;
    size_t address_at; /* in a message about one group */
    uint8_t joins[2];
    uint8_t leave;
    uint8_t report; /* with records about many groups */
};
static const struct protocol kIgmp = {AF_INET, 4, 4, {0x12, 0x16}, 0x17, 0x22};
static const struct protocol kMld = {AF_INET6, 16, 8, {131, 131}, 132, 143};

struct bytes {
    const uint8_t *at;
    size_t length;
};

/* Where a message comes from, its protocol, and the function to call. */
struct speaker {
    adp_intf_t intf;
    uint32_t vid;
    const struct protocol *protocol;
    void (*tell)(const struct wish *wish);
};

static uint32_t read_u16(const uint8_t *at) {
    return (uint32_t)at[0] << 8 | at[1];
}

static void tell(const struct speaker *speaker, const uint8_t *address, bool joins) {
    struct wish wish = {
        .intf = speaker->intf, .vid = speaker->vid, .family = speaker->protocol->family, .joins = joins};
    memcpy(wish.address, address, speaker->protocol->address_bytes);
    speaker->tell(&wish);
}

/* A host that includes some sources is a listener, like one that excludes some. */
static void read_record(const struct speaker *speaker, uint32_t type, uint32_t sources, const uint8_t *address) {
    if (type == kModeIsExclude || type == kToExclude || type == kAllowSources)
        tell(speaker, address, true);
    else if (type == kModeIsInclude || type == kToInclude)
        tell(speaker, address, sources != 0);
}

static void read_records(const struct speaker *speaker, struct bytes message) {
    const size_t address_bytes = speaker->protocol->address_bytes;
    size_t at = kMessageHead;
    for (uint32_t left = read_u16(message.at + 6); left > 0; left--) {
        const uint8_t *record = message.at + at;
        if (message.length - at < kRecordHead + address_bytes)
            return;
        const uint32_t sources = read_u16(record + 2);
        const size_t size = kRecordHead + address_bytes * (1 + sources) + 4u * record[1];
        if (message.length - at < size)
            return;
        read_record(speaker, record[0], sources, record + kRecordHead);
        at += size;
    }
}

static void read_message(const struct speaker *speaker, struct bytes message) {
    const struct protocol *protocol = speaker->protocol;
    const uint8_t type = message.at[0];
    if (type == protocol->report)
        read_records(speaker, message);
    else if (message.length < protocol->address_at + protocol->address_bytes)
        return;
    else if (type == protocol->joins[0] || type == protocol->joins[1])
        tell(speaker, message.at + protocol->address_at, true);
    else if (type == protocol->leave)
        tell(speaker, message.at + protocol->address_at, false);
}

/* Ones' complement sum (RFC 1071); kRightSum over what its checksum belongs to. */
static uint32_t sum_of(struct bytes data, uint32_t sum) {
    for (size_t i = 0; i < data.length; i++)
        sum += i % 2 == 0 ? (uint32_t)data.at[i] << 8 : data.at[i];
    while (sum >> 16)
        sum = (sum & 0xFFFF) + (sum >> 16);
    return sum;
}

/* Cuts what stands behind the headers out of a packet; false when that is too short for a message. */
static bool cut_message(struct bytes packet, const uint8_t *behind, struct bytes *message) {
    const size_t headers = (size_t)(behind - packet.at);
    if (packet.length < headers + kMessageHead)
        return false;
    *message = (struct bytes){behind, packet.length - headers};
    return true;
}

/* `room` is what was received from the IP header on; the packet may be shorter, but not longer. */
static bool find_igmp(const uint8_t *ip, const uint8_t *behind, size_t room, struct bytes *message) {
    if (room < kIpv4Header || behind - ip < kIpv4Header || ip[9] != kProtocolIgmp || read_u16(ip + 2) > room ||
        (read_u16(ip + 6) & kIpv4FragmentBits) != 0)
        return false;
    return cut_message((struct bytes){ip, read_u16(ip + 2)}, behind, message) && sum_of(*message, 0) == kRightSum;
}

/* MLD follows one hop-by-hop header. A message that has crossed a router is ignored. */
static bool find_mld(const uint8_t *ip, const uint8_t *behind, size_t room, struct bytes *message) {
    if (room <= kIpv6Header || kIpv6Header + read_u16(ip + 4) > room || ip[6] != kIpv6HopByHop || ip[7] != 1 ||
        ip[kIpv6Header] != kProtocolIcmpv6 ||
        !cut_message((struct bytes){ip, kIpv6Header + read_u16(ip + 4)}, behind, message))
        return false;
    const struct bytes addresses = {ip + kIpv6AddressesAt, kIpv6AddressesBytes};
    return sum_of(*message, sum_of(addresses, kProtocolIcmpv6 + (uint32_t)message->length)) == kRightSum;
}

/* The switch adds the VLAN tag to every frame for the CPU; a second one is the host's. */
void read_wishes(uint8_t *frame, size_t length, void (*told)(const struct wish *wish)) {
    adp_rx_frame_t found = {.frame = frame, .length = (uint32_t)length};
    struct bytes message = {NULL, 0};
    if (length > UINT16_MAX || __adp_receive_frame(&found, 0) != ADP_OK || found.vlan_tag != frame + 2 * ETH_ALEN)
        return;
    const uint8_t *end = frame + length - kReceiveTagBytes;
    struct speaker speaker = {found.intf, read_u16(found.vlan_tag + 2) & kVidMask, &kIgmp, told};
    if (found.ipv4_header && find_igmp(found.ipv4_header, found.l4_header, (size_t)(end - found.ipv4_header), &message))
        read_message(&speaker, message);
    speaker.protocol = &kMld;
    if (found.ipv6_header && find_mld(found.ipv6_header, found.l4_header, (size_t)(end - found.ipv6_header), &message))
        read_message(&speaker, message);
}
