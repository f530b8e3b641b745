/*
 * General queries of a switch that has no IP address. It must not become the network's querier in a router's place:
 * routers elect the one with the lowest address, and take no notice of an IPv4 query that has none (RFC 4541, section
 * 2.1.1). An IPv6 query needs a link-local address, so it gets one that loses against a router's.
 */
#include "multicast_queries.h"

#include <net/ethernet.h>
#include <string.h>

#include "multicast_messages.h"

enum {
    kShortestFrame = 64, /* with the VLAN tag; the checksum of the frame comes after it */
    kVidAt = 14,
    kIpAt = 18
};

/* Places in the two frames. */
enum { kIgmpHeaderSumAt = 28, kIgmpAt = 42, kIgmpTimeAt = 43, kIgmpSumAt = 44 };
enum { kMldSourceAt = 26, kMldAddressesBytes = 32, kMldAt = 66, kMldSumAt = 68, kMldTimeAt = 70, kIcmpv6 = 58 };

/* Without source address, VLAN, response time and checksums. The router alert makes routers read the message; hosts are
 * told the usual robustness (2) and interval (125 seconds). */
static const uint8_t kIgmpQuery[] = {0x01, 0x00, 0x5E, 0x00, 0x00, 0x01, 0, 0, 0, 0,   0, 0,
                                     0x81, 0x00, 0,    0,    0x08, 0x00,                     /* to 224.0.0.1 */
                                     0x46, 0xC0, 0,    36,   0,    0,    0, 0, 1, 2,   0, 0, /* one hop, IGMP */
                                     0,    0,    0,    0,    224,  0,    0, 1, /* from nobody to all hosts */
                                     0x94, 0x04, 0,    0,                      /* router alert */
                                     0x11, 0,    0,    0,    0,    0,    0, 0, 2, 125, 0, 0};
static const uint8_t kMldQuery[] = {
    0x33, 0x33, 0x00, 0x00, 0x00, 0x01, 0, 0, 0, 0, 0, 0, 0x81, 0x00, 0, 0, 0x86, 0xDD, /* to ff02::1 */
    0x60, 0,    0,    0,    0,    36,   0, 1,                                           /* one hop */
    0xFE, 0x80, 0,    0,    0,    0,    0, 0, 0, 0, 0, 0, 0,    0,    0, 0,             /* from, without the host */
    0xFF, 0x02, 0,    0,    0,    0,    0, 0, 0, 0, 0, 0, 0,    0,    0, 1,             /* to all hosts */
    58,   0,    5,    2,    0,    0,    1, 0,                                           /* router alert, then ICMPv6 */
    130,  0,    0,    0,    0,    0,    0, 0, 0, 0, 0, 0, 0,    0,    0, 0, 0,    0,    0, 0, 0, 0, 0, 0, 2, 125, 0, 0};

static void put_u16(uint8_t *at, uint32_t value) {
    at[0] = (uint8_t)(value >> 8);
    at[1] = (uint8_t)value;
}

/* The checksum of what ends with the message; it stood at 0 before. */
static void put_sum(uint8_t *at, const uint8_t *first, const uint8_t *end, uint32_t sum) {
    put_u16(at, ~sum_of((struct bytes){first, (size_t)(end - first)}, sum));
}

static void begin(uint8_t frame[kQueryRoom], const uint8_t *query, size_t length, const uint8_t mac[6], uint32_t vid) {
    memset(frame, 0, kQueryRoom);
    memcpy(frame, query, length);
    memcpy(frame + ETH_ALEN, mac, ETH_ALEN);
    put_u16(frame + kVidAt, vid);
}

size_t write_igmp_query(uint8_t frame[kQueryRoom], const uint8_t mac[6], uint32_t vid, uint32_t milliseconds) {
    begin(frame, kIgmpQuery, sizeof kIgmpQuery, mac, vid);
    frame[kIgmpTimeAt] = (uint8_t)(milliseconds / 100);
    put_sum(frame + kIgmpHeaderSumAt, frame + kIpAt, frame + kIgmpAt, 0);
    put_sum(frame + kIgmpSumAt, frame + kIgmpAt, frame + sizeof kIgmpQuery, 0);
    return kShortestFrame;
}

/* The address is fe80::ffff and the switch's MAC address. */
size_t write_mld_query(uint8_t frame[kQueryRoom], const uint8_t mac[6], uint32_t vid, uint32_t milliseconds) {
    const struct bytes addresses = {frame + kMldSourceAt, kMldAddressesBytes};
    uint8_t *host = frame + kMldSourceAt + 8;
    begin(frame, kMldQuery, sizeof kMldQuery, mac, vid);
    put_u16(host, 0xFFFF);
    memcpy(host + 2, mac, ETH_ALEN);
    put_u16(frame + kMldTimeAt, milliseconds);
    put_sum(frame + kMldSumAt, frame + kMldAt, frame + sizeof kMldQuery,
            sum_of(addresses, kIcmpv6 + (uint32_t)sizeof kMldQuery - kMldAt));
    return sizeof kMldQuery;
}
