/*
 * Reports of hosts about multicast groups, read from frames that the switch sent to the CPU: IGMP (RFC 2236, RFC 3376)
 * and MLD (RFC 2710, RFC 3810).
 */
#pragma once

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#include <adp/adp.h>

/* A listener behind an interface joins or leaves a group. */
struct wish {
    adp_intf_t intf;
    uint32_t vid;
    int family; /* AF_INET or AF_INET6 */
    uint8_t address[16];
    bool joins;
};

/* Calls `tell` for each wish in a frame received on eth0, in order, up to the first malformed one. Other frames contain
 * none. The frame loses its switch tag. */
void read_wishes(uint8_t *frame, size_t length, void (*tell)(const struct wish *wish));
