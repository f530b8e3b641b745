/*
 * Messages about multicast, read from frames that the switch sent to the CPU: IGMP (RFC 2236, RFC 3376), MLD (RFC 2710,
 * RFC 3810), multicast router discovery (RFC 4286) and the hello of PIM (RFC 7761).
 */
#pragma once

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#include <adp/adp.h>

struct bytes {
    const uint8_t *at;
    size_t length;
};

/* A listener behind an interface joins or leaves a group. */
struct wish {
    adp_intf_t intf;
    uint32_t vid;
    int family; /* AF_INET or AF_INET6 */
    uint8_t address[16];
    bool joins;
};

/* Who still has to get a message: those that the switch handed to the CPU have gone to nobody else. */
enum audience { kNobody, kRouters, kEverybody };

struct message {
    adp_intf_t intf;
    uint32_t vid;
    int family;
    bool is_from_router;
    enum audience audience;
    struct bytes frame; /* with a VLAN tag, without the switch tag */
    struct bytes content;
    const struct protocol *protocol; /* null: there are no wishes in it */
};

/* Finds the message in a frame received on eth0, which loses its switch tag; false if it has none, or a broken one. */
bool find_message(uint8_t *frame, size_t length, struct message *found);

/* Calls `tell` for each wish in a message, in order, up to the first malformed one. */
void read_wishes(const struct message *message, void (*tell)(const struct wish *wish));

/* Ones' complement sum (RFC 1071), added to another one; 0xFFFF over what has the right checksum. */
uint32_t sum_of(struct bytes data, uint32_t sum);
