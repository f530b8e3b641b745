/*
 * What hosts say about the multicast groups that they want to hear, out of frames that the switch handed to the CPU:
 * IGMP (RFC 2236, RFC 3376) and MLD (RFC 2710, RFC 3810).
 */
#pragma once

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#include <adp/adp.h>

/* A listener behind an interface wants to hear a group from now on, or no longer. */
struct wish {
    adp_intf_t intf;
    uint32_t vid;
    int family; /* AF_INET or AF_INET6 */
    uint8_t address[16];
    bool joins;
};

/* Calls `tell` for each wish in a frame as received on eth0, in their order; for any other frame, and from the place
 * on where a message is broken, never. The frame loses its switch tag. */
void read_wishes(uint8_t *frame, size_t length, void (*tell)(const struct wish *wish));
