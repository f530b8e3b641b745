/*
 * Messages about multicast. They come from the wire: each byte is read only after its place was compared with the end
 * of what was received.
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
    kProtocolPim = 103,
    kPimHello = 0x20, /* version 2, type 0 */
    kIpv4Header = 20,
    kIpv4FragmentBits = 0x3FFF,
    kIpv4SourceAt = 12,
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
    size_t address_at; /* in a message about one group, and in a query */
    uint8_t of_routers[2];
    uint8_t joins[2];
    uint8_t leave;
    uint8_t report;   /* with records about many groups */
    bool has_unknown; /* the switch hands over messages of other types as well */
};
/* Routers send queries, and for IPv4 the advertisement of router discovery; that of IPv6 is not handed over. */
static const struct protocol kIgmp = {AF_INET, 4, 4, {0x11, 0x30}, {0x12, 0x16}, 0x17, 0x22, true};
static const struct protocol kMld = {AF_INET6, 16, 8, {130, 130}, {131, 131}, 132, 143, false};

static uint32_t read_u16(const uint8_t *at) {
    return (uint32_t)at[0] << 8 | at[1];
}

static bool is_one_of(const uint8_t types[2], uint8_t type) {
    return type == types[0] || type == types[1];
}

/* Wishes. */

/* A message being read, and the function to call. */
struct reading {
    const struct message *message;
    void (*tell)(const struct wish *wish);
};

static void tell(const struct reading *reading, const uint8_t *address, bool joins) {
    const struct message *message = reading->message;
    struct wish wish = {.intf = message->intf, .vid = message->vid, .family = message->family, .joins = joins};
    memcpy(wish.address, address, message->protocol->address_bytes);
    reading->tell(&wish);
}

/* A host that includes some sources is a listener, like one that excludes some. */
static void read_record(const struct reading *reading, uint32_t type, uint32_t sources, const uint8_t *address) {
    if (type == kModeIsExclude || type == kToExclude || type == kAllowSources)
        tell(reading, address, true);
    else if (type == kModeIsInclude || type == kToInclude)
        tell(reading, address, sources != 0);
}

static void read_records(const struct reading *reading) {
    const struct bytes content = reading->message->content;
    const size_t address_bytes = reading->message->protocol->address_bytes;
    size_t at = kMessageHead;
    for (uint32_t left = read_u16(content.at + 6); left > 0; left--) {
        const uint8_t *record = content.at + at;
        if (content.length - at < kRecordHead + address_bytes)
            return;
        const uint32_t sources = read_u16(record + 2);
        const size_t size = kRecordHead + address_bytes * (1 + sources) + 4u * record[1];
        if (content.length - at < size)
            return;
        read_record(reading, record[0], sources, record + kRecordHead);
        at += size;
    }
}

void read_wishes(const struct message *message, void (*told)(const struct wish *wish)) {
    const struct reading reading = {message, told};
    const struct protocol *protocol = message->protocol;
    if (protocol == NULL)
        return;
    const uint8_t type = message->content.at[0];
    if (type == protocol->report)
        read_records(&reading);
    else if (message->content.length < protocol->address_at + protocol->address_bytes)
        return;
    else if (is_one_of(protocol->joins, type))
        tell(&reading, message->content.at + protocol->address_at, true);
    else if (type == protocol->leave)
        tell(&reading, message->content.at + protocol->address_at, false);
}

/* Messages in frames. */

uint32_t sum_of(struct bytes data, uint32_t sum) {
    for (size_t i = 0; i < data.length; i++)
        sum += i % 2 == 0 ? (uint32_t)data.at[i] << 8 : data.at[i];
    while (sum >> 16)
        sum = (sum & 0xFFFF) + (sum >> 16);
    return sum;
}

/* Cuts what stands behind the headers out of a packet; false when that is too short for a message. */
static bool cut_content(struct bytes packet, const uint8_t *behind, struct bytes *content) {
    const size_t headers = (size_t)(behind - packet.at);
    if (packet.length < headers + kMessageHead)
        return false;
    *content = (struct bytes){behind, packet.length - headers};
    return true;
}

