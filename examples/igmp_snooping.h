/*
 * What the files of igmp_snooping share: interfaces as a set, their names, and a word about a call that failed.
 */
#pragma once

#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>

#include <adp/adp.h>

/* A set of interfaces is a word: bit n is user port n, and the next one after the ports the aggregation group. */
enum { kGroupNumber = 1, kGroupBit = ADP_USER_PORTS + kGroupNumber, kMaxInterfaces = ADP_USER_PORTS + 1 };

#define GROUP ADP_AGG_INTF(kGroupNumber)
#define BIT(number) (1u << (number))

/* A set of one interface; an empty one for what is neither a user port nor the group. */
static inline uint32_t set_of(adp_intf_t intf) {
    if (intf == GROUP)
        return BIT(kGroupBit);
    return intf >= 1 && intf <= ADP_USER_PORTS ? BIT(intf) : 0;
}

/* The interfaces of a set as a list; gives their number. */
static inline uint32_t list_of(uint32_t set, adp_intf_t list[kMaxInterfaces]) {
    uint32_t count = 0;
    for (adp_intf_t port = 1; port <= ADP_USER_PORTS; port++)
        if (set & BIT(port))
            list[count++] = port;
    if (set & BIT(kGroupBit))
        list[count++] = GROUP;
    return count;
}

static inline const char *kind_of(adp_intf_t intf) {
    return intf == GROUP ? "group" : "port";
}

static inline unsigned number_of(adp_intf_t intf) {
    return intf == GROUP ? kGroupNumber : intf;
}

static inline bool succeeded(const char *what, adp_status_t status) {
    if (status == ADP_OK)
        return true;
    fprintf(stderr, "igmp_snooping: Could not %s: the answer was %d.\n", what, (int)status);
    return false;
}