/* Reports are for routers alone: an older host that hears another's keeps its own back, and would not be known as a
 * listener. All other messages, unknown ones too, are for everybody (RFC 4541, section 2.1.1). */
static bool read_type(struct message *message, const struct protocol *protocol, bool has_address) {
    const uint8_t type = message->content.at[0];
    const bool is_of_router = is_one_of(protocol->of_routers, type);
    const bool is_report = is_one_of(protocol->joins, type) || type == protocol->leave || type == protocol->report;
    const bool is_cut_short = message->content.length < protocol->address_at + protocol->address_bytes;
    if (is_of_router ? is_cut_short : !is_report && !protocol->has_unknown)
        return false;
    message->protocol = protocol;
    message->family = protocol->family;
    message->audience = is_report ? kRouters : kEverybody;
    message->is_from_router = is_of_router && has_address;
    return true;
}

/* The switch copies hellos to the CPU, so they have already gone to everybody. */
static bool read_hello(struct message *message, bool has_address) {
    message->family = AF_INET;
    message->audience = kNobody;
    message->is_from_router = has_address;
    return message->content.at[0] == kPimHello;
}

/* `room` is what was received from the IP header on; the packet may be shorter, but not longer. A query of a switch is
 * without an address, and that of a router is not. */
static bool find_in_ipv4(const uint8_t *ip, const uint8_t *behind, size_t room, struct message *found) {
    static const uint8_t kNoAddress[4] = {0};
    if (room < kIpv4Header || behind - ip < kIpv4Header || read_u16(ip + 2) > room ||
        (read_u16(ip + 6) & kIpv4FragmentBits) != 0 || (ip[9] != kProtocolIgmp && ip[9] != kProtocolPim) ||
        !cut_content((struct bytes){ip, read_u16(ip + 2)}, behind, &found->content) ||
        sum_of(found->content, 0) != kRightSum)
        return false;
    const bool has_address = memcmp(ip + kIpv4SourceAt, kNoAddress, sizeof kNoAddress) != 0;
    return ip[9] == kProtocolIgmp ? read_type(found, &kIgmp, has_address) : read_hello(found, has_address);
}

/* MLD follows one hop-by-hop header. A message that has crossed a router is ignored. */
static bool find_in_ipv6(const uint8_t *ip, const uint8_t *behind, size_t room, struct message *found) {
    if (room <= kIpv6Header || kIpv6Header + read_u16(ip + 4) > room || ip[6] != kIpv6HopByHop || ip[7] != 1 ||
        ip[kIpv6Header] != kProtocolIcmpv6 ||
        !cut_content((struct bytes){ip, kIpv6Header + read_u16(ip + 4)}, behind, &found->content))
        return false;
    const struct bytes addresses = {ip + kIpv6AddressesAt, kIpv6AddressesBytes};
    const bool is_link_local = addresses.at[0] == 0xFE && addresses.at[1] >> 6 == 2;
    return sum_of(found->content, sum_of(addresses, kProtocolIcmpv6 + (uint32_t)found->content.length)) == kRightSum &&
           read_type(found, &kMld, is_link_local);
}

/* The switch adds the VLAN tag to every frame for the CPU; a second one is the host's. */
bool find_message(uint8_t *frame, size_t length, struct message *found) {
    adp_rx_frame_t parsed = {.frame = frame, .length = (uint32_t)length};
    if (length > UINT16_MAX || __adp_receive_frame(&parsed, 0) != ADP_OK || parsed.vlan_tag != frame + 2 * ETH_ALEN)
        return false;
    const uint8_t *end = frame + length - kReceiveTagBytes;
    *found = (struct message){
        .intf = parsed.intf, .vid = read_u16(parsed.vlan_tag + 2) & kVidMask, .frame = {frame, (size_t)(end - frame)}};
    if (parsed.ipv4_header)
        return find_in_ipv4(parsed.ipv4_header, parsed.l4_header, (size_t)(end - parsed.ipv4_header), found);
    return parsed.ipv6_header &&
           find_in_ipv6(parsed.ipv6_header, parsed.l4_header, (size_t)(end - parsed.ipv6_header), found);
}
